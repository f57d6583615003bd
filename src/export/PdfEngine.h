// Merging PDFs into one, and attaching files to a PDF, through the PDF engine. The engine has to be initialised, and is
// called on the calling thread. No routine leaves a document, a merge job or a file open, also when it throws.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Merges the inputs into `outputPath`, in list order; an input that does not open as a PDF is left out silently.
// Without any input the engine decides the result.
bool MergePdfFiles(const std::wstring& outputPath, const std::vector<std::wstring>& inputPaths);

// Embeds the files into the PDF, in list order, and saves it over itself, also when there was nothing to embed. A file
// that cannot be read or has 2 GiB or more is left out silently. `intoRootFolder` files the entries in the root folder
// of the PDF's attachment tree. False when the PDF did not open or was not saved.
bool AttachFilesToPdf(const std::wstring& pdfPath, const std::vector<std::wstring>& files, bool intoRootFolder);

constexpr int timeOfLastAccess = 0;
constexpr int timeOfCreation = 1;
constexpr int timeOfLastWrite = 2;

// The file's time of that kind in whole seconds since 1970-01-01 00:00 UTC. -1 for an empty path, a file whose times
// cannot be read, a time before 1970, a zero time (last error ERROR_INVALID_DATA) and another kind, whatever the path
// (last error ERROR_INVALID_PARAMETER).
int64_t GetFileTimeSeconds(const std::wstring& path, int kind);

// The file's size in bytes, or -1 when it cannot be read.
int64_t GetFileSize64(const std::wstring& path);
