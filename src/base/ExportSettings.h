// The eight export settings: four options of the ribbon and four fixed values. They live in memory only, so every start
// of the host begins with these defaults.
#pragma once

#include <windows.h>

struct ExportSettings {
    LONG exportFormat = 17;       // wdExportFormatPDF
    bool openAfterExport = true;  // steers the companion application; the host itself never opens the PDF
    LONG optimizeFor = 0;         // wdExportOptimizeForPrint
    LONG exportRange = 0;         // wdExportAllDocument
    bool includeDocProps = true;
    LONG createBookmarks = 1;        // 1 wdExportCreateHeadingBookmarks, 0 wdExportCreateNoBookmarks
    bool bitmapMissingFonts = true;  // no control changes it
    bool pdfA = false;               // ISO 19005-1
};
