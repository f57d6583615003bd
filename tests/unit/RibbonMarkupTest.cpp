// The markup of every host, letter for letter.
#include "src/addin/RibbonMarkup.h"

#include <gtest/gtest.h>

#include "standins/office/Ribbon.h"

namespace {

using Ids = std::vector<std::wstring>;

// The identifiers of one kind of element, in the order of the markup.
void Collect(const std::vector<RibbonElement>& elements, const std::wstring& kind, Ids& ids) {
    for (const RibbonElement& element : elements) {
        if (element.kind == kind) ids.push_back(element.id);
        Collect(element.children, kind, ids);
    }
}

Ids IdsOf(Host host, const std::wstring& kind) {
    Ids ids;
    Collect(ParseRibbon(BuildRibbonMarkup(host)).tabs, kind, ids);
    return ids;
}

constexpr wchar_t head[] =
    L"<customUI xmlns=\"http://schemas.microsoft.com/office/2006/01/customui\" onLoad=\"OnRibbonLoaded\"><ribbon><tabs>"
    L"<tab id=\"ZAVO_Tab\" label=\"ZAVO\">";
constexpr wchar_t tail[] = L"</group></tab></tabs></ribbon></customUI>";
constexpr wchar_t documentButtons[] =
    L"<group id=\"CreatePdf_Group\" label=\"Create PDF\">"
    L"<button id=\"BUTTON_ID_CREATE\" label=\"Create PDF\" size=\"large\" onAction=\"OnButtonClick\" "
    L"getImage=\"OnLoadImage\" supertip=\"Convert the current document to PDF\"/>"
    L"<button id=\"BUTTON_ID_CREATE_AND_SHARE\" label=\"Create and send\" size=\"large\" onAction=\"OnButtonClick\" "
    L"getImage=\"OnLoadImage\" supertip=\"Convert the current document to PDF and add it as an attachment to the "
    L"email\"/></group><group id=\"CreateSettings_Group\" label=\"General Settings\">";
constexpr wchar_t openAfterExport[] =
    L"<checkBox id=\"CheckBox_ID_OpenAfterExport\" label=\"View PDF Results\" getPressed=\"GetCheckBoxState\" "
    L"onAction=\"OnCheckBoxChanged\" supertip=\"Automatically open PDF file after creation\"/>";
constexpr wchar_t pdfA[] =
    L"<checkBox id=\"CheckBox_ID_PDFA\" label=\"Supports PDF/A standards\" getPressed=\"GetCheckBoxState\" "
    L"onAction=\"OnCheckBoxChanged\" supertip=\"The created document complies with PDF/A standards\"/>";
constexpr wchar_t createBookmarks[] =
    L"<checkBox id=\"CheckBox_ID_CreateBookmarks\" label=\"Create Bookmark\" getPressed=\"GetCheckBoxState\" "
    L"onAction=\"OnCheckBoxChanged\" supertip=\"Generate PDF bookmarks based on Word table of contents\"/>";
constexpr wchar_t includeDocProps[] =
    L"<checkBox id=\"CheckBox_ID_IncludeDocProps\" label=\"Preserve document properties\" "
    L"getPressed=\"GetCheckBoxState\" onAction=\"OnCheckBoxChanged\" supertip=\"The generated PDF document contains "
    L"information such as the title, author, topic, keywords, etc. of the original document\"/>";

}  // namespace

// These run with an English user interface, where every label equals its key.

TEST(RibbonMarkup, WordsMarkupIsExact) {
    EXPECT_EQ(BuildRibbonMarkup(HostWord),
              std::wstring(head) + documentButtons + openAfterExport + pdfA + createBookmarks + includeDocProps + tail);
}

TEST(RibbonMarkup, ExcelsMarkupIsExact) {
    EXPECT_EQ(BuildRibbonMarkup(HostExcel),
              std::wstring(head) + documentButtons + openAfterExport + includeDocProps + tail);
}

TEST(RibbonMarkup, PowerPointsMarkupIsExact) {
    EXPECT_EQ(BuildRibbonMarkup(HostPowerPoint),
              std::wstring(head) + documentButtons + openAfterExport + pdfA + includeDocProps + tail);
}

