// The files that one mail needs in the working folder for a while: its document and its attachments.
//
// They have the names that the mail gives them, and the folder is the user's. What is there already under such a name
// is set aside for that while, under a unique name beside it, and put back in the end. Only these files themselves are
// overwritten, as when a mail has two attachments of one name.
#pragma once

#include <string>
#include <vector>

class WorkFiles {
public:
    WorkFiles() = default;
    WorkFiles(const WorkFiles&) = delete;
    WorkFiles& operator=(const WorkFiles&) = delete;
    ~WorkFiles();  // Finish

    // Sets aside the file that has that path, unless it is one of these; a folder stays. False when that was not
    // possible: then nothing may be written there.
    bool MakeRoom(const std::wstring& path);

    // Makes room for a file that is about to be written, and counts it among these. A document's save may leave a
    // folder beside it; that belongs to it, and one that is there already is set aside, too. False as above.
    bool AddDocument(const std::wstring& path);
    bool AddAttachment(const std::wstring& path);

    // Where the file of that path is now.
    std::wstring CurrentPath(std::wstring path) const;

    // Deletes these files and puts back what was set aside. What finds its place taken stays where it is.
    void Finish() noexcept;

private:
    struct SetAside {
        std::wstring path;
        std::wstring now;
    };
    bool Move(const std::wstring& path);
    bool MoveFolder(const std::wstring& path);
    bool IsOwn(const std::wstring& path) const;

    std::vector<std::wstring> documents_;
    std::vector<std::wstring> attachments_;
    std::vector<SetAside> setAside_;
};

// Deletes the document and the folder of its name, with ".files" in the place of the extension, that Outlook leaves
// beside it, with everything in it. Links in there are deleted, not followed.
void RemoveSavedDocument(const std::wstring& documentPath);
