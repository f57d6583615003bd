// UTF-8, console output and logs for the stand-ins.
#pragma once

#include <string>

std::string Utf8(const std::wstring& text);
std::wstring Wide(const std::string& utf8);

// A result code as "0x80004005".
std::wstring HexText(long code);

// Writes a line to standard output as UTF-8, at once.
void PrintLine(const std::wstring& line);

// Writes "PROGRAM: line" to standard error.
void PrintError(const std::wstring& line);

// The value of an environment variable; empty when it is not set.
std::wstring Environment(const wchar_t* name);

// Appends the text to the file, which is made if there is none, in one write, so that two programs do not mix theirs.
void AppendToFile(const std::wstring& path, const std::string& text);
