// The argument lists of `ExportAsFixedFormat`, and the call.
#include "src/export/ExportToPdf.h"

#include <span>

#include "src/automation/AutomationCalls.h"
#include "src/base/OfficeConstants.h"

namespace {

enum class Kind { Omitted, Path, EmptyText, Number, Boolean, NoObject };

// One argument; its place in the list is its position. `value` gives a number or a boolean.
struct Argument {
    Kind kind;
    LONG (*value)(const ExportSettings&) = nullptr;
};

constexpr Argument omitted = {Kind::Omitted};
constexpr Argument path = {Kind::Path};
constexpr Argument emptyText = {Kind::EmptyText};
constexpr Argument noObject = {Kind::NoObject};

template <LONG Value>
constexpr Argument number = {Kind::Number, [](const ExportSettings&) { return Value; }};

template <LONG ExportSettings::*Field>
constexpr Argument numberOf = {Kind::Number, [](const ExportSettings& settings) { return settings.*Field; }};

template <VARIANT_BOOL Value>
constexpr Argument boolean = {Kind::Boolean, [](const ExportSettings&) -> LONG { return Value; }};

// Word takes any value but zero for true, so its list passes the option's byte as it is: 0 or 1.
template <bool ExportSettings::*Field>
constexpr Argument byteOf = {Kind::Boolean, [](const ExportSettings& settings) -> LONG { return settings.*Field; }};

// Excel's and PowerPoint's lists pass VARIANT_TRUE or VARIANT_FALSE.
template <bool ExportSettings::*Field>
constexpr Argument booleanOf = {Kind::Boolean, [](const ExportSettings& settings) -> LONG {
                                    return settings.*Field ? VARIANT_TRUE : VARIANT_FALSE;
                                }};

using Settings = ExportSettings;

constexpr Argument wordArguments[] = {
    path,                                   // OutputFileName
    numberOf<&Settings::exportFormat>,      // ExportFormat
    boolean<VARIANT_FALSE>,                 // OpenAfterExport: the companion application shows the PDF, not Word
    numberOf<&Settings::optimizeFor>,       // OptimizeFor
    numberOf<&Settings::exportRange>,       // Range
    omitted,                                // From
    omitted,                                // To
    omitted,                                // Item
    byteOf<&Settings::includeDocProps>,     // IncludeDocProps
    boolean<VARIANT_TRUE>,                  // KeepIRM
    numberOf<&Settings::createBookmarks>,   // CreateBookmarks
    boolean<VARIANT_TRUE>,                  // DocStructureTags
    byteOf<&Settings::bitmapMissingFonts>,  // BitmapMissingFonts
    byteOf<&Settings::pdfA>,                // UseISO19005_1
};

constexpr Argument excelArguments[] = {
    number<xlTypePDF>,                      // Type
    path,                                   // Filename
    number<xlQualityStandard>,              // Quality
    booleanOf<&Settings::includeDocProps>,  // IncludeDocProperties
    boolean<VARIANT_FALSE>,                 // IgnorePrintAreas
    omitted,                                // From
    omitted,                                // To
    boolean<VARIANT_FALSE>,                 // OpenAfterPublish
};

constexpr Argument powerPointArguments[] = {
    path,                                      // Path
    number<ppFixedFormatTypePDF>,              // FixedFormatType
    number<ppFixedFormatIntentScreen>,         // Intent
    number<msoFalse>,                          // FrameSlides
    number<ppPrintHandoutVerticalFirst>,       // HandoutOrder
    number<ppPrintOutputSlides>,               // OutputType
    number<msoFalse>,                          // PrintHiddenSlides
    noObject,                                  // PrintRange
    number<ppPrintAll>,                        // RangeType
    emptyText,                                 // SlideShowName
    booleanOf<&Settings::includeDocProps>,     // IncludeDocProperties
    boolean<VARIANT_TRUE>,                     // KeepIRMSettings
    boolean<VARIANT_TRUE>,                     // DocStructureTags
    booleanOf<&Settings::bitmapMissingFonts>,  // BitmapMissingFonts
    booleanOf<&Settings::pdfA>,                // UseISO19005_1
};

std::span<const Argument> ArgumentsOf(Host host) {
    switch (host) {
        case HostExcel: return excelArguments;
        case HostPowerPoint: return powerPointArguments;
        default: return wordArguments;
    }
}

void Give(VARIANT& slot, const Argument& argument, const ExportSettings& settings, const std::wstring& outputPath) {
    switch (argument.kind) {
        case Kind::Omitted: break;
        case Kind::Path: slot = MakeVariantString(outputPath.c_str()); break;
        case Kind::EmptyText: slot = MakeVariantString(L""); break;
        case Kind::Number: slot = MakeVariantInt(argument.value(settings)); break;
        case Kind::Boolean: slot = MakeVariantBool(static_cast<VARIANT_BOOL>(argument.value(settings))); break;
        case Kind::NoObject:
            slot.vt = VT_DISPATCH;
            slot.pdispVal = nullptr;
            break;
    }
}

}  // namespace

bool ExportAsPdf(const AddinState& addin, IDispatch* document, const std::wstring& outputPath) {
    if (!document) return false;
    const std::span<const Argument> arguments = ArgumentsOf(addin.host);
    const auto count = static_cast<UINT>(arguments.size());
    return SUCCEEDED(
        AutomationCallLongMethod(document, L"ExportAsFixedFormat", nullptr, count, [&](AutomationArgs& pack) {
            for (UINT position = 1; position <= count; ++position) {
                Give(pack.Argument(position), arguments[position - 1], addin.settings, outputPath);
            }
        }));
}
