// Outlook's selection and folder, and what the properties of a mail count as.
#include "src/outlook/OutlookItems.h"

#include <gtest/gtest.h>
#include <oleauto.h>

#include <cstdlib>
#include <new>

#include "standins/common/Text.h"
#include "tests/support/ScriptedOutlook.h"

namespace {

using Names = std::vector<std::wstring>;
using Microsoft::WRL::ComPtr;

// Makes a member answer what does not count as an object.
const std::vector<void (*)(ScriptedDispatch&, const std::wstring&)> noObject = {
    [](ScriptedDispatch& object, const std::wstring& name) { object.Fail(name, E_FAIL); },
    [](ScriptedDispatch& object, const std::wstring& name) { object.Fail(name, DISP_E_EXCEPTION); },
    [](ScriptedDispatch& object, const std::wstring& name) { object.GiveNothing(name); },
    [](ScriptedDispatch& object, const std::wstring& name) { object.GiveObject(name, nullptr); },
    [](ScriptedDispatch& object, const std::wstring& name) { object.GiveNumber(name, 1); },
    [](ScriptedDispatch& object, const std::wstring& name) { object.GiveText(name, L"object"); },
    [](ScriptedDispatch& object, const std::wstring& name) {
        object.On(name, [&object](VARIANT* result) {
            result->vt = VT_UNKNOWN;
            result->punkVal = &object;
            object.AddRef();
            return S_OK;
        });
    },
};

// The same for a text. An empty text without a string counts as none.
const std::vector<void (*)(ScriptedDispatch&, const std::wstring&)> noText = {
    [](ScriptedDispatch& object, const std::wstring& name) { object.Fail(name, E_FAIL); },
    [](ScriptedDispatch& object, const std::wstring& name) { object.GiveNothing(name); },
    [](ScriptedDispatch& object, const std::wstring& name) { object.GiveType(name, VT_BSTR); },
    [](ScriptedDispatch& object, const std::wstring& name) { object.GiveType(name, VT_NULL); },
    [](ScriptedDispatch& object, const std::wstring& name) { object.GiveNumber(name, 1); },
    [](ScriptedDispatch& object, const std::wstring& name) { object.GiveObject(name, &object); },
};

class OutlookItems : public testing::Test {
protected:
    std::vector<LONG> Visited(IDispatch* collection) {
        std::vector<LONG> visited;
        ForEachItem(collection, [&](IDispatch* item) {
            for (size_t i = 0; i < 4; ++i) {
                if (item == &members_[i]) visited.push_back(static_cast<LONG>(i) + 1);
            }
        });
        return visited;
    }

    Calls calls_;
    ScriptedDispatch members_[4];
    ScriptedOutlook outlook_{calls_};
};

SYSTEMTIME Received(ScriptedDispatch& item, VARTYPE type, DATE date) {
    item.On(L"ReceivedTime", [=](VARIANT* result) {
        result->vt = type;
        result->date = date;
        return S_OK;
    });
    return GetReceivedTime(&item);
}

// Whether the time is that of now, to the second before or after.
bool IsNow(const SYSTEMTIME& time) {
    SYSTEMTIME local;
    GetLocalTime(&local);
    FILETIME one, other;
    SystemTimeToFileTime(&time, &one);
    SystemTimeToFileTime(&local, &other);
    const auto steps = [](const FILETIME& t) {
        return static_cast<long long>(t.dwHighDateTime) << 32 | static_cast<long long>(t.dwLowDateTime);
    };
    return std::abs(steps(other) - steps(one)) < 10'000'000LL * 5;
}

}  // namespace

TEST_F(OutlookItems, SelectionIsThatOfTheActiveExplorer) {
    EXPECT_EQ(GetSelectedItems(&outlook_.application).Get(), &outlook_.selection.object);
    EXPECT_EQ(calls_, (Calls{L"application.ActiveExplorer", L"explorer.Selection"}));
}

TEST_F(OutlookItems, FolderIsTheOneThatTheActiveExplorerShows) {
    EXPECT_EQ(GetCurrentFolder(&outlook_.application).Get(), &outlook_.folder);
    EXPECT_EQ(calls_, (Calls{L"application.ActiveExplorer", L"explorer.CurrentFolder"}));
    calls_.clear();
    EXPECT_EQ(GetCurrentFolderItems(&outlook_.application).Get(), &outlook_.items.object);
    EXPECT_EQ(calls_, (Calls{L"application.ActiveExplorer", L"explorer.CurrentFolder", L"folder.Items"}));
}

