// Outlook, Word and the PDF engine in the test process, with the add-in's real click between them.
#pragma once

#include <windows.h>
#include <objbase.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "standins/office/OutlookModel.h"
#include "tests/support/AddinObject.h"
#include "tests/support/EngineRecorder.h"
#include "tests/support/FaultyDispatch.h"
#include "tests/support/LocalWord.h"

// COM on this thread, for the length of a scope.
class ComApartment {
public:
    ComApartment() { CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
    ~ComApartment() { CoUninitialize(); }
};

// A mail that saves itself as a document with a folder of pictures beside it, as Outlook does. The attachments have
// their names as contents.
OutlookItem MakeMail(const std::wstring& subject, const std::wstring& entryId, DATE received,
                     const std::vector<std::wstring>& attachments);
OutlookItem MakeOtherItem(const std::wstring& messageClass, const std::wstring& entryId);

// Files and folders below the user's "ZAVO Outlook PDFs", by their paths from there. A folder's ends in a separator and
// has no content.
using FileTree = std::map<std::wstring, std::string>;

// As mixed as real folders are. The first mail finds its files' names taken by UsersFiles, the second does not; the
// last has a subject that no file can have.
OutlookFolder MixedFolder();

// What the user keeps in the working folders, most of it under names that the first mail's files have.
const FileTree& UsersFiles();

class OutlookFiles {
public:
    OutlookFiles();  // empties the folder
    OutlookFiles(const OutlookFiles&) = delete;
    OutlookFiles& operator=(const OutlookFiles&) = delete;
    ~OutlookFiles();

    FileTree List() const;
    // Makes the folder hold just that, touching only what differs.
    void Restore(const FileTree& wanted) const;
    void Append(const wchar_t* name, const char* text) const;  // allocates nothing; the file has to be there

private:
    const std::wstring root_;
};

// Outlook showing one folder, and a Word that answers COM. The calls into both are counted together.
class OutlookSession {
public:
    OutlookSession(OutlookFolder folder, std::vector<size_t> selected);
    OutlookSession(const OutlookSession&) = delete;
    OutlookSession& operator=(const OutlookSession&) = delete;

    // A click on that button of an add-in that is connected to this Outlook.
    HRESULT Click(ZOfficeAddin& addin, std::wstring_view controlId) const;
    void Connect(ZOfficeAddin& addin) const;

private:
    const ComApartment apartment_;

public:
    CallFaults faults;
    LocalWord word{faults};

private:
    Microsoft::WRL::ComPtr<IDispatch> application_;
};
