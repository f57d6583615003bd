// Parts of a path, and a path that is still free. Paths are Windows paths in UTF-16; nothing here opens a file.
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
