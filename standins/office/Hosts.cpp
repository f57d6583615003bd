// The table of hosts.
#include "standins/office/Hosts.h"

#include <shlwapi.h>

#include "standins/office/ExcelModel.h"
#include "standins/office/PowerPointModel.h"
#include "standins/office/WordModel.h"

namespace {

constexpr OfficeHost hosts[] = {
    {L"Word", L".docx .doc .docm .rtf .odt ", L"Microsoft.Word.Document", L"OpusApp", RGB(0x2B, 0x57, 0x9A), 100,
     MakeWordApplication},
    {L"Excel", L".xlsx .xls .xlsm .csv .ods ", L"Microsoft.Excel.Workbook", L"XLMAIN", RGB(0x21, 0x73, 0x46), 100,
     MakeExcelApplication},
    {L"PowerPoint", L".pptx .ppt .pptm .odp ", L"Microsoft.PowerPoint.Presentation", L"PPTFrameClass",
     RGB(0xB7, 0x47, 0x2A), 75, MakePowerPointApplication},
};

constexpr OfficeHost outlook = {
    L"Outlook", L"", L"Microsoft.Outlook.Explorer", L"rctrl_renwnd32", RGB(0x0F, 0x6C, 0xBD), 75, nullptr};

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
