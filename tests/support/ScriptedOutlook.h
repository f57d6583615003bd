// Outlook within the test program: scripted objects that write small files where they are told to, and note their calls
// in one list.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/support/ScriptedDispatch.h"

using Calls = std::vector<std::wstring>;

// Notes the object's calls from now on: "name.Subject" for a property that is read, "name.Visible = false" for one that
// is put, "name.Item(1)" for a method, its arguments in the order of the documentation. Only a text, a VT_I4 and a
// VT_BOOL show their value, and an omitted argument is "-".
void NoteCalls(ScriptedDispatch& object, const std::wstring& name, Calls& calls);

// A collection of borrowed objects, counted from 1. At its end nobody may hold it; the same is true of what follows.
class ScriptedCollection {
public:
    ScriptedCollection(const std::wstring& name, Calls& calls);
    ScriptedCollection(const ScriptedCollection&) = delete;
    ScriptedCollection& operator=(const ScriptedCollection&) = delete;
    ~ScriptedCollection();

    ScriptedDispatch object;
    std::vector<IDispatch*> items;  // for null, Item answers an empty value
};

// A mail. SaveAs writes a document that says whose it is, SaveAsFile the attachment's content.
class ScriptedMail {
public:
    ScriptedMail(const std::wstring& name, Calls& calls, const std::wstring& subject, const std::wstring& entryId);
    ScriptedMail(const ScriptedMail&) = delete;
    ScriptedMail& operator=(const ScriptedMail&) = delete;
    ~ScriptedMail();

    ScriptedDispatch& Attach(const std::wstring& fileName, const std::string& content);
    void ReceivedAt(WORD year, WORD month, WORD day, WORD hour = 0, WORD minute = 0, WORD second = 0);

    // The path that SaveAs or SaveAsFile was told.
    static std::wstring SavedPath(const ScriptedDispatch& object);

    ScriptedDispatch object;
    ScriptedCollection attachments;

private:
    const std::wstring name_;
    Calls& calls_;
    std::vector<std::unique_ptr<ScriptedDispatch>> attached_;
};

// Outlook showing one folder, "Inbox", with all of its mails selected.
class ScriptedOutlook {
public:
    explicit ScriptedOutlook(Calls& calls);
    ScriptedOutlook(const ScriptedOutlook&) = delete;
    ScriptedOutlook& operator=(const ScriptedOutlook&) = delete;
    ~ScriptedOutlook();

    // The first mail is called "mail1" in the list of calls, and has the entry id "entry1" unless it is given one.
    ScriptedMail& AddMail(const std::wstring& subject);
    ScriptedMail& AddMail(const std::wstring& subject, const std::wstring& entryId);
    ScriptedMail& Mail(size_t number) { return *mails_[number - 1]; }  // from 1
    void AddItem(IDispatch* item);
    // A calendar item, say.
    ScriptedMail& AddOther(const std::wstring& messageClass);

    ScriptedDispatch application;
    ScriptedDispatch explorer;
    ScriptedDispatch folder;
    ScriptedCollection selection;
    ScriptedCollection items;

private:
    Calls& calls_;
    std::vector<std::unique_ptr<ScriptedMail>> mails_;
};
