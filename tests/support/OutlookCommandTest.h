// What the Outlook commands need to run in a test: a scripted Outlook and Word, a recording engine, a companion and a
// working folder.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "src/base/AddinState.h"
#include "standins/office/DialogRobot.h"
#include "tests/support/CompanionProbe.h"
#include "tests/support/EngineRecorder.h"
#include "tests/support/Files.h"
#include "tests/support/ScriptedOutlook.h"
#include "tests/support/ScriptedWord.h"

using Paths = std::vector<std::wstring>;
using Listing = std::map<std::wstring, std::string>;

// The keys of the entry ids "entry1" to "entry4", "" and "inbox".
inline const std::wstring key1 = L"da36d6e29c016568";
inline const std::wstring key2 = L"da4108e29c0a0ee3";
inline const std::wstring key3 = L"da3da2e29c072bba";
inline const std::wstring key4 = L"da47d4e29c0fd535";
inline const std::wstring keyOfEmpty = L"cbf29ce484222325";
inline const std::wstring keyOfInbox = L"340f162c29565de7";

class OutlookCommandTest : public testing::Test {
protected:
    std::wstring Path(const std::wstring& name) const { return folder_.Path(name); }
    bool HasCall(const std::wstring& call) const {
        return std::find(calls_.begin(), calls_.end(), call) != calls_.end();
    }

    // What was embedded: each PDF that was opened for it, followed by "name: content" of its new attachments.
    Paths Embedded() const {
        Paths embedded;
        for (const std::wstring& call : engine_.calls) {
            if (call.starts_with(L"PDF_LoadDocument") || call.starts_with(L"PDFDoc_NewAttachment")) {
                embedded.push_back(InBrackets(call));
            }
            if (call.starts_with(L"PDFAttachment_SetFile ")) embedded.back() += L": " + InBrackets(call);
        }
        return embedded;
    }
    static std::wstring InBrackets(const std::wstring& call) {
        const size_t start = call.find(L'[') + 1;
        return call.substr(start, call.find(L']', start) - start);
    }

    Calls calls_;
    const TemporaryFolder folder_;  // the working folder
    EngineRecorder engine_;
    ScriptedWord word_{calls_};
    ScriptedOutlook outlook_{calls_};
    AddinState state_ = {{}, HostOutlook, nullptr, {}};
};

inline void ExpectOneWarning(const DialogRobot& robot, const std::wstring& text) {
    ASSERT_EQ(robot.Seen().size(), 1U);
    EXPECT_EQ(robot.Seen()[0].caption, L"ZAVO Add-in");
    EXPECT_EQ(robot.Seen()[0].text, text);
    EXPECT_EQ(robot.Seen()[0].icon, LoadIconW(nullptr, IDI_WARNING));
}
