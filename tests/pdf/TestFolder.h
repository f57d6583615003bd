// A folder of its own for a test, removed with everything in it at the end; and whole files as strings.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

#include <unistd.h>

inline std::string ReadBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class TestFolder {
public:
    TestFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "zavo-pdf-XXXXXX").string();
        if (!mkdtemp(name.data())) throw std::filesystem::filesystem_error("mkdtemp", name, {});
        path_ = name;
    }
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;
    ~TestFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::filesystem::path& Path() const { return path_; }
    std::filesystem::path Path(const std::string& name) const { return path_ / name; }

    std::filesystem::path MakeFile(const std::string& name, const std::string& content) const {
        std::ofstream(path_ / name, std::ios::binary) << content;
        return path_ / name;
    }

    // The names of all that is in the folder: temporary files show here.
    std::set<std::string> Names() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_)) names.insert(entry.path().filename());
        return names;
    }

private:
    std::filesystem::path path_;
};