TEST_F(OutlookItems, EveryStepToTheItemsMustYieldAnObject) {
    for (const auto& spoil : noObject) {
        for (const size_t step : {0, 1, 2}) {
            ScriptedOutlook outlook(calls_);
            calls_.clear();
            if (step == 0) spoil(outlook.application, L"ActiveExplorer");
            if (step == 1) spoil(outlook.explorer, L"CurrentFolder");
            if (step == 1) spoil(outlook.explorer, L"Selection");
            if (step == 2) spoil(outlook.folder, L"Items");
            EXPECT_EQ(GetCurrentFolderItems(&outlook.application), nullptr);
            EXPECT_EQ(calls_.size(), step + 1);  // nothing is asked after it
            if (step < 2) {
                EXPECT_EQ(GetSelectedItems(&outlook.application), nullptr);
            }
        }
    }
}

TEST_F(OutlookItems, MissingPropertyOrApplicationGivesNoItems) {
    ScriptedDispatch without;
    EXPECT_EQ(GetSelectedItems(&without), nullptr);
    EXPECT_EQ(GetCurrentFolderItems(&without), nullptr);
    EXPECT_EQ(without.LookedUp(), (Names{L"ActiveExplorer", L"ActiveExplorer"}));
    EXPECT_EQ(GetSelectedItems(nullptr), nullptr);
    EXPECT_EQ(GetCurrentFolder(nullptr), nullptr);
    EXPECT_EQ(GetCurrentFolderItems(nullptr), nullptr);
}

TEST_F(OutlookItems, ItemIsAMethodThatTakesAThirtyTwoBitIndexFromOneToTheCount) {
    for (ScriptedDispatch& member : members_) outlook_.AddItem(&member);
    EXPECT_EQ(Visited(&outlook_.items.object), (std::vector<LONG>{1, 2, 3, 4}));
    EXPECT_EQ(calls_, (Calls{L"items.Count", L"items.Item(1)", L"items.Item(2)", L"items.Item(3)", L"items.Item(4)"}));
    const Invocation& call = outlook_.items.object.invocations.back();
    EXPECT_EQ(call.flags, DISPATCH_METHOD);
    EXPECT_EQ(call.wire, std::vector{WireNumber(4)});
    EXPECT_TRUE(call.named.empty());
    EXPECT_TRUE(call.hasResult);
}

TEST_F(OutlookItems, EmptyCollectionVisitsNothing) {
    EXPECT_EQ(Visited(&outlook_.selection.object), std::vector<LONG>{});
    EXPECT_EQ(calls_, Calls{L"selection.Count"});
    outlook_.selection.object.GiveNumber(L"Count", -1);
    EXPECT_EQ(Visited(&outlook_.selection.object), std::vector<LONG>{});
    EXPECT_EQ(outlook_.selection.object.LookedUp(), (Names{L"Count", L"Count"}));
    EXPECT_EQ(Visited(nullptr), std::vector<LONG>{});
}

TEST_F(OutlookItems, CountOfAnotherTypeVisitsNothing) {
    outlook_.AddItem(&members_[0]);
    for (const VARTYPE type : {VT_I2, VT_UI1, VT_UI2, VT_UI4, VT_I8, VT_INT, VT_R8, VT_BOOL, VT_EMPTY, VT_NULL}) {
        outlook_.items.object.On(L"Count", [type](VARIANT* result) {
            result->vt = static_cast<VARTYPE>(type);
            if (type == VT_R8) {
                result->dblVal = 1;
            } else {
                result->llVal = 1;
            }
            return S_OK;
        });
        EXPECT_EQ(Visited(&outlook_.items.object), std::vector<LONG>{}) << type;
    }
    outlook_.items.object.GiveText(L"Count", L"1");
    EXPECT_EQ(Visited(&outlook_.items.object), std::vector<LONG>{});
    outlook_.items.object.Fail(L"Count", DISP_E_EXCEPTION);
    EXPECT_EQ(Visited(&outlook_.items.object), std::vector<LONG>{});
    for (const std::wstring& call : calls_) EXPECT_EQ(call, L"items.Count");
}

