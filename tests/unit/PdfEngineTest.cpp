// Merging and attaching against an engine that records its calls, with real files.
#include "src/export/PdfEngine.h"

#include <gtest/gtest.h>

#include "tests/support/EngineRecorder.h"
#include "tests/support/Files.h"
#include "tests/support/Sharing.h"

// This program's ways to functions of the system.
extern "C" {
extern decltype(&GetFileAttributesExW) __imp_GetFileAttributesExW;
extern decltype(&ReadFile) __imp_ReadFile;
}

namespace {

using Calls = std::vector<std::wstring>;

constexpr uint64_t unixEpoch = 116444736000000000;
constexpr uint64_t second = 10000000;

FILETIME FileTime(uint64_t steps) { return {static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32)}; }

// Wine answers one time for creation and last write.
void SetTimes(const std::wstring& path, uint64_t lastWrite, uint64_t lastAccess) {
    const HeldFile file(path, FILE_WRITE_ATTRIBUTES, shareAll);
    const FILETIME write = FileTime(lastWrite);
    const FILETIME access = FileTime(lastAccess);
    ASSERT_TRUE(SetFileTime(file.Get(), &write, &access, &write)) << GetLastError();
}

void Resize(const std::wstring& path, int64_t size) {
    const HeldFile file(path, GENERIC_WRITE, shareAll);
    LARGE_INTEGER end;
    end.QuadPart = size;
    ASSERT_TRUE(SetFilePointerEx(file.Get(), end, nullptr, FILE_BEGIN)) << GetLastError();
    ASSERT_TRUE(SetEndOfFile(file.Get())) << GetLastError();
}

void WriteByte(const std::wstring& path, int64_t position, char byte) {
    const HeldFile file(path, GENERIC_WRITE, shareAll);
    LARGE_INTEGER place;
    place.QuadPart = position;
    ASSERT_TRUE(SetFilePointerEx(file.Get(), place, nullptr, FILE_BEGIN)) << GetLastError();
    DWORD written = 0;
    ASSERT_TRUE(WriteFile(file.Get(), &byte, 1, &written, nullptr)) << GetLastError();
}

// What the file takes on the disk.
int64_t BytesOnDisk(const std::wstring& path) {
    const HeldFile file(path, FILE_READ_ATTRIBUTES, shareAll);
    FILE_STANDARD_INFO info = {};
    EXPECT_TRUE(GetFileInformationByHandleEx(file.Get(), FileStandardInfo, &info, sizeof info)) << GetLastError();
    return info.AllocationSize.QuadPart;
}

// Puts a function in the place of one of the system's, by this program's way to it.
template <typename Function>
class ReplacedFunction {
public:
    ReplacedFunction(Function& place, Function replacement) : place_(place), previous_(place) { Put(replacement); }
    ReplacedFunction(const ReplacedFunction&) = delete;
    ReplacedFunction& operator=(const ReplacedFunction&) = delete;
    ~ReplacedFunction() { Put(previous_); }

private:
    void Put(Function function) {
        DWORD protection = 0;
        VirtualProtect(&place_, sizeof place_, PAGE_READWRITE, &protection);
        place_ = function;
        VirtualProtect(&place_, sizeof place_, protection, &protection);
    }

    Function& place_;
    const Function previous_;
};

// Answers attributes that no file here can have.
class AnsweredAttributes {
public:
    explicit AnsweredAttributes(const WIN32_FILE_ATTRIBUTE_DATA& attributes) { answer_ = attributes; }

private:
    static BOOL WINAPI Answer(LPCWSTR, GET_FILEEX_INFO_LEVELS, LPVOID data) {
        *static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(data) = answer_;
        return TRUE;
    }

    static inline WIN32_FILE_ATTRIBUTE_DATA answer_;
    const ReplacedFunction<decltype(&GetFileAttributesExW)> replaced_ = {__imp_GetFileAttributesExW, &Answer};
};

