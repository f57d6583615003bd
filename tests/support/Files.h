// Throw-away folders and small files for tests.
#pragma once

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>

// Answers whether the file was written.
inline bool WriteFileText(const std::wstring& path, const std::string& content) {
    std::ofstream file(std::filesystem::path(path), std::ios::binary);
    file << content;
    return file.good();
}

inline std::string ReadFileText(const std::wstring& path) {
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A folder of its own under the temporary folder, removed with everything in it at the end.
class TemporaryFolder {
public:
    TemporaryFolder() {
        wchar_t base[MAX_PATH];
        GetTempPathW(MAX_PATH, base);
        static LONG counter = 0;
        // An earlier process of that number may have left a program behind that still ran.
        do {
            path_ = std::wstring(base) + L"zavo-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
                    std::to_wstring(InterlockedIncrement(&counter));
        } while (!std::filesystem::create_directory(path_));
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    // The folder's path without a separator at its end, or the path of `name` in it.
    const std::wstring& Path() const { return path_; }
    std::wstring Path(const std::wstring& name) const { return path_ + L"\\" + name; }

    std::wstring MakeFile(const std::wstring& name, const std::string& content = "x") const {
        std::ofstream(std::filesystem::path(Path(name)), std::ios::binary) << content;
        return Path(name);
    }

    // What is in it, however deep: a file's content, or "folder", by its path from here.
    std::map<std::wstring, std::string> List() const {
        std::map<std::wstring, std::string> list;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(path_)) {
            list[entry.path().wstring().substr(path_.size() + 1)] =
                entry.is_directory() ? "folder" : ReadFileText(entry.path().wstring());
        }
        return list;
    }

private:
    std::wstring path_;
};

// The text once the file ends in a line feed, for a file that another process is still to write; gives up after
// `milliseconds` and gives what there is.
inline std::string WaitForFileText(const std::wstring& path, DWORD milliseconds = 10000) {
    std::string text;
    for (DWORD waited = 0; waited < milliseconds; waited += 20) {
        text = ReadFileText(path);
        if (!text.empty() && text.back() == '\n') break;
        Sleep(20);
    }
    return text;
}
