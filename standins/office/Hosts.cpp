// The table of hosts.
#include "standins/office/Hosts.h"

#include <shlwapi.h>

#include "standins/office/ExcelModel.h"
#include "standins/office/PowerPointModel.h"
#include "standins/office/WordModel.h"

namespace {

constexpr OfficeHost hosts[] = {
    {L"Word", L".docx .doc .docm .rtf .odt ", L"Microsoft.Word.Document", L"OpusApp", MakeWordApplication},
    {L"Excel", L".xlsx .xls .xlsm .csv .ods ", L"Microsoft.Excel.Workbook", L"XLMAIN", MakeExcelApplication},
    {L"PowerPoint", L".pptx .ppt .pptm .odp ", L"Microsoft.PowerPoint.Presentation", L"PPTFrameClass",
     MakePowerPointApplication},
};

constexpr OfficeHost outlook = {L"Outlook", L"", L"Microsoft.Outlook.Explorer", L"rctrl_renwnd32", nullptr};

}  // namespace

const OfficeHost* HostOfDocument(const std::wstring& path) {
    if (path.empty()) return &hosts[0];
    const std::wstring extension = PathFindExtensionW(path.c_str());
    if (extension.empty()) return nullptr;
    for (const OfficeHost& host : hosts) {
        if (StrStrIW(host.extensions, (extension + L" ").c_str())) return &host;
    }
    return nullptr;
}

const OfficeHost& OutlookHost() { return outlook; }