class PdfEngine : public testing::Test {
protected:
    // The calls between the opening and the saving of "target.pdf".
    Calls AttachCalls(const std::vector<std::wstring>& files, bool intoRootFolder = false) {
        engine_.Restart();
        EXPECT_TRUE(AttachFilesToPdf(L"target.pdf", files, intoRootFolder));
        EXPECT_EQ(engine_.WrongHandles(), 0);
        Calls calls = engine_.calls;
        if (calls.size() < 3) return {L"too few calls"};
        EXPECT_EQ(calls.front(), L"PDF_LoadDocument [target.pdf] []");
        EXPECT_EQ(calls[calls.size() - 2], L"PDF_Save document1 [target.pdf]");
        EXPECT_EQ(calls.back(), L"PDF_CloseDocument document1");
        calls.erase(calls.end() - 2, calls.end());
        calls.erase(calls.begin());
        return calls;
    }

    // Runs `job`, and again with every one of its calls failing. Its result is false only when a call failed that
    // `decides`, given its name and whether it is the first call of all.
    template <typename Job, typename Decides>
    void FailEveryCall(Job job, Decides decides) {
        engine_.failingCall = -1;
        engine_.Restart();
        EXPECT_TRUE(job());
        const Calls all = engine_.calls;
        for (size_t k = 0; k < all.size(); ++k) {
            engine_.failingCall = static_cast<long>(k);
            engine_.Restart();
            EXPECT_EQ(job(), !decides(all[k].substr(0, all[k].find(L' ')), k == 0)) << k << " " << all[k].c_str();
            EXPECT_GT(engine_.CallCount(), engine_.failingCall);
            EXPECT_EQ(engine_.WrongHandles(), 0) << k;
            EXPECT_EQ(engine_.OpenDocuments(), 0) << k;
            EXPECT_EQ(engine_.OpenMerges(), 0) << k;
        }
    }

    const TemporaryFolder folder_;
    EngineRecorder engine_;
};

}  // namespace

TEST_F(PdfEngine, MergeAddsTheInputsInOrderAndClosesThemBeforeTheJob) {
    EXPECT_TRUE(MergePdfFiles(L"C:\\out.pdf", {L"C:\\b.pdf", L"C:\\a.pdf", L"C:\\b.pdf"}));
    const Calls expected = {
        L"PDFMerge_Create",
        L"PDFMerge_SetKeepBookmark merge1 1",
        L"PDFMerge_SetKeepFormField merge1 1",
        L"PDF_LoadDocument [C:\\b.pdf] []",
        L"PDFMerge_AddDocument merge1 document1 4294967295 4294967295 1 1 []",
        L"PDF_LoadDocument [C:\\a.pdf] []",
        L"PDFMerge_AddDocument merge1 document2 4294967295 4294967295 1 1 []",
        L"PDF_LoadDocument [C:\\b.pdf] []",
        L"PDFMerge_AddDocument merge1 document3 4294967295 4294967295 1 1 []",
        L"PDFMerge_Save merge1 [C:\\out.pdf] 0",
        L"PDF_CloseDocument document1",
        L"PDF_CloseDocument document2",
        L"PDF_CloseDocument document3",
        L"PDFMerge_Close merge1",
    };
    EXPECT_EQ(engine_.calls, expected);
    EXPECT_EQ(engine_.WrongHandles(), 0);
}

TEST_F(PdfEngine, MergeLeavesOutTheSecondOfThreeInputsThatIsNoPdf) {
    engine_.notPdfs = {L"C:\\b.txt"};
    EXPECT_TRUE(MergePdfFiles(L"C:\\out.pdf", {L"C:\\a.pdf", L"C:\\b.txt", L"C:\\c.pdf"}));
    const Calls expected = {
        L"PDFMerge_Create",
        L"PDFMerge_SetKeepBookmark merge1 1",
        L"PDFMerge_SetKeepFormField merge1 1",
        L"PDF_LoadDocument [C:\\a.pdf] []",
        L"PDFMerge_AddDocument merge1 document1 4294967295 4294967295 1 1 []",
        L"PDF_LoadDocument [C:\\b.txt] []",
        L"PDF_LoadDocument [C:\\c.pdf] []",
        L"PDFMerge_AddDocument merge1 document2 4294967295 4294967295 1 1 []",
        L"PDFMerge_Save merge1 [C:\\out.pdf] 0",
        L"PDF_CloseDocument document1",
        L"PDF_CloseDocument document2",
        L"PDFMerge_Close merge1",
    };
    EXPECT_EQ(engine_.calls, expected);
    EXPECT_EQ(engine_.WrongHandles(), 0);
}

