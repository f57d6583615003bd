// Where the Outlook commands write: working folders, names of files, and which texts can be one.
//
// A subject, an attachment's name or a folder's display name comes from whoever sent it. It is used as it stands or not
// at all: never altered, and never a way out of the folder that is meant.
#pragma once

#include <functional>
#include <string>
#include <string_view>

// The folder of that name in the user's Documents, made where it is missing; Documents itself for no name. Empty when
// there is none.
std::wstring GetDocumentsSubfolder(const std::wstring& name);
std::wstring GetTempSubfolder(const std::wstring& name);  // the same in the folder for temporary files

// The working folder of an Outlook button's command, which need not exist; empty for every other control, for which
// nothing is made.
std::wstring GetOutlookWorkingFolder(std::wstring_view controlId);

// A free path for the PDF of `sourcePath` in that subfolder.
std::wstring GetDocumentsOutputPath(const std::wstring& sourcePath, const std::wstring& subfolder);
std::wstring GetTempOutputPath(const std::wstring& sourcePath, const std::wstring& subfolder);

// Outlook's `SaveAs` types (OlSaveAsType), and the extension, with its dot, of what it writes; ".msg" for other types.
constexpr long olDoc = 4;
std::wstring SaveAsExtension(long type);

// Whether a file in a folder can have that name: no character that file names forbid and no name of a device. `name` is
// that of a file, extension included.
bool IsPlainFileName(std::wstring_view name);
// The same for a name that nothing is appended to: it is not empty, not "." or "..", and has no blank or dot at its
// end.
bool IsPlainWholeFileName(std::wstring_view name);
// Whether Outlook and the shell take a path of that length.
bool IsShortEnough(const std::wstring& path);
// The path of the file of that name in the folder; empty where there can be no such file.
std::wstring PathInFolder(const std::wstring& folder, const std::wstring& name);
// Where a file of that name goes; empty where there can be none.
using PathForName = std::function<std::wstring(const std::wstring& name)>;

// `name` with "-" for every character that file names forbid.
std::wstring WithoutForbiddenCharacters(std::wstring name);