TEST_F(OutlookItems, ItemThatIsNoObjectIsSkipped) {
    for (const auto& spoil : noObject) {
        ScriptedDispatch collection;
        collection.GiveNumber(L"Count", 3);
        const auto giveMember = [&](VARIANT* result) {
            const LONG index = collection.invocations.back().wire[0].number;
            return GiveObject(result, &members_[index - 1]);
        };
        ScriptedDispatch spoilt;
        spoil(spoilt, L"Item");
        collection.On(L"Item", [&](VARIANT* result) {
            if (collection.invocations.back().wire[0].number != 2) return giveMember(result);
            DISPPARAMS none = {};
            return spoilt.Invoke(100, IID_NULL, 0, DISPATCH_METHOD, &none, result, nullptr, nullptr);
        });
        EXPECT_EQ(Visited(&collection), (std::vector<LONG>{1, 3}));
        EXPECT_EQ(spoilt.References(), 1U);
    }
    for (const ScriptedDispatch& member : members_) EXPECT_EQ(member.References(), 1U);
}

TEST_F(OutlookItems, ExceptionForOneItemEndsWithThatItem) {
    for (ScriptedDispatch& member : members_) outlook_.AddItem(&member);
    std::vector<IDispatch*> visited;
    ForEachItem(&outlook_.items.object, [&](IDispatch* item) {
        if (item == &members_[1]) throw std::bad_alloc();
        if (item == &members_[2]) throw 1;
        visited.push_back(item);
    });
    EXPECT_EQ(visited, (std::vector<IDispatch*>{&members_[0], &members_[3]}));
    for (const ScriptedDispatch& member : members_) EXPECT_EQ(member.References(), 1U);
}

TEST_F(OutlookItems, MailHasIpmNoteAnywhereInItsMessageClass) {
    const struct {
        const wchar_t* messageClass;
        bool isMail;
    } rows[] = {
        {L"IPM.Note", true},
        {L"IPM.Note.SMIME", true},
        {L"IPM.Note.SMIME.MultipartSigned", true},
        {L"REPORT.IPM.Note.NDR", true},
        {L"IPM.Notes", true},
        {L"IPM.Appointment", false},
        {L"ipm.note", false},
        {L"IPM.NOTE", false},
        {L"IPM.Schedule.Meeting.Request", false},
        {L"IPM.Contact", false},
        {L"IPM.Task", false},
        {L"IPM.StickyNote", false},
        {L"REPORT.IPM", false},
        {L"", false},
    };
    for (const auto& row : rows) {
        ScriptedDispatch item;
        item.GiveText(L"MessageClass", row.messageClass);
        EXPECT_EQ(IsMailItem(&item), row.isMail) << Utf8(row.messageClass);
        EXPECT_EQ(item.invocations.at(0).flags, DISPATCH_PROPERTYGET);
    }
}

TEST_F(OutlookItems, ItemWithoutAReadableMessageClassIsNoMail) {
    EXPECT_FALSE(IsMailItem(nullptr));
    ScriptedDispatch item;
    EXPECT_FALSE(IsMailItem(&item));
    for (const auto& spoil : noText) {
        spoil(item, L"MessageClass");
        EXPECT_FALSE(IsMailItem(&item));
    }
    EXPECT_EQ(item.References(), 1U);
}

TEST_F(OutlookItems, SubjectIsTakenAsItStands) {
    for (const std::wstring subject :
         {L"Hello", L"..\\..\\evil", L"RE: x", L" ", L"\x05D0\x202E", L"\xD83D\xDE00", L"\xD800", L"mail"}) {
        ScriptedDispatch item;
        item.GiveText(L"Subject", subject);
        EXPECT_EQ(GetMailSubject(&item), subject);
    }
    ScriptedDispatch item;
    item.GiveText(L"Subject", std::wstring(L"a\0b", 3));
    EXPECT_EQ(GetMailSubject(&item), std::wstring(L"a\0b", 3));
}

TEST_F(OutlookItems, EmptySubjectIsCalledMail) {
    ScriptedDispatch item;
    item.GiveText(L"Subject", L"");
    EXPECT_EQ(GetMailSubject(&item), L"mail");
}