TEST_F(PdfEngine, MergeWithoutAnInputThatOpensLeavesTheResultToTheEngine) {
    engine_.notPdfs = {L"C:\\b.txt"};
    for (const std::vector<std::wstring>& inputs : {std::vector<std::wstring>{}, {L"C:\\b.txt"}}) {
        engine_.Restart();
        EXPECT_TRUE(MergePdfFiles(L"C:\\out.pdf", inputs));
        ASSERT_EQ(engine_.calls.size(), 5 + inputs.size());
        EXPECT_EQ(engine_.calls[3 + inputs.size()].substr(0, 13), L"PDFMerge_Save");
    }
    engine_.Restart();
    engine_.failingCall = 3;
    EXPECT_FALSE(MergePdfFiles(L"C:\\out.pdf", {}));
    EXPECT_EQ(engine_.calls.back(), L"PDFMerge_Close merge1");
}

TEST_F(PdfEngine, MergeWithoutAJobCallsNothingElse) {
    engine_.failingCall = 0;
    EXPECT_FALSE(MergePdfFiles(L"C:\\out.pdf", {L"C:\\a.pdf"}));
    EXPECT_EQ(engine_.calls, Calls{L"PDFMerge_Create"});
}

TEST_F(PdfEngine, EveryFailedCallOfAMergeLeavesNoHandleOpen) {
    FailEveryCall(
        [] {
            return MergePdfFiles(L"C:\\out.pdf", {L"C:\\a.pdf", L"C:\\b.pdf", L"C:\\c.pdf"});
        },
        [](const std::wstring& function, bool) {
            return function == L"PDFMerge_Create" || function == L"PDFMerge_Save";
        });
}

TEST_F(PdfEngine, AttachSetsContentTimesAndFolderInOrderAndSavesInPlace) {
    const std::wstring a = folder_.MakeFile(L"a.txt", "hello");
    const std::wstring b = folder_.MakeFile(L"Fünf \x4E94.tar.gz", "five");
    SetTimes(a, unixEpoch + 5 * second, unixEpoch + 9 * second);
    SetTimes(b, unixEpoch + 6 * second, unixEpoch + 9 * second);
    EXPECT_TRUE(AttachFilesToPdf(L"C:\\box.pdf", {b, a}, true));
    const Calls expected = {
        L"PDF_LoadDocument [C:\\box.pdf] []",
        L"PDFDoc_NewAttachment document1 [Fünf \x4E94.tar.gz] []",
        L"PDFAttachment_SetFile attachment1 document1 [five] 4",
        L"PDFAttachment_SetCreatedTime attachment1 6",
        L"PDFAttachment_SetModifiedTime attachment1 6",
        L"PDF_SetFileAttachmentFolderPath document1 attachment1 [/]",
        L"PDFDoc_NewAttachment document1 [a.txt] []",
        L"PDFAttachment_SetFile attachment2 document1 [hello] 5",
        L"PDFAttachment_SetCreatedTime attachment2 5",
        L"PDFAttachment_SetModifiedTime attachment2 5",
        L"PDF_SetFileAttachmentFolderPath document1 attachment2 [/]",
        L"PDF_Save document1 [C:\\box.pdf]",
        L"PDF_CloseDocument document1",
    };
    EXPECT_EQ(engine_.calls, expected);
    EXPECT_EQ(engine_.WrongHandles(), 0);
}

TEST_F(PdfEngine, AttachOutsideTheRootFolderSetsNoFolder) {
    const std::wstring a = folder_.MakeFile(L"a.txt", "hello");
    SetTimes(a, unixEpoch + 5 * second, unixEpoch + 9 * second);
    const Calls expected = {
        L"PDFDoc_NewAttachment document1 [a.txt] []",
        L"PDFAttachment_SetFile attachment1 document1 [hello] 5",
        L"PDFAttachment_SetCreatedTime attachment1 5",
        L"PDFAttachment_SetModifiedTime attachment1 5",
    };
    EXPECT_EQ(AttachCalls({a}, false), expected);
}

