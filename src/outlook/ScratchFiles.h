// Files that are needed for a while only, in a folder that is the user's.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

// Deletes at its end what it was told of; what is not there is no matter. A file is told of before it is written.
class ScratchFiles {
public:
    ScratchFiles() = default;
    ScratchFiles(const ScratchFiles&) = delete;
    ScratchFiles& operator=(const ScratchFiles&) = delete;
    ~ScratchFiles() { Delete(); }

    void AddFile(const std::wstring& path) { paths_.push_back({path, false}); }
    void AddFolder(const std::wstring& path) { paths_.push_back({path, true}); }  // with what will be in it
    // Makes the folder and adds it. False where it cannot be made, or is there already.
    bool MakeFolder(const std::wstring& path);
    bool HasFile(const std::wstring& path) const;  // whatever its capitals

    // Deletes what can be deleted, the last one first. What something still has open stays, and is kept for next time;
    // what was written to by then is somebody else's.
    void Delete() noexcept;
    // The same, and `other` takes over what is kept.
    void DeleteOrLeaveTo(ScratchFiles& other) noexcept;
    void Forget() { paths_.clear(); }

private:
    struct Scratch {
        std::wstring path;
        bool isFolder;
        FILETIME kept = {};  // the last time that it was written to, when it could not be deleted
    };
    static bool DeleteOne(Scratch& scratch) noexcept;

    std::vector<Scratch> paths_;
};

// Whether a reparse point leads elsewhere, as a junction does. The placeholder of a file in a cloud folder is one, too,
// but the file itself. `tag` is that of a search's result; 0 is of none that is known, so it is not followed.
bool IsLink(DWORD attributes, DWORD tag);
