// What Outlook shows: the selected items and those of the current folder, walked one by one, and the properties of a
// mail. Everything is reached by name; what cannot be read, or is of another type than expected, counts as missing.
#pragma once

#include <windows.h>
#include <oaidl.h>
#include <wrl/client.h>

#include <functional>
#include <string>

// Null when a step of the way fails or yields no object.
Microsoft::WRL::ComPtr<IDispatch> GetSelectedItems(IDispatch* application);
Microsoft::WRL::ComPtr<IDispatch> GetCurrentFolder(IDispatch* application);
Microsoft::WRL::ComPtr<IDispatch> GetCurrentFolderItems(IDispatch* application);

using ItemAction = std::function<void(IDispatch* item)>;

// Calls `action` for each object of a collection, in its order. A collection without a 32-bit count has none. What is
// thrown for one item ends with that item: the others have their turn.
void ForEachItem(IDispatch* collection, const ItemAction& action);
// The same for a collection whose count has been read. The taskbar button of `owner` shows how far it is, as a
// TaskbarProgress does.
void ForEachItem(HWND owner, IDispatch* collection, LONG count, const ItemAction& action);

// Whether the message class has "IPM.Note" anywhere: signed mails and reports about mails are mails, too.
bool IsMailItem(IDispatch* item);

// "mail" for an empty subject; empty when it cannot be read.
std::wstring GetMailSubject(IDispatch* item);

// A short name for the entry id, the same on every run: its 64-bit FNV-1a hash in lower-case hexadecimal without
// leading zeros. Empty when there is no entry id to read. Folders have one, too.
std::wstring GetMailKey(IDispatch* item);

// Whether the key tells one mail from another: neither empty nor that of an empty entry id.
bool IsDistinctKey(const std::wstring& key);

std::wstring GetItemName(IDispatch* item);  // the display name of a folder

// Local time; that of now for a mail that was never received.
SYSTEMTIME GetReceivedTime(IDispatch* item);
