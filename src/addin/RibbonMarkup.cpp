// The two layouts of the ribbon tab. Texts go into the markup as they are: none that it uses holds a quotation mark, an
// ampersand or a less-than sign.
#include "src/addin/RibbonMarkup.h"

#include <utility>

#include "src/base/ControlIds.h"
#include "src/ui/StringTable.h"

namespace {

class MarkupWriter {
public:
    void Open() {
        markup_ += L"<customUI xmlns=\"http://schemas.microsoft.com/office/2006/01/customui\" ";
        markup_ += L"onLoad=\"";
        markup_ += OnRibbonLoadedName;
        markup_ += L"\"><ribbon><tabs><tab id=\"ZAVO_Tab\" label=\"" + Text(L"ZAVO") + L"\">";
    }

    std::wstring Close() {
        markup_ += L"</tab></tabs></ribbon></customUI>";
        return std::move(markup_);
    }

    void OpenGroup(const wchar_t* id, const wchar_t* label) {
        markup_ += L"<group id=\"";
        markup_ += id;
        markup_ += L"\" label=\"" + Text(label) + L"\">";
    }

    void CloseGroup() { markup_ += L"</group>"; }

    void OpenMenu(const wchar_t* id, const wchar_t* label) {
        OpenElement(L"menu", id);
        Attribute(L"label", Text(label));
        Attribute(L"size", L"large");
        LastAttribute(L"getImage", OnLoadImageName);
        markup_ += L">";
    }

    void CloseMenu() { markup_ += L"</menu>"; }

    void LargeButton(const wchar_t* id, const wchar_t* label, const wchar_t* superTip) {
        OpenButton(id, label, true);
        Attribute(L"getImage", OnLoadImageName);
        LastAttribute(L"supertip", Text(superTip));
        markup_ += L"/>";
    }

    void LargeButton(const wchar_t* id, const wchar_t* label) {
        OpenButton(id, label, true);
        LastAttribute(L"getImage", OnLoadImageName);
        markup_ += L"/>";
    }

    void MenuButton(const wchar_t* id, const wchar_t* label) {
        OpenButton(id, label, false);
        LastAttribute(L"getImage", OnLoadImageName);
        markup_ += L"/>";
    }

    void CheckBox(const wchar_t* id, const wchar_t* label, const wchar_t* superTip) {
        OpenElement(L"checkBox", id);
        Attribute(L"label", Text(label));
        Attribute(L"getPressed", GetCheckBoxStateName);
        Attribute(L"onAction", OnCheckBoxChangedName);
        LastAttribute(L"supertip", Text(superTip));
        markup_ += L"/>";
    }

private:
    std::wstring Text(const wchar_t* key) const { return Localize(table_, key); }

    void OpenButton(const wchar_t* id, const wchar_t* label, bool large) {
        OpenElement(L"button", id);
        Attribute(L"label", Text(label));
        if (large) Attribute(L"size", L"large");
        Attribute(L"onAction", OnButtonClickName);
    }

    void OpenElement(const wchar_t* element, const wchar_t* id) {
        markup_ += L"<";
        markup_ += element;
        markup_ += L" ";
        Attribute(L"id", id);
    }

    void LastAttribute(const wchar_t* name, const std::wstring& value) {
        markup_ += name;
        markup_ += L"=\"" + value + L"\"";
    }

    void Attribute(const wchar_t* name, const std::wstring& value) {
        LastAttribute(name, value);
        markup_ += L" ";
    }

    const LocalizedStringTable& table_ = GetLocalizedStringTable();
    std::wstring markup_;
};

std::wstring BuildOutlookMarkup() {
    MarkupWriter writer;
    writer.Open();
    writer.OpenGroup(L"PdfTools_Group", L"Create PDF");
    writer.OpenMenu(Menu_ID_Open, L"Open PDF");
    writer.MenuButton(Button_ID_OpenFromMail, L"Open PDF from selected mail");
    writer.MenuButton(Button_ID_OpenFromFolder, L"Open PDF from selected folder");
    writer.CloseMenu();
    writer.OpenMenu(Menu_ID_Create, L"Create PDF");
    writer.MenuButton(Button_ID_CreateByMail, L"Create PDF from selected email");
    // "the" makes one PDF per mail, "a" one PDF of them all: both labels are wanted.
    writer.MenuButton(Button_ID_CreateByFolder, L"Create PDF from the selected folder");
    writer.MenuButton(Button_ID_CreateMergeByFolder, L"Create a PDF from the selected folder");
    writer.CloseMenu();
    writer.LargeButton(Button_ID_CreatePortfolioByMail, L"Create PDF Portfolio");
    writer.CloseGroup();
    return writer.Close();
}

std::wstring BuildDocumentMarkup(Host host) {
    MarkupWriter writer;
    writer.Open();
    writer.OpenGroup(L"CreatePdf_Group", L"Create PDF");
    writer.LargeButton(BUTTON_ID_CREATE, L"Create PDF", L"Convert the current document to PDF");
    writer.LargeButton(BUTTON_ID_CREATE_AND_SHARE, L"Create and send",
                       L"Convert the current document to PDF and add it as an attachment to the email");
    writer.CloseGroup();
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
    writer.CloseGroup();
    return writer.Close();
}

}  // namespace

std::wstring BuildRibbonMarkup(Host host) {
    return host == HostOutlook ? BuildOutlookMarkup() : BuildDocumentMarkup(host);
}
