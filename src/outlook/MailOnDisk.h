// One mail's way from an item of Outlook to files: its document, its PDF, its attachments.
//
// The mail names them and the folder is the user's, so what is there already is never moved, overwritten or deleted: a
// file that would meet it is saved under its own name in a folder made for this mail. Only the PDF stays, and one that
// an earlier command made in the folder of the mail's key is overwritten.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <string>
#include <vector>

#include "src/outlook/Attachments.h"
#include "src/outlook/MailCommand.h"
#include "src/outlook/ScratchFiles.h"

class MailOnDisk {
public:
    MailOnDisk(IDispatch* item, MailCommand& command);
    MailOnDisk(const MailOnDisk&) = delete;
    MailOnDisk& operator=(const MailOnDisk&) = delete;
    // Deletes all but the PDF. What something still has open is left to the command.
    ~MailOnDisk();

    // Saves the mail as a document and has Word export that: the PDF's path in the folder of the key, a free one with
    // `unique`. Empty for an item that is no mail and for a mail that fails on the way; the command is told of a mail
    // whose subject cannot be a file's name.
    std::wstring MakePdf(const std::wstring& key, bool unique);

    // The paths of the attachments that were saved, in their order. Two of one name are one file, the later one.
    std::vector<std::wstring> SaveAttachments();

private:
    std::wstring DocumentPath(const std::wstring& name);
    std::wstring AttachmentPath(const std::wstring& name);
    bool IsTaken(const std::wstring& path) const;
    const std::wstring& OwnFolder();

    IDispatch* const item_;
    MailCommand& command_;
    ScratchFiles scratch_;
    std::wstring ownFolder_;  // empty until something is saved there
};

// Saves a mail in the folder under its subject, as Outlook's save type `saveAsType`. The path, or empty for an item
// that is no mail, a subject that cannot be a file's name and a file that was not written.
std::wstring SaveMailAs(IDispatch* item, const std::wstring& folder, LONG saveAsType);
std::wstring SaveMailAs(IDispatch* item, const PathForName& pathForName, LONG saveAsType);

// Deletes the document and the folder of its name, with ".files" in the place of the extension, that Outlook may leave
// beside it, with everything in it. Links in there are deleted, not followed.
void RemoveSavedDocument(const std::wstring& documentPath);

// The PDF path of a mail with that subject and key in the working folder, a free one with `unique`; the folder for it
// is made. Empty where the subject cannot be a file's name.
std::wstring MailPdfPath(const std::wstring& subject, const std::wstring& workingFolder, const std::wstring& key,
                         bool unique);