TEST_F(PdfEngine, AttachSetsTheCreationTimeAsCreatedAndTheLastWriteAsModified) {
    const std::wstring a = folder_.MakeFile(L"a.txt", "hello");
    WIN32_FILE_ATTRIBUTE_DATA attributes = {};
    attributes.nFileSizeLow = 5;
    attributes.ftCreationTime = FileTime(unixEpoch + 11 * second);
    attributes.ftLastWriteTime = FileTime(unixEpoch + 22 * second);
    attributes.ftLastAccessTime = FileTime(unixEpoch + 33 * second);
    const AnsweredAttributes answered(attributes);
    const Calls calls = AttachCalls({a});
    ASSERT_EQ(calls.size(), 4U);
    EXPECT_EQ(calls[2], L"PDFAttachment_SetCreatedTime attachment1 11");
    EXPECT_EQ(calls[3], L"PDFAttachment_SetModifiedTime attachment1 22");
}

TEST_F(PdfEngine, AttachToWhatIsNoPdfFailsWithoutAnotherCall) {
    engine_.notPdfs = {L"C:\\box.txt"};
    EXPECT_FALSE(AttachFilesToPdf(L"C:\\box.txt", {folder_.MakeFile(L"a.txt")}, true));
    EXPECT_EQ(engine_.calls, Calls{L"PDF_LoadDocument [C:\\box.txt] []"});
}

TEST_F(PdfEngine, AttachSavesAlsoWhenNothingWasAttached) {
    EXPECT_EQ(AttachCalls({}), Calls{});
    EXPECT_EQ(AttachCalls({folder_.Path(L"missing.txt")}), Calls{});
}

TEST_F(PdfEngine, AttachGivesTheResultOfTheSave) {
    engine_.failingCall = 1;
    EXPECT_FALSE(AttachFilesToPdf(L"C:\\box.pdf", {}, true));
    EXPECT_EQ(engine_.calls.back(), L"PDF_CloseDocument document1");
}

TEST_F(PdfEngine, FileThatTheEngineGivesNoEntryIsLeftOut) {
    engine_.failingCall = 1;
    const Calls calls = AttachCalls({folder_.MakeFile(L"a.txt", "aa"), folder_.MakeFile(L"b.txt", "bb")});
    ASSERT_EQ(calls.size(), 5U);
    EXPECT_EQ(calls[0], L"PDFDoc_NewAttachment document1 [a.txt] []");
    EXPECT_EQ(calls[1], L"PDFDoc_NewAttachment document1 [b.txt] []");
    EXPECT_EQ(calls[2], L"PDFAttachment_SetFile attachment1 document1 [bb] 2");
}

TEST_F(PdfEngine, FileWhoseContentTheEngineRefusesGetsNoTimesAndNoFolder) {
    engine_.failingCall = 2;
    const Calls calls = AttachCalls({folder_.MakeFile(L"a.txt", "aa"), folder_.MakeFile(L"b.txt", "bb")}, true);
    ASSERT_EQ(calls.size(), 7U);
    EXPECT_EQ(calls[1], L"PDFAttachment_SetFile attachment1 document1 [aa] 2");
    EXPECT_EQ(calls[2], L"PDFDoc_NewAttachment document1 [b.txt] []");
    EXPECT_EQ(calls[6], L"PDF_SetFileAttachmentFolderPath document1 attachment2 [/]");
}

TEST_F(PdfEngine, FilesWithoutASizeAreLeftOutWithoutACall) {
    const Calls calls = AttachCalls({folder_.Path(L"missing.txt"), L"", folder_.MakeFile(L"a.txt", "aa")});
    ASSERT_EQ(calls.size(), 4U);
    EXPECT_EQ(calls[0], L"PDFDoc_NewAttachment document1 [a.txt] []");
}

TEST_F(PdfEngine, FilesThatCannotBeReadGetNoContent) {
    const std::wstring locked = folder_.MakeFile(L"locked.txt", "ll");
    const HeldFile lock(locked, GENERIC_READ, 0);
    const Calls expected = {
        L"PDFDoc_NewAttachment document1 [locked.txt] []",
        L"PDFDoc_NewAttachment document1 [" + folder_.Path().substr(folder_.Path().rfind(L'\\') + 1) + L"] []",
    };
    EXPECT_EQ(AttachCalls({locked, folder_.Path()}, true), expected);
}

