// Outlook's stand-in reads what was prepared, and refuses the paths that Windows refuses.
#include "standins/office/OutlookFolder.h"

#include <gtest/gtest.h>

#include "src/automation/AutomationCalls.h"
#include "standins/office/DynamicObject.h"
#include "tests/support/Files.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr LONG olDoc = 4;

class PreparedFolder : public testing::Test {
protected:
    OutlookFolder Read(const std::wstring& text) const {
        std::string bytes(text.size() * sizeof(wchar_t), '\0');
        text.copy(reinterpret_cast<wchar_t*>(bytes.data()), text.size());
        prepared_.MakeFile(L"folder.txt", bytes);
        return ReadOutlookFolder(prepared_.Path());
    }

    // A folder with one mail, which has one attachment.
    OutlookFolder ReadOneMail() const {
        prepared_.MakeFile(L"0001.html", "<html><body><p>Hello</p></body></html>");
        prepared_.MakeFile(L"0001-1.bin", "attached");
        return Read(
            L"folder\tInbox\nfolder-id\tF\nitem\ta.eml\nclass\tIPM.Note\nsubject\tS\nid\tE\n"
            L"received\t46296.25\npage\t0001.html\nattachment\t0001-1.bin\nname\ta.txt\n");
    }

    // The names in the folder that is saved to.
    std::vector<std::wstring> Saved() const {
        std::vector<std::wstring> names;
        for (const auto& entry : std::filesystem::directory_iterator(target_.Path())) {
            names.push_back(entry.path().filename().wstring());
        }
        return names;
    }

    const TemporaryFolder prepared_;
    const TemporaryFolder target_;
};

template <typename Save>
bool IsRefused(Save&& save) {
    try {
        save();
        return false;
    } catch (const AutomationError& error) {
        return FAILED(error.code);
    }
}

}  // namespace

TEST_F(PreparedFolder, IsReadAsItStands) {
    const OutlookFolder folder = Read(
        L"folder\tIn\\nbox\nfolder-id\tF\nitem\ta.eml\nclass\tIPM.Contact\nsubject\t\nid\t\n"
        L"item\tb.eml\nclass\tIPM.Note\nsubject\t..\\\\a\tb\xD83D\nid\tE\nsender\tIn\u00E9s\nreceived\t46296.25\n"
        L"attachment\t0002-1.bin\nattachment\t0002-2.bin\nname\tx\n");
    EXPECT_EQ(folder.name, L"In\nbox");
    EXPECT_EQ(folder.entryId, L"F");
    ASSERT_EQ(folder.items.size(), 2u);
    EXPECT_EQ(folder.items[0].messageClass, L"IPM.Contact");
    EXPECT_EQ(folder.items[0].subject, L"");
    EXPECT_FALSE(folder.items[0].sender);
    EXPECT_FALSE(folder.items[0].received);
    EXPECT_EQ(folder.items[1].subject, L"..\\a\tb\xD83D");
    EXPECT_EQ(folder.items[1].entryId, L"E");
    EXPECT_EQ(folder.items[1].sender, L"In\u00E9s");
    EXPECT_EQ(folder.items[1].received, 46296.25);
    ASSERT_EQ(folder.items[1].attachments.size(), 2u);
    EXPECT_FALSE(folder.items[1].attachments[0].fileName);
    EXPECT_EQ(folder.items[1].attachments[1].fileName, L"x");
}

TEST_F(PreparedFolder, ItemWithoutASenderHasNoSuchProperty) {
    const ComPtr<IDispatch> outlook =
        MakeOutlookApplication(Read(L"item\ta.eml\nitem\tb.eml\nsender\tIn\u00E9s\n"), [] {
            return std::vector<size_t>{0, 1};
        });
    const ComPtr<IDispatch> explorer = GetObjectProperty(outlook.Get(), L"ActiveExplorer");
    const ComPtr<IDispatch> selection = GetObjectProperty(explorer.Get(), L"Selection");
    const auto sender = [&](LONG place) {
        OwnedVariant item;
        EXPECT_EQ(AutomationCallMethod1(selection.Get(), L"Item", &item, MakeVariantInt(place)), S_OK);
        return GetTextProperty(TakeObject(item).Get(), L"SenderName");
    };
    EXPECT_EQ(sender(1), std::nullopt);
    EXPECT_EQ(sender(2), L"In\u00E9s");
}

TEST_F(PreparedFolder, ThatIsMissingIsSaid) { EXPECT_THROW(ReadOutlookFolder(prepared_.Path()), std::runtime_error); }

TEST_F(PreparedFolder, PathsThatWindowsRefusesAreRefused) {
    const OutlookFolder folder = ReadOneMail();
    const std::wstring longName(300, L'n');
    const wchar_t* const names[] = {L"x:y",
                                    L"what?",
                                    L"a*b",
                                    L"\"q\"",
                                    L"<a>",
                                    L"a|b",
                                    L"a/b",
                                    L"tab\there",
                                    L"CON",
                                    L"con.doc",
                                    L"Nul",
                                    L"COM1.x",
                                    L"lpt9",
                                    L"COM\u00B2.doc",
                                    L"AUX .doc",
                                    L"CONOUT$",
                                    L"no\\such folder\\a",
                                    longName.c_str()};
    for (const wchar_t* const name : names) {
        const std::wstring path = target_.Path(name);
        EXPECT_TRUE(IsRefused([&] { folder.items[0].attachments[0].save(path); })) << path.c_str();
        EXPECT_TRUE(IsRefused([&] { folder.items[0].saveAs(path, olDoc); })) << path.c_str();
    }
    EXPECT_TRUE(IsRefused([&] { folder.items[0].attachments[0].save(L"relative.txt"); }));
    EXPECT_TRUE(IsRefused([&] { folder.items[0].attachments[0].save(L""); }));
    EXPECT_TRUE(Saved().empty());
}

TEST_F(PreparedFolder, AttachmentIsWrittenOverWhatIsThere) {
    const OutlookFolder folder = ReadOneMail();
    const std::wstring path = target_.MakeFile(L"COM10 \u202E.txt", "a longer text that was there before");
    folder.items[0].attachments[0].save(path);
    EXPECT_EQ(ReadFileText(path), "attached");
}

TEST_F(PreparedFolder, WriteProtectedFileIsRefused) {
    const OutlookFolder folder = ReadOneMail();
    const std::wstring path = target_.MakeFile(L"a.txt", "old");
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_TRUE(IsRefused([&] { folder.items[0].attachments[0].save(path); }));
    SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    EXPECT_EQ(ReadFileText(path), "old");
}

TEST_F(PreparedFolder, MailIsSavedAsAWordDocumentAndNothingElse) {
    const OutlookFolder folder = ReadOneMail();
    const std::wstring path = target_.Path(L"a mail.doc");
    folder.items[0].saveAs(path, olDoc);
    EXPECT_EQ(ReadFileText(path).substr(0, 4), "\xD0\xCF\x11\xE0");  // a compound file, as Word 97 writes it
    EXPECT_EQ(Saved(), std::vector<std::wstring>{L"a mail.doc"});
    EXPECT_TRUE(IsRefused([&] { folder.items[0].saveAs(target_.Path(L"a mail.msg"), 3); }));
}
