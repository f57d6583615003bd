// Word's stand-in for automation keeps to Word's rules, and says when it is no longer needed.
#include "standins/office/AutomatedWord.h"

#include <gtest/gtest.h>

#include "src/automation/AutomationCalls.h"
#include "src/base/Handles.h"
#include "standins/office/DynamicObject.h"
#include "tests/support/Files.h"

using Microsoft::WRL::ComPtr;

namespace {

class AutomatedWord : public testing::Test {
protected:
    // Documents.Open, as the add-in calls it.
    HRESULT Open(
        const std::wstring& path, ComPtr<IDispatch>* document = nullptr, UINT count = 16,
        const std::function<void(AutomationArgs&)>& fill = [](AutomationArgs&) {}) {
        const ComPtr<IDispatch> documents = GetObjectProperty(word_.Get(), L"Documents");
        OwnedVariant result;
        const HRESULT opened =
            AutomationCallLongMethod(documents.Get(), L"Open", &result, count, [&](AutomationArgs& args) {
                args.Argument(1) = MakeVariantString(path.c_str());
                if (count >= 12) args.Argument(12) = MakeVariantBool(VARIANT_FALSE);
                fill(args);
            });
        if (document) *document = TakeObject(result);
        return opened;
    }

    LONG OpenDocuments() const {
        return GetNumberProperty(GetObjectProperty(word_.Get(), L"Documents").Get(), L"Count").value_or(-1);
    }

    const TemporaryFolder folder_;
    int quits_ = 0;
    ComPtr<IDispatch> word_ = MakeAutomatedWord([this] { ++quits_; });
};

}  // namespace

TEST_F(AutomatedWord, ShowsWordsInterface) {
    ComPtr<IDispatch> application;
    EXPECT_EQ(word_->QueryInterface(wordApplicationIid, reinterpret_cast<void**>(application.GetAddressOf())), S_OK);
    EXPECT_EQ(application.Get(), word_.Get());
}

TEST_F(AutomatedWord, OpensADocumentWithSixteenArguments) {
    const std::wstring path = folder_.MakeFile(L"a mail.doc");
    ComPtr<IDispatch> document;
    EXPECT_EQ(Open(path, &document), S_OK);
    EXPECT_EQ(GetTextProperty(document.Get(), L"FullName"), path);
    EXPECT_EQ(OpenDocuments(), 1);
    EXPECT_EQ(Open(path), S_OK);
    EXPECT_EQ(OpenDocuments(), 1);
}

TEST_F(AutomatedWord, RefusesWhatItCannotOpen) {
    const std::wstring path = folder_.MakeFile(L"a mail.doc");
    const auto give = [](UINT position, VARIANT value) {
        return [position, value](AutomationArgs& args) { args.Argument(position) = value; };
    };
    EXPECT_EQ(Open(folder_.Path(L"other.doc")), DISP_E_EXCEPTION);
    EXPECT_EQ(Open(folder_.Path()), DISP_E_EXCEPTION);
    EXPECT_EQ(Open(path, nullptr, 17), DISP_E_BADPARAMCOUNT);
    EXPECT_EQ(Open(path, nullptr, 16, give(10, MakeVariantString(L"Word"))), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Open(path, nullptr, 16, give(3, MakeVariantString(L"perhaps"))), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(OpenDocuments(), 0);
}

TEST_F(AutomatedWord, KeepsVisibleAndDisplayAlerts) {
    const auto put = [this](const wchar_t* name, VARIANT value) {
        return AutomationPutProperty(word_.Get(), name, 1, &value);
    };
    EXPECT_EQ(GetNumberProperty(word_.Get(), L"DisplayAlerts"), -1);
    EXPECT_EQ(put(L"DisplayAlerts", MakeVariantBool(VARIANT_FALSE)), S_OK);
    EXPECT_EQ(GetNumberProperty(word_.Get(), L"DisplayAlerts"), 0);
    EXPECT_EQ(put(L"DisplayAlerts", MakeVariantInt(7)), DISP_E_EXCEPTION);

    EXPECT_EQ(put(L"Visible", MakeVariantBool(1)), S_OK);
    OwnedVariant visible;
    EXPECT_EQ(AutomationGetProperty(word_.Get(), L"Visible", &visible), S_OK);
    EXPECT_EQ(visible.vt, VT_BOOL);
    EXPECT_EQ(visible.boolVal, VARIANT_TRUE);
}

TEST_F(AutomatedWord, QuitsWhenItIsTold) {
    EXPECT_EQ(AutomationCallMethod(word_.Get(), L"Quit", nullptr, 0, nullptr), S_OK);
    EXPECT_EQ(quits_, 1);
}

TEST_F(AutomatedWord, QuitsWithTheLastOfItsObjects) {
    ComPtr<IDispatch> document;
    Open(folder_.MakeFile(L"a mail.doc"), &document);
    word_.Reset();
    EXPECT_EQ(quits_, 0);
    document.Reset();
    EXPECT_EQ(quits_, 1);
    EXPECT_TRUE(LiveObjects::List().empty());
}