TEST_F(PdfEngine, FileThatVanishesAfterItsSizeWasReadGetsNoContent) {
    const std::wstring a = folder_.MakeFile(L"a.txt", "hello");
    engine_.onCall = [&](std::string_view function) {
        if (function == "PDFDoc_NewAttachment") DeleteFileW(a.c_str());
    };
    EXPECT_EQ(AttachCalls({a}, true), Calls{L"PDFDoc_NewAttachment document1 [a.txt] []"});
}

TEST_F(PdfEngine, FileWhoseReadingFailsHalfWayGetsNoContentAndIsClosed) {
    const std::wstring a = folder_.MakeFile(L"a.txt", "hello");
    static int reads;
    reads = 0;
    static const auto systems = __imp_ReadFile;
    const ReplacedFunction<decltype(&ReadFile)> replaced(
        __imp_ReadFile, [](HANDLE file, LPVOID buffer, DWORD, LPDWORD count, LPOVERLAPPED overlapped) -> BOOL {
            return reads++ == 0 && systems(file, buffer, 1, count, overlapped);
        });
    EXPECT_EQ(AttachCalls({a}, true), Calls{L"PDFDoc_NewAttachment document1 [a.txt] []"});
    EXPECT_EQ(reads, 2);
    EXPECT_TRUE(IsClosedEverywhere(a));
}

TEST_F(PdfEngine, FileThatIsReadInSmallPiecesIsAttachedWhole) {
    const std::wstring a = folder_.MakeFile(L"a.txt", "hello");
    static const auto systems = __imp_ReadFile;
    const ReplacedFunction<decltype(&ReadFile)> replaced(
        __imp_ReadFile, [](HANDLE file, LPVOID buffer, DWORD, LPDWORD count, LPOVERLAPPED overlapped) -> BOOL {
            return systems(file, buffer, 2, count, overlapped);
        });
    const Calls calls = AttachCalls({a});
    ASSERT_EQ(calls.size(), 4U);
    EXPECT_EQ(calls[1], L"PDFAttachment_SetFile attachment1 document1 [hello] 5");
}

TEST_F(PdfEngine, FileThatOthersWriteAndDeleteIsAttached) {
    const std::wstring a = folder_.MakeFile(L"a.txt", "hello");
    const HeldFile writer(a, GENERIC_WRITE, shareAll);
    const HeldFile remover(a, DELETE, shareAll);
    ASSERT_NE(writer.Get(), nullptr);
    ASSERT_NE(remover.Get(), nullptr);
    const Calls calls = AttachCalls({a});
    ASSERT_EQ(calls.size(), 4U);
    EXPECT_EQ(calls[1], L"PDFAttachment_SetFile attachment1 document1 [hello] 5");
}

TEST_F(PdfEngine, FileIsClosedBeforeItsContentIsSet) {
    const std::wstring a = folder_.MakeFile(L"a.txt", "hello");
    engine_.onContent = [&](const unsigned char*, size_t) { EXPECT_TRUE(IsClosedEverywhere(a)); };
    EXPECT_EQ(AttachCalls({a}).size(), 4U);
}

TEST_F(PdfEngine, FileThatShrinksAfterItsSizeWasReadIsAttachedAsItIs) {
    const std::wstring a = folder_.MakeFile(L"a.txt", "hello");
    engine_.onCall = [&](std::string_view function) {
        if (function == "PDFDoc_NewAttachment") Resize(a, 2);
    };
    const Calls calls = AttachCalls({a});
    ASSERT_EQ(calls.size(), 4U);
    EXPECT_EQ(calls[1], L"PDFAttachment_SetFile attachment1 document1 [he] 2");
}

TEST_F(PdfEngine, FileThatGrowsAfterItsSizeWasReadIsAttachedInThatSize) {
    const std::wstring a = folder_.MakeFile(L"a.txt", "hello");
    engine_.onCall = [&](std::string_view function) {
        if (function == "PDFDoc_NewAttachment") WriteByte(a, 100000, '!');
    };
    const Calls calls = AttachCalls({a});
    ASSERT_EQ(calls.size(), 4U);
    EXPECT_EQ(calls[1], L"PDFAttachment_SetFile attachment1 document1 [hello] 5");
}

