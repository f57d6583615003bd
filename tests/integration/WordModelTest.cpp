// Word's stand-in keeps to Word's rules: what it cannot do it refuses.
#include "standins/office/WordModel.h"

#include <gtest/gtest.h>

#include "src/automation/AutomationCalls.h"
#include "src/base/Handles.h"
#include "standins/bridge/Bridge.h"
#include "standins/office/DynamicObject.h"
#include "tests/support/Files.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr char threePages[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<office:document xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0"
    xmlns:style="urn:oasis:names:tc:opendocument:xmlns:style:1.0"
    xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0"
    xmlns:fo="urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0"
    office:version="1.3" office:mimetype="application/vnd.oasis.opendocument.text">
 <office:automatic-styles>
  <style:style style:name="P" style:family="paragraph">
   <style:paragraph-properties fo:break-before="page"/>
  </style:style>
 </office:automatic-styles>
 <office:body><office:text>
  <text:p>first</text:p><text:p text:style-name="P">second</text:p><text:p text:style-name="P">third</text:p>
 </office:text></office:body>
</office:document>)";

class WordModel : public testing::Test {
protected:
    WordModel() {
        const std::wstring pages = folder_.MakeFile(L"pages.fodt", threePages);
        document_ = folder_.Path(L"pages.docx");
        const BridgeAnswer made = AskBridge({{"command", L"convert"},
                                             {"source", LinuxPath(pages)},
                                             {"target", LinuxPath(document_)},
                                             {"filter", L"MS Word 2007 XML"}});
        EXPECT_TRUE(made.ok) << made.text.c_str();
        application_ = MakeWordApplication(document_, nullptr);
    }

    using Fill = std::function<void(AutomationArgs&)>;

    HRESULT Export(const Fill& fill, UINT count = 14) {
        const ComPtr<IDispatch> document = GetObjectProperty(application_.Get(), L"ActiveDocument");
        return AutomationCallLongMethod(document.Get(), L"ExportAsFixedFormat", nullptr, count,
                                        [&](AutomationArgs& args) {
                                            args.Argument(1) = MakeVariantString(Target().c_str());
                                            args.Argument(2) = MakeVariantInt(17);
                                            fill(args);
                                        });
    }

    std::wstring Target() const { return folder_.Path(L"out.pdf"); }
    std::wstring PagesOf(const std::wstring& pdf) const {
        return AskBridge({{"command", L"pages"}, {"path", LinuxPath(pdf)}}).text;
    }

    const TemporaryFolder folder_;
    std::wstring document_;
    ComPtr<IDispatch> application_;
};

}  // namespace

TEST_F(WordModel, ExportsAllPagesByDefault) {
    EXPECT_EQ(Export([](AutomationArgs&) {}), S_OK);
    EXPECT_EQ(ReadFileText(Target()).substr(0, 5), "%PDF-");
    EXPECT_EQ(PagesOf(Target()), L"3");
}

TEST_F(WordModel, RefusesWhatItCannotDo) {
    const struct {
        const char* what;
        UINT position;
        VARIANT value;
        HRESULT result;
    } rows[] = {
        {"XPS", 2, MakeVariantInt(18), DISP_E_EXCEPTION},
        {"selection", 5, MakeVariantInt(1), DISP_E_EXCEPTION},
        {"optimisation", 4, MakeVariantInt(5), DISP_E_EXCEPTION},
        {"item", 8, MakeVariantInt(1), DISP_E_EXCEPTION},
        {"Word bookmarks", 11, MakeVariantInt(2), DISP_E_EXCEPTION},
        {"no number", 2, MakeVariantString(L"PDF"), DISP_E_TYPEMISMATCH},
        {"no boolean", 9, MakeVariantString(L"perhaps"), DISP_E_TYPEMISMATCH},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Export([&](AutomationArgs& args) { args.Argument(row.position) = row.value; }), row.result)
            << row.what;
    }
    EXPECT_FALSE(std::filesystem::exists(Target()));
}

TEST_F(WordModel, RefusesMissingAndSurplusArguments) {
    const auto omit = [](AutomationArgs& args) {
        VariantClear(&args.Argument(1));
        args.Argument(1).vt = VT_ERROR;
        args.Argument(1).scode = DISP_E_PARAMNOTFOUND;
    };
    EXPECT_EQ(Export(omit), DISP_E_PARAMNOTOPTIONAL);
    EXPECT_EQ(Export([](AutomationArgs&) {}, 16), DISP_E_BADPARAMCOUNT);
}

TEST_F(WordModel, ExportsThePageRange) {
    const auto range = [](LONG from, LONG to) {
        return [from, to](AutomationArgs& args) {
            args.Argument(5) = MakeVariantInt(3);  // wdExportFromTo
            args.Argument(6) = MakeVariantInt(from);
            args.Argument(7) = MakeVariantInt(to);
        };
    };
    EXPECT_EQ(Export(range(1, 1)), S_OK);
    EXPECT_EQ(PagesOf(Target()), L"1");
    EXPECT_EQ(Export(range(2, 3)), S_OK);
    EXPECT_EQ(PagesOf(Target()), L"2");
    EXPECT_EQ(Export([](AutomationArgs& args) { args.Argument(5) = MakeVariantInt(2); }), S_OK);  // current page
    EXPECT_EQ(PagesOf(Target()), L"1");
    EXPECT_EQ(Export(range(2, 1)), DISP_E_EXCEPTION);
}

TEST_F(WordModel, FailedExportLeavesTheOldFileAsItWas) {
    folder_.MakeFile(L"out.pdf", "old");
    SetFileAttributesW(Target().c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(Export([](AutomationArgs&) {}), DISP_E_EXCEPTION);
    EXPECT_EQ(ReadFileText(Target()), "old");
    SetFileAttributesW(Target().c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(WordModel, WithoutADocumentNothingIsActive) {
    const ComPtr<IDispatch> empty = MakeWordApplication(L"", nullptr);
    EXPECT_FALSE(GetObjectProperty(empty.Get(), L"ActiveDocument"));
    EXPECT_FALSE(GetObjectProperty(empty.Get(), L"ActiveWindow"));
    EXPECT_TRUE(GetObjectProperty(empty.Get(), L"Documents"));
}

TEST_F(WordModel, ObjectsDieWithTheirLastReference) {
    application_.Reset();
    EXPECT_TRUE(LiveObjects::List().empty());
}