TEST_F(OutlookItems, SubjectThatCannotBeReadIsEmpty) {
    EXPECT_EQ(GetMailSubject(nullptr), L"");
    ScriptedDispatch item;
    EXPECT_EQ(GetMailSubject(&item), L"");
    for (const auto& spoil : noText) {
        spoil(item, L"Subject");
        EXPECT_EQ(GetMailSubject(&item), L"");
    }
}

TEST_F(OutlookItems, KeyIsTheHashOfTheEntryIdsBytesWithoutLeadingZeros) {
    // Worked out with another program, from the bytes of each unit, the low one first.
    const struct {
        std::wstring entryId;
        const wchar_t* key;
    } rows[] = {
        {L"", L"cbf29ce484222325"},
        {L"a", L"89be207b544f1e4"},
        {L"entry1", L"da36d6e29c016568"},
        {L"entry2220", L"f333a67856a82b"},
        {L"00000000AF0001", L"b3a44360d41ae1fb"},
        {L"\x65E5\x672C", L"404f438b4c18884a"},
        {L"\xD800", L"831b007b4ea00e5"},
        {std::wstring(L"A\0B", 3), L"21c7f182b8dbc9d6"},
    };
    for (const auto& row : rows) {
        ScriptedDispatch item;
        item.GiveText(L"EntryID", row.entryId);
        EXPECT_EQ(GetMailKey(&item), row.key) << Utf8(row.entryId);
        EXPECT_EQ(GetMailKey(&item), row.key) << "the same every time";
    }
}

TEST_F(OutlookItems, KeyIsEmptyWithoutAReadableEntryId) {
    EXPECT_EQ(GetMailKey(nullptr), L"");
    ScriptedDispatch item;
    EXPECT_EQ(GetMailKey(&item), L"");
    for (const auto& spoil : noText) {
        spoil(item, L"EntryID");
        EXPECT_EQ(GetMailKey(&item), L"");
    }
}

TEST_F(OutlookItems, KeysOfNoAndOfAnEmptyEntryIdTellNoMailFromAnother) {
    EXPECT_FALSE(IsDistinctKey(L""));
    EXPECT_FALSE(IsDistinctKey(L"cbf29ce484222325"));
    EXPECT_TRUE(IsDistinctKey(L"cbf29ce484222326"));
    EXPECT_TRUE(IsDistinctKey(L"0"));
}

TEST_F(OutlookItems, NameIsEmptyWhenItCannotBeRead) {
    EXPECT_EQ(GetItemName(&outlook_.folder), L"Inbox");
    EXPECT_EQ(GetItemName(nullptr), L"");
    ScriptedDispatch item;
    EXPECT_EQ(GetItemName(&item), L"");
    for (const auto& spoil : noText) {
        spoil(item, L"Name");
        EXPECT_EQ(GetItemName(&item), L"");
    }
}

TEST_F(OutlookItems, ReceivedTimeIsTheDateToTheSecond) {
    ScriptedMail& mail = outlook_.AddMail(L"x");
    mail.ReceivedAt(2024, 2, 29, 23, 59, 58);
    const SYSTEMTIME time = GetReceivedTime(&mail.object);
    EXPECT_EQ(time.wYear, 2024);
    EXPECT_EQ(time.wMonth, 2);
    EXPECT_EQ(time.wDay, 29);
    EXPECT_EQ(time.wHour, 23);
    EXPECT_EQ(time.wMinute, 59);
    EXPECT_EQ(time.wSecond, 58);
    EXPECT_EQ(calls_, Calls{L"mail1.ReceivedTime"});
}

TEST_F(OutlookItems, CurrentLocalTimeStandsInForAMissingReceivedTime) {
    EXPECT_TRUE(IsNow(GetReceivedTime(nullptr)));
    ScriptedDispatch item;
    EXPECT_TRUE(IsNow(GetReceivedTime(&item)));
    item.Fail(L"ReceivedTime", E_FAIL);
    EXPECT_TRUE(IsNow(GetReceivedTime(&item)));
    EXPECT_FALSE(IsNow(Received(item, VT_DATE, 45000)));
    for (const VARTYPE type : {VT_R8, VT_EMPTY, VT_NULL, VT_I4, VT_CY}) {
        EXPECT_TRUE(IsNow(Received(item, type, 45000))) << type;
    }
    EXPECT_TRUE(IsNow(Received(item, VT_DATE, 1e10))) << "a date that cannot be one";
}