TEST_F(PdfEngine, EmptyFileIsAttachedWithNoBytesAtAPlace) {
    const Calls calls = AttachCalls({folder_.MakeFile(L"a.txt", "")});
    ASSERT_EQ(calls.size(), 4U);
    EXPECT_EQ(calls[1], L"PDFAttachment_SetFile attachment1 document1 [] 0");  // [no content] for a null pointer
}

TEST_F(PdfEngine, FileOfTwoGibibytesIsNotAttachedAndOneByteLessIs) {
    const std::wstring below = folder_.MakeFile(L"below.bin", "");
    const std::wstring limit = folder_.MakeFile(L"limit.bin", "");
    Resize(below, 2147483647);
    Resize(limit, 2147483648);
    const int64_t marked[] = {0, 4095, (16 << 20) - 1, 16 << 20, 1 << 30, 2147483646};
    for (const int64_t position : marked) WriteByte(below, position, 'm');
    ASSERT_LT(BytesOnDisk(below), int64_t{1} << 20);
    ASSERT_LT(BytesOnDisk(limit), int64_t{1} << 20);
    engine_.onContent = [&](const unsigned char* bytes, size_t count) {
        ASSERT_EQ(count, 2147483647U);
        for (const int64_t position : marked) EXPECT_EQ(bytes[position], 'm') << position;
        EXPECT_EQ(bytes[2147483645], 0);
    };
    const Calls calls = AttachCalls({limit, below});
    ASSERT_EQ(calls.size(), 4U);
    EXPECT_EQ(calls[0], L"PDFDoc_NewAttachment document1 [below.bin] []");
    EXPECT_EQ(calls[1], L"PDFAttachment_SetFile attachment1 document1 2147483647");
    EXPECT_EQ(calls[2].substr(0, 28), L"PDFAttachment_SetCreatedTime");
}

TEST_F(PdfEngine, FileOfMoreThanFourGibibytesIsNotAttached) {
    const std::wstring a = folder_.MakeFile(L"a.bin", "");
    Resize(a, 4294967296 + 5);  // 5 in 32 bits
    EXPECT_EQ(AttachCalls({a}), Calls{});
}

TEST_F(PdfEngine, FileCreatedBefore1970IsAttachedWithMinusOne) {
    const std::wstring a = folder_.MakeFile(L"a.txt", "hello");
    SetTimes(a, unixEpoch - second, unixEpoch + second);
    const Calls calls = AttachCalls({a});
    ASSERT_EQ(calls.size(), 4U);
    EXPECT_EQ(calls[1], L"PDFAttachment_SetFile attachment1 document1 [hello] 5");
    EXPECT_EQ(calls[2], L"PDFAttachment_SetCreatedTime attachment1 -1");
}

TEST_F(PdfEngine, EveryFailedCallOfAnAttachLeavesNoHandleOpen) {
    const std::vector<std::wstring> files = {folder_.MakeFile(L"a.txt"), folder_.MakeFile(L"b.txt"),
                                             folder_.MakeFile(L"c.txt")};
    for (const bool intoRootFolder : {false, true}) {
        FailEveryCall(
            [&] {
                const bool done = AttachFilesToPdf(L"C:\\box.pdf", files, intoRootFolder);
                for (const std::wstring& file : files) EXPECT_TRUE(IsClosedEverywhere(file));
                return done;
            },
            [](const std::wstring& function, bool first) { return first || function == L"PDF_Save"; });
    }
}

TEST(FileTime, IsGivenByItsKindInWholeSecondsSince1970) {
    WIN32_FILE_ATTRIBUTE_DATA attributes = {};
    attributes.ftLastAccessTime = FileTime(unixEpoch + 1 * second);
    attributes.ftCreationTime = FileTime(unixEpoch + 2 * second);
    attributes.ftLastWriteTime = FileTime(unixEpoch + 3 * second);
    const AnsweredAttributes answered(attributes);
    EXPECT_EQ(GetFileTimeSeconds(L"a", 0), 1);
    EXPECT_EQ(GetFileTimeSeconds(L"a", 1), 2);
    EXPECT_EQ(GetFileTimeSeconds(L"a", 2), 3);
}

