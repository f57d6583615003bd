// Parts of a path, a path that is still free, whether there is something. Paths are Windows paths in UTF-16; nothing
// here opens a file.
#pragma once

#include <string>

// The file name of `path`. Without `keepExtension` it is cut before its last "."; a name without "." is kept whole. An
// empty path gives an empty name; a path without a file name is given back as it stands.
std::wstring GetFileNameOfPath(const std::wstring& path, bool keepExtension);

// `path` up to and including its last "\" or "/"; empty when it has neither.
std::wstring GetFolderOfPath(const std::wstring& path);

// The extension of the file name with its dot, by the shell's rules; empty when there is none.
std::wstring GetExtensionOfPath(const std::wstring& path);

// `path` itself, or the first of "name(1).ext", "name(2).ext", ... that does not exist. `counter` is the first number
// to try; 0 tries the path itself. There is no blank before the parenthesis.
std::wstring MakeUniquePath(unsigned counter, const std::wstring& path);

// Whether there is a file or folder.
bool Exists(const std::wstring& path);

// Makes the folder with all that is missing above it. One that is there already, or cannot be made, is no matter here.
void MakeFolder(const std::wstring& path);

// The first `length` characters of `text`, or one less where that would cut a surrogate pair in two.
std::wstring Shortened(const std::wstring& text, size_t length);
