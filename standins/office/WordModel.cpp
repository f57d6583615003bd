// Word's object model.
#include "standins/office/WordModel.h"

#include "src/base/OfficeConstants.h"
#include "standins/office/DocumentExport.h"

namespace {

constexpr LONG wdExportOptimizeForOnScreen = 1;
constexpr LONG wdExportCurrentPage = 2;
constexpr LONG wdExportFromTo = 3;
constexpr LONG wdExportDocumentContent = 0;
constexpr LONG wdExportDocumentWithMarkup = 7;

}  // namespace

void ExportWordDocument(const std::wstring& document, const Arguments& arguments) {
    if (arguments.Count() > 15) throw static_cast<HRESULT>(DISP_E_BADPARAMCOUNT);
    const std::wstring target = Required(arguments.Text(1));
    OneOf(Required(arguments.Number(2)), {wdExportFormatPDF}, L"ExportFormat");  // there is no XPS here
    ExportOptions options;
    options.open = arguments.Boolean(3).value_or(false);
    options.screen =
        OneOf(arguments.Number(4).value_or(wdExportOptimizeForPrint),
              {wdExportOptimizeForPrint, wdExportOptimizeForOnScreen}, L"OptimizeFor") == wdExportOptimizeForOnScreen;
    // Nothing is ever selected here, so there is no wdExportSelection.
    const LONG range = OneOf(arguments.Number(5).value_or(wdExportAllDocument),
                             {wdExportAllDocument, wdExportCurrentPage, wdExportFromTo}, L"Range");
    const LONG from = arguments.Number(6).value_or(1);
    const LONG to = arguments.Number(7).value_or(1);
    options.comments =
        OneOf(arguments.Number(8).value_or(wdExportDocumentContent),
              {wdExportDocumentContent, wdExportDocumentWithMarkup}, L"Item") == wdExportDocumentWithMarkup;
    options.properties = arguments.Boolean(9).value_or(false);
    arguments.Boolean(10);  // KeepIRM: documents here carry no rights
    // A bookmark of Word's own has no counterpart in LibreOffice's export.
    options.bookmarks = OneOf(arguments.Number(11).value_or(wdExportCreateNoBookmarks),
                              {wdExportCreateNoBookmarks, wdExportCreateHeadingBookmarks},
                              L"CreateBookmarks") == wdExportCreateHeadingBookmarks;
    options.tags = arguments.Boolean(12).value_or(true);
    arguments.Boolean(13);  // BitmapMissingFonts: LibreOffice embeds every font that it draws with
    options.pdfA = arguments.Boolean(14).value_or(false);
    if (range == wdExportFromTo) {
        if (from < 1 || to < from) throw AutomationError{commandFailed, L"The page range is not valid"};
        options.pages = {from, to};
    } else if (range == wdExportCurrentPage) {
        options.pages = {1, 1};
    }
    ExportDocument(document, target, options);
}

Microsoft::WRL::ComPtr<IDispatch> MakeWordApplication(const std::wstring& documentPath, HWND window) {
    const auto document = documentPath.empty() ? nullptr : MakeDocument(L"Document", documentPath, ExportWordDocument);
    return MakeApplication({L"Microsoft Word", L"Documents", L"ActiveDocument"}, document, window);
}
