// PowerPoint's object model.
#include "standins/office/PowerPointModel.h"

#include "src/base/OfficeConstants.h"
#include "standins/office/DocumentExport.h"

namespace {

constexpr LONG ppFixedFormatIntentPrint = 2;
constexpr LONG ppPrintHandoutHorizontalFirst = 2;
constexpr LONG msoTrue = -1;

// Presentation.ExportAsFixedFormat.
void ExportAsFixedFormat(const std::wstring& document, const Arguments& arguments) {
    if (arguments.Count() > 16) throw static_cast<HRESULT>(DISP_E_BADPARAMCOUNT);
    const std::wstring target = Required(arguments.Text(1));
    OneOf(Required(arguments.Number(2)), {ppFixedFormatTypePDF}, L"FixedFormatType");  // there is no XPS here
    ExportOptions options;
    options.screen =
        OneOf(arguments.Number(3).value_or(ppFixedFormatIntentScreen),
              {ppFixedFormatIntentScreen, ppFixedFormatIntentPrint}, L"Intent") == ppFixedFormatIntentScreen;
    OneOf(arguments.Number(4).value_or(msoFalse), {msoFalse}, L"FrameSlides");
    OneOf(arguments.Number(5).value_or(ppPrintHandoutVerticalFirst),
          {ppPrintHandoutVerticalFirst, ppPrintHandoutHorizontalFirst}, L"HandoutOrder");  // there are no handouts here
    OneOf(arguments.Number(6).value_or(ppPrintOutputSlides), {ppPrintOutputSlides}, L"OutputType");
    options.hiddenSlides =
        OneOf(arguments.Number(7).value_or(msoFalse), {msoFalse, msoTrue}, L"PrintHiddenSlides") == msoTrue;
    const VARIANT* range = arguments.At(8);
    if (range && (range->vt != VT_DISPATCH || range->pdispVal)) {
        throw AutomationError{E_INVALIDARG, L"PrintRange is not supported"};
    }
    OneOf(arguments.Number(9).value_or(ppPrintAll), {ppPrintAll}, L"RangeType");
    if (!arguments.Text(10).value_or(std::wstring()).empty()) {
        throw AutomationError{E_INVALIDARG, L"SlideShowName is not supported"};
    }
    options.properties = arguments.Boolean(11).value_or(false);
    arguments.Boolean(12);  // KeepIRMSettings: documents here carry no rights
    options.tags = arguments.Boolean(13).value_or(true);
    arguments.Boolean(14);  // BitmapMissingFonts: LibreOffice embeds every font that it draws with
    options.pdfA = arguments.Boolean(15).value_or(false);
    ExportDocument(document, target, options);
}

}  // namespace

Microsoft::WRL::ComPtr<IDispatch> MakePowerPointApplication(const std::wstring& documentPath, HWND) {
    const auto document =
        documentPath.empty() ? nullptr : MakeDocument(L"Presentation", documentPath, ExportAsFixedFormat);
    return MakeApplication({L"Microsoft PowerPoint", L"Presentations", L"ActivePresentation"}, document, nullptr);
}
