// Outlook's object model, as far as the add-in uses it: Application, Explorer, Selection, a folder with its items,
// mails and other items with their attachments.
#pragma once

#include <windows.h>
#include <oaidl.h>
#include <wrl/client.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

struct OutlookAttachment {
    std::optional<std::wstring> fileName;                // none: reading it fails
    std::function<void(const std::wstring& path)> save;  // throws AutomationError
};

struct OutlookItem {
    std::wstring messageClass = L"IPM.Note";
    std::optional<std::wstring> subject;  // none of these: the item has no such property
    std::optional<std::wstring> entryId;
    std::optional<std::wstring> sender;
    std::optional<DATE> received;
    std::vector<OutlookAttachment> attachments;
    std::function<void(const std::wstring& path, LONG type)> saveAs;  // throws AutomationError
    std::wstring page;  // the path of an HTML file that shows the item; empty for none
};

struct OutlookFolder {
    std::wstring name;
    std::wstring entryId;
    std::vector<OutlookItem> items;
};

// Answers the places (from 0) of the items that are selected at the moment.
using OutlookSelection = std::function<std::vector<size_t>()>;

// Outlook showing that folder. As in Outlook, each way to an object makes a new one.
Microsoft::WRL::ComPtr<IDispatch> MakeOutlookApplication(OutlookFolder folder, OutlookSelection selection);

// The mails and attachments that are held, by anybody, at this moment, and the most that were at once. A mailbox on a
// server does not give out more than some 250.
// One of these lives with each.
class OpenItems {
public:
    OpenItems();
    OpenItems(const OpenItems&) = delete;
    OpenItems& operator=(const OpenItems&) = delete;
    ~OpenItems();

    static long Now();
    static long Most();  // since Restart
    static void Restart();
};
