// Excel's object model.
#include "standins/office/ExcelModel.h"

#include "src/base/OfficeConstants.h"
#include "standins/office/DocumentExport.h"

namespace {

constexpr LONG xlQualityMinimum = 1;

// Workbook.ExportAsFixedFormat.
void ExportAsFixedFormat(const std::wstring& document, const Arguments& arguments) {
    if (arguments.Count() > 9) throw static_cast<HRESULT>(DISP_E_BADPARAMCOUNT);
    OneOf(Required(arguments.Number(1)), {xlTypePDF}, L"Type");  // there is no XPS here
    const std::wstring target = arguments.Text(2).value_or(std::wstring());
    ExportOptions options;
    options.screen = OneOf(arguments.Number(3).value_or(xlQualityStandard), {xlQualityStandard, xlQualityMinimum},
                           L"Quality") == xlQualityMinimum;
    options.properties = arguments.Boolean(4).value_or(false);
    if (arguments.Boolean(5).value_or(false)) {
        throw AutomationError{E_INVALIDARG, L"IgnorePrintAreas is not supported"};
    }
    if (arguments.Number(6) || arguments.Number(7)) {
        const LONG from = arguments.Number(6).value_or(1);
        const LONG to = arguments.Number(7).value_or(from);
        if (from < 1 || to < from) throw AutomationError{commandFailed, L"The page range is not valid"};
        options.pages = {from, to};
    }
    options.open = arguments.Boolean(8).value_or(false);
    ExportDocument(document, target, options);
}

}  // namespace

Microsoft::WRL::ComPtr<IDispatch> MakeExcelApplication(const std::wstring& documentPath, HWND window) {
    const auto document = documentPath.empty() ? nullptr : MakeDocument(L"Workbook", documentPath, ExportAsFixedFormat);
    return MakeApplication({L"Microsoft Excel", L"Workbooks", L"ActiveWorkbook"}, document, window);
}