TEST(RibbonMarkup, UnknownHostGetsNeitherPdfANorBookmarks) {
    EXPECT_EQ(BuildRibbonMarkup(HostUnknown), BuildRibbonMarkup(HostExcel));
}

TEST(RibbonMarkup, OutlooksMarkupIsExact) {
    EXPECT_EQ(
        BuildRibbonMarkup(HostOutlook),
        std::wstring(head) +
            L"<group id=\"PdfTools_Group\" label=\"Create PDF\">"
            L"<menu id=\"Menu_ID_Open\" label=\"Open PDF\" size=\"large\" getImage=\"OnLoadImage\">"
            L"<button id=\"Button_ID_OpenFromMail\" label=\"Open PDF from selected mail\" onAction=\"OnButtonClick\" "
            L"getImage=\"OnLoadImage\"/>"
            L"<button id=\"Button_ID_OpenFromFolder\" label=\"Open PDF from selected folder\" "
            L"onAction=\"OnButtonClick\" getImage=\"OnLoadImage\"/></menu>"
            L"<menu id=\"Menu_ID_Create\" label=\"Create PDF\" size=\"large\" getImage=\"OnLoadImage\">"
            L"<button id=\"Button_ID_CreateByMail\" label=\"Create PDF from selected email\" "
            L"onAction=\"OnButtonClick\" getImage=\"OnLoadImage\"/>"
            L"<button id=\"Button_ID_CreateByFolder\" label=\"Create PDF from the selected folder\" "
            L"onAction=\"OnButtonClick\" getImage=\"OnLoadImage\"/>"
            L"<button id=\"Button_ID_CreateMergeByFolder\" label=\"Create a PDF from the selected folder\" "
            L"onAction=\"OnButtonClick\" getImage=\"OnLoadImage\"/></menu>"
            L"<button id=\"Button_ID_CreatePortfolioByMail\" label=\"Create PDF Portfolio\" size=\"large\" "
            L"onAction=\"OnButtonClick\" getImage=\"OnLoadImage\"/>" +
            tail);
}

TEST(RibbonMarkup, CheckBoxesStandInTheirOrder) {
    EXPECT_EQ(IdsOf(HostWord, L"checkBox"), (Ids{L"CheckBox_ID_OpenAfterExport", L"CheckBox_ID_PDFA",
                                                 L"CheckBox_ID_CreateBookmarks", L"CheckBox_ID_IncludeDocProps"}));
    EXPECT_EQ(IdsOf(HostPowerPoint, L"checkBox"),
              (Ids{L"CheckBox_ID_OpenAfterExport", L"CheckBox_ID_PDFA", L"CheckBox_ID_IncludeDocProps"}));
    EXPECT_EQ(IdsOf(HostExcel, L"checkBox"), (Ids{L"CheckBox_ID_OpenAfterExport", L"CheckBox_ID_IncludeDocProps"}));
    EXPECT_EQ(IdsOf(HostOutlook, L"checkBox"), Ids{});
}

TEST(RibbonMarkup, OutlookHasTwoMenusOfTwoAndThreeButtonsAndOneLargeButton) {
    const Ribbon ribbon = ParseRibbon(BuildRibbonMarkup(HostOutlook));
    const auto& elements = ribbon.tabs.at(0).children.at(0).children;
    ASSERT_EQ(elements.size(), 3U);
    EXPECT_EQ(elements[0].children.size(), 2U);
    EXPECT_EQ(elements[1].children.size(), 3U);
    EXPECT_EQ(elements[2].kind, L"button");
    EXPECT_EQ(elements[2].size, L"large");
}

TEST(RibbonMarkup, IsOneLineFromCustomUiToCustomUi) {
    for (const Host host : {HostWord, HostExcel, HostPowerPoint, HostOutlook, HostUnknown}) {
        const std::wstring markup = BuildRibbonMarkup(host);
        EXPECT_TRUE(markup.starts_with(L"<customUI"));
        EXPECT_TRUE(markup.ends_with(L"</customUI>"));
        EXPECT_EQ(markup.find_first_of(L"\r\n"), std::wstring::npos);
    }
}
