// A failed allocation in the adapter over the PDF engine goes on to the caller and leaves nothing open.
#include <gtest/gtest.h>

#include <new>

#include "src/export/PdfEngine.h"
#include "tests/support/CountedAllocations.h"
#include "tests/support/EngineRecorder.h"
#include "tests/support/Files.h"
#include "tests/support/Sharing.h"

namespace {

class PdfEngineLeaks : public testing::Test {
protected:
    PdfEngineLeaks() { engine_.recording = false; }

    // Runs `job` with each of its allocations failing in turn; gives how many it makes.
    template <typename Job>
    long FailEveryAllocation(Job job) {
        const long blocks = liveBlocks;
        for (long n = 0;; ++n) {
            engine_.Restart();
            bool thrown = false;
            allocationsUntilFailure = n;
            try {
                job();
            } catch (const std::bad_alloc&) {
                thrown = true;
            }
            const bool failed = allocationsUntilFailure < 0;
            allocationsUntilFailure = -1;
            EXPECT_EQ(thrown, failed) << "allocation " << n;
            EXPECT_EQ(liveBlocks, blocks) << "allocation " << n;
            EXPECT_EQ(engine_.WrongHandles(), 0) << "allocation " << n;
            EXPECT_EQ(engine_.OpenDocuments(), 0) << "allocation " << n;
            EXPECT_EQ(engine_.OpenMerges(), 0) << "allocation " << n;
            if (!failed) return n;
        }
    }

    const TemporaryFolder folder_;
    EngineRecorder engine_;
};

}  // namespace

TEST_F(PdfEngineLeaks, EveryFailedAllocationOfAMergeLeavesNothingOpen) {
    const std::wstring output = L"C:\\out.pdf";
    const std::vector<std::wstring> inputs = {L"C:\\a.pdf", L"C:\\b.pdf", L"C:\\c.pdf"};
    EXPECT_GE(FailEveryAllocation([&] { MergePdfFiles(output, inputs); }), 2);
}

TEST_F(PdfEngineLeaks, EveryFailedAllocationOfAnAttachLeavesNothingOpen) {
    const std::wstring pdf = L"C:\\box.pdf";
    const std::vector<std::wstring> files = {folder_.MakeFile(L"a longer name.txt"),
                                             folder_.MakeFile(L"another name.txt"),
                                             folder_.MakeFile(L"the third name.txt")};
    for (const bool intoRootFolder : {false, true}) {
        const long allocations = FailEveryAllocation([&] { AttachFilesToPdf(pdf, files, intoRootFolder); });
        EXPECT_GE(allocations, 6);  // a name and a content each
        for (const std::wstring& file : files) EXPECT_TRUE(IsClosedEverywhere(file));
    }
}

TEST_F(PdfEngineLeaks, ContentIsFreedAfterTheTimesAndTheFolderAreSet) {
    const std::wstring pdf = L"C:\\box.pdf";
    const std::vector<std::wstring> files = {folder_.MakeFile(L"a.txt"), folder_.MakeFile(L"b.txt")};
    std::vector<long> atContent;
    std::vector<long> atFolder;
    long atSave = 0;
    atContent.reserve(2);
    atFolder.reserve(2);
    const long blocks = liveBlocks;
    engine_.onCall = [&](std::string_view function) {
        const long live = liveBlocks - blocks;
        if (function == "PDFAttachment_SetFile") atContent.push_back(live);
        if (function == "PDF_SetFileAttachmentFolderPath") atFolder.push_back(live);
        if (function == "PDF_Save") atSave = live;
    };
    const long withHook = liveBlocks - blocks;
    EXPECT_TRUE(AttachFilesToPdf(pdf, files, true));
    const std::vector<long> oneContent(2, withHook + 1);  // one at a time
    EXPECT_EQ(atContent, oneContent);
    EXPECT_EQ(atFolder, oneContent);
    EXPECT_EQ(atSave, withHook);
}
