// zavopdf: the engine on the command line.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "engine/Attach.h"
#include "engine/AttachmentNames.h"
#include "engine/Dates.h"
#include "engine/Document.h"
#include "engine/File.h"
#include "engine/FileSystem.h"
#include "engine/Merge.h"
#include "engine/PdfError.h"
#include "engine/Portfolio.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#else
#include <csignal>

#include <sys/resource.h>
#endif

using namespace zavo::pdf;

namespace {

constexpr int ok = 0;
constexpr int failed = 1;
constexpr int wrongUsage = 2;

constexpr const char* usage =
    "Usage: zavopdf merge OUT IN...      writes the PDFs IN one behind the other to OUT\n"
    "       zavopdf attach PDF FILE...   attaches the files to PDF and saves it\n"
    "       zavopdf portfolio OUT        makes an empty portfolio, where nothing may be\n"
    "       zavopdf list PDF             lists what is attached: size, time of the last change, name\n"
    "       zavopdf --help | --version\n"
    "What begins with - is an option, but not behind --, as in: zavopdf list -- -a.pdf\n"
    "Exit codes: 0 done, 1 failed, with a line that says which file and why, 2 wrong usage.\n"
    "A command that fails leaves OUT or PDF as it was.\n";

using Paths = std::vector<std::filesystem::path>;

// Opens a PDF; what is wrong with it is said with its name.
template <typename Open>
auto OpenNamed(const std::filesystem::path& path, Open open) {
    try {
        return open();
    } catch (const PdfError& error) {
        throw PdfError(Utf8FromPath(path) + ": " + error.what());
    }
}

// "2024-02-29 23:59:59" of "D:20240229235959Z".
std::string ShownTime(std::int64_t seconds) {
    const std::string date = DateText(seconds);
    if (date.empty()) return "-";
    return date.substr(2, 4) + "-" + date.substr(6, 2) + "-" + date.substr(8, 2) + " " + date.substr(10, 2) + ":" +
           date.substr(12, 2) + ":" + date.substr(14, 2);
}

void Merge(const Paths& paths) {
    Merger merger;
    for (std::size_t i = 1; i < paths.size(); ++i) {
        merger.Add(OpenNamed(paths[i], [&] { return std::shared_ptr<Document>(Document::Open(paths[i], "")); }), {});
    }
    merger.Save(paths[0], Merger::BeyondRepair::IsAnError);
}

void Attach(const Paths& paths) {
    EditableDocument document = OpenNamed(paths[0], [&] { return EditableDocument(paths[0], ""); });
    for (std::size_t i = 1; i < paths.size(); ++i) {
        Attachment& attachment = document.Add(Utf8FromPath(paths[i].filename()), "");
        attachment.SetContent(InputFile(paths[i]));
        attachment.SetModified(filesystem::LastChange(paths[i]).value_or(unknownTime));
        document.FileInFolder(attachment, "/");
    }
    OpenNamed(paths[0], [&] { document.Save(paths[0]); });
}

void List(const std::filesystem::path& path) {
    const auto list = OpenNamed(path, [&] { return ListAttachments(*Document::Open(path, "")); });
    for (const ListedAttachment& file : list) {
        const std::string size = file.size < 0 ? "-" : std::to_string(file.size);
        // Control characters in a name would be orders to a terminal.
        const std::string name = WithoutControls(file.name, '?');
        std::printf("%s\t%s\t%s\n", size.c_str(), ShownTime(file.modified).c_str(), name.c_str());
    }
}

struct CommandLine {
    bool isHelp = false;
    bool isVersion = false;
    bool isWrong = false;
    std::string command;
    Paths paths;
};

CommandLine Understand(const Paths& arguments) {
    CommandLine line;
    Paths words;
    bool optionsEnded = false;
    for (const std::filesystem::path& argument : arguments) {
        if (optionsEnded || !argument.native().starts_with(std::filesystem::path::value_type('-'))) {
            words.push_back(argument);
        } else if (argument == "--") {
            optionsEnded = true;
        } else if (argument == "--help" || argument == "-h") {
            line.isHelp = true;
        } else if (argument == "--version") {
            line.isVersion = true;
        } else {
            line.isWrong = true;
        }
    }
    if (!words.empty()) {
        line.command = Utf8FromPath(words[0]);
        line.paths.assign(words.begin() + 1, words.end());
    }
    return line;
}

int Run(const Paths& arguments) {
    const CommandLine line = Understand(arguments);
    const std::string& command = line.command;
    const Paths& paths = line.paths;
    if (line.isWrong) {
        std::fputs(usage, stderr);
        return wrongUsage;
    }
    if (std::any_of(paths.begin(), paths.end(), [](const auto& path) { return path.empty(); })) {
        throw FileError("the path is empty");
    }
    if (line.isHelp) {
        std::fputs(usage, stdout);
    } else if (line.isVersion) {
        std::puts("zavopdf " ZAVO_VERSION);
    } else if (command == "merge" && paths.size() >= 2) {
        Merge(paths);
    } else if (command == "attach" && paths.size() >= 2) {
        Attach(paths);
    } else if (command == "portfolio" && paths.size() == 1) {
        WriteEmptyPortfolio(paths[0]);
    } else if (command == "list" && paths.size() == 1) {
        List(paths[0]);
    } else {
        std::fputs(usage, stderr);
        return wrongUsage;
    }
    if (std::fflush(stdout) != 0) throw FileError("the output cannot be written");
    return ok;
}

int RunReported(const Paths& arguments) {
    try {
        return Run(arguments);
    } catch (const std::bad_alloc&) {
        std::fputs("zavopdf: there is not enough memory\n", stderr);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "zavopdf: %s\n", error.what());
    }
    return failed;
}

}  // namespace

#ifdef _WIN32
// Texts are UTF-8 and end in line feeds, as on other systems.
int wmain(int count, wchar_t** arguments) {
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    return RunReported({arguments + 1, arguments + count});
}
#else
int main(int count, char** arguments) {
    // A file that grows too large is an error like any other, and every input of a merge is an open file.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit files = {};
    if (getrlimit(RLIMIT_NOFILE, &files) == 0) {
        files.rlim_cur = files.rlim_max;
        setrlimit(RLIMIT_NOFILE, &files);
    }
    return RunReported({arguments + 1, arguments + count});
}
#endif
