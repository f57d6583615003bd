// Folders of hundreds of mails: what was converted once is not converted again, fifty runs need no more memory than
// one, and items are let go one by one.
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>

#include "src/base/ControlIds.h"
#include "standins/common/Text.h"
#include "standins/office/DynamicObject.h"
#include "tests/integration/OutlookSession.h"
#include "tests/support/CountedAllocations.h"
#include "tests/support/OpenHandles.h"

namespace {

constexpr size_t mails = 500;
constexpr int runs = 50;

// Every tenth mail has an attachment.
OutlookFolder LargeFolder(size_t count) {
    OutlookFolder folder = {L"Archive", L"id of the archive", {}};
    for (size_t i = 0; i < count; ++i) {
        const std::wstring number = std::to_wstring(i);
        std::vector<std::wstring> attachments;
        if (i % 10 == 0) attachments.push_back(L"report " + number + L".pdf");
        folder.items.push_back(
            MakeMail(L"Mail " + number, L"id " + number, 45000.0 + static_cast<double>(i) / 24, attachments));
    }
    return folder;
}

// What is allocated on all heaps of the process: those of C++, COM and the system's libraries. Wine does not count a
// process's private bytes.
size_t HeapBytes() {
    HANDLE heaps[64];
    const DWORD count = GetProcessHeaps(ARRAYSIZE(heaps), heaps);
    EXPECT_LE(count, ARRAYSIZE(heaps));
    size_t bytes = 0;
    for (DWORD i = 0; i < count; ++i) {
        HeapLock(heaps[i]);
        PROCESS_HEAP_ENTRY entry = {};
        while (HeapWalk(heaps[i], &entry)) bytes += entry.wFlags & PROCESS_HEAP_ENTRY_BUSY ? entry.cbData : 0;
        HeapUnlock(heaps[i]);
    }
    return bytes;
}

class OutlookMass : public testing::Test {
protected:
    OutlookMass() {
        engine_.recording = false;
        session_.Connect(*addin_.Get());
    }

    void Click(std::wstring_view controlId) {
        engine_.Restart();
        session_.word.Restart();
        session_.faults.Restart();
        ASSERT_EQ(session_.Click(*addin_.Get(), controlId), S_OK);
    }

    // Fifty clicks after two that make what is made once. Blocks of C++ and live objects are the same to a single one;
    // the heaps as a whole may not even have grown by the smallest of blocks a run.
    template <typename Prepare>
    void CheckMemory(std::wstring_view controlId, Prepare prepare) {
        for (int run = 0; run < 2; ++run) {
            prepare();
            Click(controlId);
        }
        const auto objects = LiveObjects::List();
        const long blocks = liveBlocks;
        const size_t handles = OpenHandles();
        const size_t bytes = HeapBytes();
        for (int run = 0; run < runs; ++run) {
            prepare();
            Click(controlId);
            ASSERT_EQ(liveBlocks, blocks) << "run " << run;
        }
        const auto growth = static_cast<long long>(HeapBytes()) - static_cast<long long>(bytes);
        std::cout << "  " << bytes << " bytes on the heaps, after " << runs << " runs " << growth << " more"
                  << std::endl;
        EXPECT_GT(bytes, 0u);
        EXPECT_LT(growth, runs * 16);
        EXPECT_EQ(LiveObjects::List(), objects);
        EXPECT_LT(OpenHandles(), handles + 10);
    }

    const OutlookFiles files_;
    EngineRecorder engine_;
    OutlookSession session_{LargeFolder(mails), {}};
    const AddinObject addin_;
};

bool TakesMinutes() { return !Environment(L"ZAVO_TEST_ALL").empty(); }

}  // namespace

TEST_F(OutlookMass, SecondRunConvertsNothing) {
    Click(Button_ID_CreateByFolder);
    EXPECT_EQ(session_.word.started, static_cast<long>(mails));
    const FileTree after = files_.List();
    const auto isPdf = [](const auto& entry) { return entry.first.ends_with(L".pdf"); };
    EXPECT_EQ(std::count_if(after.begin(), after.end(), isPdf), static_cast<long>(mails));
    const size_t firstCalls = session_.faults.Count();

    for (const std::wstring_view command : {Button_ID_CreateByFolder, Button_ID_CreateMergeByFolder}) {
        Click(command);
        EXPECT_EQ(session_.word.started, 0);
        EXPECT_LT(session_.faults.Count(), firstCalls / 4);
    }
    Click(Button_ID_CreateByFolder);
    EXPECT_EQ(files_.List().size(), after.size() + 1);  // the merged PDF's folder
}

TEST_F(OutlookMass, MemoryStaysAsItIsWhenNothingIsConverted) {
    CheckMemory(Button_ID_CreateByFolder, [] {});
    EXPECT_EQ(session_.word.started, 0);
}

TEST_F(OutlookMass, MemoryStaysAsItIsWhenAttachmentsAreOpened) {
    CheckMemory(Button_ID_OpenFromFolder, [] {});
}

TEST_F(OutlookMass, MemoryStaysAsItIsWhenEverythingIsConvertedEachTime) {
    if (!TakesMinutes()) GTEST_SKIP() << "takes minutes; ZAVO_TEST_ALL is not set";
    CheckMemory(Button_ID_CreateByFolder, [&] { addin_->state.conversionCache.clear(); });
    EXPECT_EQ(session_.word.started, static_cast<long>(mails));
}

TEST(OutlookItemsOfAFolder, AreLetGoOneByOne) {
    const OutlookFiles files;
    EngineRecorder engine;
    engine.recording = false;
    constexpr size_t many = 1000;
    OutlookSession session(LargeFolder(many), {});
    const AddinObject addin;
    session.Connect(*addin.Get());
    OpenItems::Restart();
    ASSERT_EQ(session.Click(*addin.Get(), Button_ID_CreateByFolder), S_OK);
    EXPECT_EQ(session.word.started, static_cast<long>(many));
    EXPECT_LE(OpenItems::Most(), 3);
    EXPECT_EQ(OpenItems::Now(), 0);
    ASSERT_EQ(session.Click(*addin.Get(), Button_ID_CreateMergeByFolder), S_OK) << "from the cache";
    EXPECT_EQ(session.word.started, static_cast<long>(many));
    EXPECT_LE(OpenItems::Most(), 3);
}
