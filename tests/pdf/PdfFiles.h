// What other programs read in the engine's PDFs.
#pragma once

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/pdf/PdfMaker.h"
#include "tests/pdf/TestFolder.h"

struct Ran {
    int code;
    std::string output;  // of both kinds
};

inline Ran Shell(const std::string& command) {
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen((command + " 2>&1").c_str(), "r"), [](FILE*) { return 0; });
    if (!pipe) return {-1, "cannot start " + command};
    std::string output;
    std::array<char, 4096> piece = {};
    while (const std::size_t got = fread(piece.data(), 1, piece.size(), pipe.get())) output.append(piece.data(), got);
    return {pclose(pipe.release()), output};
}

// A word of a shell's command line.
inline std::string Quoted(const std::filesystem::path& path) { return "'" + path.string() + "'"; }

inline void ExpectSound(const std::filesystem::path& pdf) {
    const Ran check = Shell("qpdf --check " + Quoted(pdf));
    EXPECT_EQ(check.code, 0) << check.output;
}

// Names, as a reader shows them, and contents of what is attached.
using Files = std::multiset<std::pair<std::string, std::string>>;

// Poppler numbers the files in the order of the tree. It does not know characters beyond the first 65536.
inline Files AttachmentsByPoppler(const std::filesystem::path& pdf) {
    Files files;
    const TestFolder folder;
    const Ran list = Shell("pdfdetach -enc UTF-8 -list " + Quoted(pdf));
    EXPECT_EQ(list.code, 0) << list.output;
    std::size_t line = list.output.find('\n') + 1;
    for (int number = 1; line != 0 && line < list.output.size(); ++number) {
        const std::size_t end = list.output.find('\n', line);
        const std::string prefix = std::to_string(number) + ": ";
        EXPECT_EQ(list.output.substr(line, prefix.size()), prefix) << list.output;
        const auto out = folder.Path("content");
        const Ran save = Shell("pdfdetach -save " + std::to_string(number) + " -o " + Quoted(out) + " " + Quoted(pdf));
        EXPECT_EQ(save.code, 0) << save.output;
        files.emplace(list.output.substr(line + prefix.size(), end - line - prefix.size()), ReadBytes(out));
        line = end + 1;
    }
    return files;
}

// The keys of the tree of attachments, in its order; qpdf complains where that is not sorted.
inline std::vector<std::string> AttachmentKeys(const std::filesystem::path& pdf) {
    const Ran list = Shell("qpdf --list-attachments " + Quoted(pdf));
    EXPECT_EQ(list.code, 0) << list.output;
    std::vector<std::string> keys;
    for (std::size_t line = 0; line < list.output.size();) {
        const std::size_t end = list.output.find('\n', line);
        const std::string text = list.output.substr(line, end - line);
        if (const std::size_t arrow = text.rfind(" -> "); arrow != std::string::npos)
            keys.push_back(text.substr(0, arrow));
        line = end + 1;
    }
    return keys;
}
