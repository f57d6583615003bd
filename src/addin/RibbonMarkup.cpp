// The two layouts of the ribbon tab. Texts go into the markup as they are: none that it uses holds a quotation mark, an
// ampersand or a less-than sign.
#include "src/addin/RibbonMarkup.h"

#include <initializer_list>
#include <string>
#include <utility>

#include "src/base/ControlIds.h"
#include "src/ui/StringTable.h"

namespace {

enum class Size { Small, Large };

class MarkupWriter {
public:
    MarkupWriter() {
        Open(L"customUI",
             {{L"xmlns", L"http://schemas.microsoft.com/office/2006/01/customui"}, {L"onLoad", OnRibbonLoadedName}});
        Open(L"ribbon", {});
        Open(L"tabs", {});
        Open(L"tab", {{L"id", L"ZAVO_Tab"}, {L"label", Text(L"ZAVO")}});
    }

    std::wstring Finish() && {
        for (const wchar_t* element : {L"tab", L"tabs", L"ribbon", L"customUI"}) Close(element);
        return std::move(markup_);
    }

    void OpenGroup(const wchar_t* id, const wchar_t* label) { Open(L"group", {{L"id", id}, {L"label", Text(label)}}); }

    void OpenMenu(const wchar_t* id, const wchar_t* label) {
        Open(L"menu", {{L"id", id}, {L"label", Text(label)}, {L"size", L"large"}, {L"getImage", OnLoadImageName}});
    }

    void Close(const wchar_t* element) { markup_.append(L"</").append(element).append(L">"); }

    void Button(const wchar_t* id, const wchar_t* label, Size size, const wchar_t* superTip = nullptr) {
        Open(L"button",
             {{L"id", id},
              {L"label", Text(label)},
              {L"size", size == Size::Large ? L"large" : L""},
              {L"onAction", OnButtonClickName},
              {L"getImage", OnLoadImageName},
              {L"supertip", superTip ? Text(superTip) : L""}},
             L"/>");
    }

    void CheckBox(const wchar_t* id, const wchar_t* label, const wchar_t* superTip) {
        Open(L"checkBox",
             {{L"id", id},
              {L"label", Text(label)},
              {L"getPressed", GetCheckBoxStateName},
              {L"onAction", OnCheckBoxChangedName},
              {L"supertip", Text(superTip)}},
             L"/>");
    }

private:
    struct Attribute {
        const wchar_t* name;
        std::wstring value;  // empty: the element has no such attribute
    };

    static std::wstring Text(const wchar_t* key) { return Localize(GetLocalizedStringTable(), key); }

    void Open(const wchar_t* element, std::initializer_list<Attribute> attributes, const wchar_t* end = L">") {
        markup_.append(L"<").append(element);
        for (const auto& [name, value] : attributes) {
            if (!value.empty()) markup_.append(L" ").append(name).append(L"=\"").append(value).append(L"\"");
        }
        markup_.append(end);
    }

    std::wstring markup_;
};

std::wstring BuildOutlookMarkup() {
    MarkupWriter writer;
    writer.OpenGroup(L"PdfTools_Group", L"Create PDF");
    writer.OpenMenu(Menu_ID_Open, L"Open PDF");
    writer.Button(Button_ID_OpenFromMail, L"Open PDF from selected mail", Size::Small);
    writer.Button(Button_ID_OpenFromFolder, L"Open PDF from selected folder", Size::Small);
    writer.Close(L"menu");
    writer.OpenMenu(Menu_ID_Create, L"Create PDF");
    writer.Button(Button_ID_CreateByMail, L"Create PDF from selected email", Size::Small);
    // "the" makes one PDF per mail, "a" one PDF of them all: both labels are wanted.
    writer.Button(Button_ID_CreateByFolder, L"Create PDF from the selected folder", Size::Small);
    writer.Button(Button_ID_CreateMergeByFolder, L"Create a PDF from the selected folder", Size::Small);
    writer.Close(L"menu");
    writer.Button(Button_ID_CreatePortfolioByMail, L"Create PDF Portfolio", Size::Large);
    writer.Close(L"group");
    return std::move(writer).Finish();
}

std::wstring BuildDocumentMarkup(Host host) {
    MarkupWriter writer;
    writer.OpenGroup(L"CreatePdf_Group", L"Create PDF");
    writer.Button(BUTTON_ID_CREATE, L"Create PDF", Size::Large, L"Convert the current document to PDF");
    writer.Button(BUTTON_ID_CREATE_AND_SHARE, L"Create and send", Size::Large,
                  L"Convert the current document to PDF and add it as an attachment to the email");
    writer.Close(L"group");
    writer.OpenGroup(L"CreateSettings_Group", L"General Settings");
    writer.CheckBox(CheckBox_ID_OpenAfterExport, L"View PDF Results", L"Automatically open PDF file after creation");
    if (host == HostWord || host == HostPowerPoint) {
        writer.CheckBox(CheckBox_ID_PDFA, L"Supports PDF/A standards",
                        L"The created document complies with PDF/A standards");
    }
    if (host == HostWord) {
        writer.CheckBox(CheckBox_ID_CreateBookmarks, L"Create Bookmark",
                        L"Generate PDF bookmarks based on Word table of contents");
    }
    writer.CheckBox(CheckBox_ID_IncludeDocProps, L"Preserve document properties",
                    L"The generated PDF document contains information such as the title, author, topic, keywords, "
                    L"etc. of the original document");
    writer.Close(L"group");
    return std::move(writer).Finish();
}

}  // namespace

std::wstring BuildRibbonMarkup(Host host) {
    return host == HostOutlook ? BuildOutlookMarkup() : BuildDocumentMarkup(host);
}