TEST(FileTime, IsCutToWholeSecondsAndMinusOneBefore1970) {
    const struct {
        uint64_t steps;
        int64_t seconds;
    } rows[] = {
        {unixEpoch, 0},
        {unixEpoch + second - 1, 0},
        {unixEpoch + second, 1},
        {unixEpoch - 1, -1},
        {unixEpoch - second, -1},
        {unixEpoch - 2 * second, -1},
        {1, -1},
        {133485408000000000, 1704067200},               // 2024-01-01
        {unixEpoch + 4294967296 * second, 4294967296},  // 2106
        {0x7FFFFFFFFFFFFFFF, 910692730085},
    };
    for (const auto& row : rows) {
        WIN32_FILE_ATTRIBUTE_DATA attributes = {};
        attributes.ftCreationTime = FileTime(row.steps);
        const AnsweredAttributes answered(attributes);
        SetLastError(77);
        EXPECT_EQ(GetFileTimeSeconds(L"a", 1), row.seconds) << row.steps;
        EXPECT_EQ(GetLastError(), 77U) << row.steps;
    }
}

TEST(FileTime, OfARealFileIsRead) {
    const TemporaryFolder folder;
    const std::wstring a = folder.MakeFile(L"a.txt");
    SetTimes(a, 133485408000000000 + 9999999, 133485408000000000 + 60 * second);
    EXPECT_EQ(GetFileTimeSeconds(a, 0), 1704067260);
    EXPECT_EQ(GetFileTimeSeconds(a, 1), 1704067200);
    EXPECT_EQ(GetFileTimeSeconds(a, 2), 1704067200);
}

TEST(FileTime, OfZeroIsInvalidData) {
    WIN32_FILE_ATTRIBUTE_DATA attributes = {};
    attributes.ftCreationTime = FileTime(unixEpoch);
    const AnsweredAttributes answered(attributes);
    for (const int kind : {0, 2}) {
        SetLastError(77);
        EXPECT_EQ(GetFileTimeSeconds(L"a", kind), -1);
        EXPECT_EQ(GetLastError(), 13U);
    }
}

TEST(FileTime, OfAnotherKindIsAnInvalidParameterWhateverThePath) {
    const TemporaryFolder folder;
    for (const std::wstring& path : {folder.MakeFile(L"a.txt"), folder.Path(L"missing.txt"), std::wstring()}) {
        for (const int kind : {-1, 3, INT_MAX, INT_MIN}) {
            SetLastError(77);
            EXPECT_EQ(GetFileTimeSeconds(path, kind), -1) << kind;
            EXPECT_EQ(GetLastError(), 87U) << kind;
        }
    }
}

TEST(FileTime, OfAnEmptyPathIsMinusOneWithoutAnError) {
    SetLastError(77);
    EXPECT_EQ(GetFileTimeSeconds(L"", 1), -1);
    EXPECT_EQ(GetLastError(), 77U);
}

TEST(FileTime, OfAMissingFileIsMinusOneWithTheSystemsError) {
    const TemporaryFolder folder;
    SetLastError(77);
    EXPECT_EQ(GetFileTimeSeconds(folder.Path(L"missing.txt"), 1), -1);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_FILE_NOT_FOUND});
}

TEST(FileSize, HasSixtyFourBits) {
    const TemporaryFolder folder;
    const std::wstring a = folder.MakeFile(L"a.bin", "");
    for (const int64_t size : {int64_t{0}, int64_t{1}, int64_t{2147483648}, int64_t{4294967295}, int64_t{5000000000}}) {
        Resize(a, size);
        EXPECT_EQ(GetFileSize64(a), size);
    }
    ASSERT_LT(BytesOnDisk(a), int64_t{1} << 20);
}

TEST(FileSize, OfAMissingFileIsMinusOne) {
    const TemporaryFolder folder;
    EXPECT_EQ(GetFileSize64(folder.Path(L"missing.bin")), -1);
    EXPECT_EQ(GetFileSize64(L""), -1);
}

TEST(FileSize, OfAFolderIsWhatTheSystemSays) {
    const TemporaryFolder folder;
    EXPECT_EQ(GetFileSize64(folder.Path()), 0);
}
