// The files that one mail needs in the working folder for a while: its document and its attachments.
//
// They have the names that the mail gives them, and the folder is the user's. What is there already under such a name
// is set aside for that while, under a free name beside it, and put back in the end. Only these files themselves are
// overwritten, as when a mail has two attachments of one name.
#pragma once

#include <list>
#include <string>
#include <vector>

class WorkFiles {
public:
    WorkFiles() = default;
    WorkFiles(const WorkFiles&) = delete;
    WorkFiles& operator=(const WorkFiles&) = delete;
    ~WorkFiles() { Finish(); }

    // Sets aside the file that has that path, unless it is one of these. False when nothing may be written there: a
    // folder has the path, or the file could not be moved.
    bool MakeRoom(const std::wstring& path);

    // Makes room for a file that is about to be written, and counts it among these; false as above. A document's save
    // may leave a folder beside it, which belongs to it; one that is there already is set aside, too.
    bool AddDocument(const std::wstring& path);
    bool AddAttachment(const std::wstring& path);
    // Takes back AddAttachment for a file that was not written after all.
    void ForgetAttachment(const std::wstring& path);

    // Where the file that is at `path` now is from here on, for as long as this object lives. After Finish nothing
    // looks at the text any more.
    std::wstring& Follow(const std::wstring& path);

    // Deletes these files and puts back what was set aside. What finds its place taken stays where it is.
    void Finish() noexcept;

private:
    struct Document {
        std::wstring path;
        std::wstring filesFolder;
    };
    struct SetAside {
        std::wstring home;
        std::wstring now;
    };
    bool SetAsideFile(const std::wstring& path);
    bool PutOneBack() noexcept;
    bool IsOwn(const std::wstring& path) const;
    bool IsClearedAway(const std::wstring& path) const;
    std::wstring* Followed(const std::wstring& path);

    std::vector<Document> documents_;
    std::vector<std::wstring> attachments_;
    std::vector<SetAside> setAside_;
    std::list<std::wstring> followed_;
};

// Deletes the document and the folder of its name, with ".files" in the place of the extension, that Outlook may leave
// beside it, with everything in it. Links in there are deleted, not followed.
void RemoveSavedDocument(const std::wstring& documentPath);
