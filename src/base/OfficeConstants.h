// Constants of Office's object models, by their published names and values (learn.microsoft.com, "Office VBA
// Reference").
#pragma once

#include <windows.h>

// Word: Document.ExportAsFixedFormat.
inline constexpr LONG wdExportFormatPDF = 17;
inline constexpr LONG wdExportOptimizeForPrint = 0;
inline constexpr LONG wdExportAllDocument = 0;
inline constexpr LONG wdExportCreateNoBookmarks = 0;
inline constexpr LONG wdExportCreateHeadingBookmarks = 1;

// Excel: Workbook.ExportAsFixedFormat.
inline constexpr LONG xlTypePDF = 0;
inline constexpr LONG xlQualityStandard = 0;

// PowerPoint: Presentation.ExportAsFixedFormat.
inline constexpr LONG ppFixedFormatTypePDF = 2;
inline constexpr LONG ppFixedFormatIntentScreen = 1;
inline constexpr LONG ppPrintHandoutVerticalFirst = 1;
inline constexpr LONG ppPrintOutputSlides = 1;
inline constexpr LONG ppPrintAll = 1;
inline constexpr LONG msoFalse = 0;
