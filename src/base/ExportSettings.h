// The eight export settings: four options of the ribbon and four fixed values. They live in memory only, so every start
// of the host begins with these defaults.
#pragma once

#include <windows.h>

#include "src/base/OfficeConstants.h"

struct ExportSettings {
    LONG exportFormat = wdExportFormatPDF;
    bool openAfterExport = true;  // steers the companion application; the host itself never opens the PDF
    LONG optimizeFor = wdExportOptimizeForPrint;
    LONG exportRange = wdExportAllDocument;
    bool includeDocProps = true;
    LONG createBookmarks = wdExportCreateHeadingBookmarks;  // or wdExportCreateNoBookmarks
    bool bitmapMissingFonts = true;                         // no control changes it
    bool pdfA = false;                                      // ISO 19005-1
};
