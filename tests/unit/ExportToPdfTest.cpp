// The argument lists of the export, value by value as they arrive on the wire.
#include "src/export/ExportToPdf.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/ScriptedDispatch.h"

namespace {

constexpr wchar_t target[] = L"C:\\Out\\a b.pdf";

// The arguments of the call in the order of the method's documentation.
std::vector<WireValue> Exported(Host host, const ExportSettings& settings) {
    AddinState state;
    state.host = host;
    state.settings = settings;
    ScriptedDispatch document;
    document.GiveNothing(L"ExportAsFixedFormat");
    EXPECT_TRUE(ExportAsPdf(state, &document, target));
    EXPECT_EQ(document.invocations.size(), 1U);
    const Invocation& call = document.invocations.at(0);
    EXPECT_EQ(call.flags, DISPATCH_METHOD);
    EXPECT_TRUE(call.named.empty());
    EXPECT_TRUE(call.hasResult);
    std::vector<WireValue> arguments = call.wire;
    std::reverse(arguments.begin(), arguments.end());
    return arguments;
}

ExportSettings AllOff() {
    ExportSettings settings;
    settings.includeDocProps = false;
    settings.createBookmarks = 0;
    settings.bitmapMissingFonts = false;
    settings.openAfterExport = false;
    settings.pdfA = false;
    return settings;
}

ExportSettings AllOn() {
    ExportSettings settings;
    settings.pdfA = true;
    return settings;
}

}  // namespace

TEST(ExportToPdf, WordGetsFourteenArgumentsWithTrueAsOne) {
    const std::vector expected = {
        WireText(target), WireNumber(17), WireBool(0),  WireNumber(0), WireNumber(0), WireOmitted(), WireOmitted(),
        WireOmitted(),    WireBool(1),    WireBool(-1), WireNumber(1), WireBool(-1),  WireBool(1),   WireBool(1),
    };
    EXPECT_EQ(Exported(HostWord, AllOn()), expected);
}

TEST(ExportToPdf, WordGetsZeroForOptionsThatAreOff) {
    const std::vector expected = {
        WireText(target), WireNumber(17), WireBool(0),  WireNumber(0), WireNumber(0), WireOmitted(), WireOmitted(),
        WireOmitted(),    WireBool(0),    WireBool(-1), WireNumber(0), WireBool(-1),  WireBool(0),   WireBool(0),
    };
    EXPECT_EQ(Exported(HostWord, AllOff()), expected);
}

TEST(ExportToPdf, WordItselfNeverOpensThePdf) {
    ExportSettings settings;
    settings.openAfterExport = true;
    EXPECT_EQ(Exported(HostWord, settings).at(2), WireBool(0));
}

TEST(ExportToPdf, OutlookUsesWordsList) {
    EXPECT_EQ(Exported(HostOutlook, AllOn()), Exported(HostWord, AllOn()));
    EXPECT_EQ(Exported(HostOutlook, AllOff()), Exported(HostWord, AllOff()));
}

TEST(ExportToPdf, WordsFixedValuesComeFromTheSettings) {
    ExportSettings settings;
    settings.exportFormat = 18;
    settings.optimizeFor = 1;
    settings.exportRange = 2;
    const auto arguments = Exported(HostWord, settings);
    EXPECT_EQ(arguments.at(1), WireNumber(18));
    EXPECT_EQ(arguments.at(3), WireNumber(1));
    EXPECT_EQ(arguments.at(4), WireNumber(2));
}

TEST(ExportToPdf, ExcelGetsEightArgumentsWithTrueAsMinusOne) {
    std::vector expected = {WireNumber(0), WireText(target), WireNumber(0), WireBool(-1),
                            WireBool(0),   WireOmitted(),    WireOmitted(), WireBool(0)};
    EXPECT_EQ(Exported(HostExcel, AllOn()), expected);
    expected[3] = WireBool(0);
    EXPECT_EQ(Exported(HostExcel, AllOff()), expected);
}

TEST(ExportToPdf, PdfAAndBookmarksHaveNoEffectInExcel) {
    ExportSettings other;
    other.pdfA = true;
    other.createBookmarks = 0;
    EXPECT_EQ(Exported(HostExcel, other), Exported(HostExcel, ExportSettings()));
}

TEST(ExportToPdf, PowerPointGetsFifteenArgumentsWithTrueAsMinusOne) {
    std::vector expected = {
        WireText(target), WireNumber(2), WireNumber(1),    WireNumber(0), WireNumber(1),
        WireNumber(1),    WireNumber(0), WireNullObject(), WireNumber(1), WireText(L""),
        WireBool(-1),     WireBool(-1),  WireBool(-1),     WireBool(-1),  WireBool(-1),
    };
    EXPECT_EQ(Exported(HostPowerPoint, AllOn()), expected);
    expected[10] = expected[13] = expected[14] = WireBool(0);
    EXPECT_EQ(Exported(HostPowerPoint, AllOff()), expected);
}

TEST(ExportToPdf, BookmarksHaveNoEffectInPowerPoint) {
    ExportSettings other;
    other.createBookmarks = 0;
    EXPECT_EQ(Exported(HostPowerPoint, other), Exported(HostPowerPoint, ExportSettings()));
}

TEST(ExportToPdf, NoDocumentIsAFailure) { EXPECT_FALSE(ExportAsPdf(AddinState(), nullptr, target)); }

TEST(ExportToPdf, FailureAndSuccessFollowTheCallsResult) {
    AddinState state;
    state.host = HostWord;
    for (const HRESULT result : {S_OK, S_FALSE}) {
        ScriptedDispatch document;
        document.Fail(L"ExportAsFixedFormat", result);
        EXPECT_TRUE(ExportAsPdf(state, &document, target)) << result;
    }
    ScriptedDispatch failing;
    failing.Fail(L"ExportAsFixedFormat", DISP_E_EXCEPTION);
    EXPECT_FALSE(ExportAsPdf(state, &failing, target));
    ScriptedDispatch without;
    EXPECT_FALSE(ExportAsPdf(state, &without, target));
    EXPECT_TRUE(without.invocations.empty());
}
