// Tries the engine with damaged PDFs: mutants of given files, the same ones for the same seed. They are tried in
// another process, so that one that crashes or hangs it is told by its number and the others get their turn.
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

#include "engine/LargeStack.h"
#include "tests/pdf/TestFolder.h"
#include "tests/pdf/mutate/Exercise.h"
#include "tests/pdf/mutate/Mutator.h"

namespace {

using namespace zavo::pdf;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool checksAddresses = true;
#else
constexpr bool checksAddresses = false;
#endif

constexpr std::size_t stackSize = std::size_t{1} << 20;  // that of the threads of Office
constexpr rlim_t memoryLimit = rlim_t{1} << 30;
constexpr rlim_t fileLimit = rlim_t{256} << 20;
constexpr std::uint64_t leakCheckEvery = 50;
constexpr double secondsForOne = checksAddresses ? 60 : 10;
constexpr int maxFailures = 20;

constexpr const char* usage =
    "Usage: pdf_mutate [--seed N] [--first N] [--count N] [--keep FILE] [PDF...]\n"
    "Tries the engine with mutants of the PDFs, of some small ones where none are given.\n"
    "  --seed N     of the random numbers; 1\n"
    "  --first N    number of the first mutant; 0\n"
    "  --count N    mutants; 1000\n"
    "  --keep FILE  writes the first mutant to FILE and tries nothing\n";

struct Options {
    std::uint64_t seed = 1;
    std::uint64_t first = 0;
    std::uint64_t count = 1000;
    std::string keep;
    std::vector<std::string> files;
};

// What the trying process tells, in memory that both have.
struct Progress {
    volatile std::uint64_t current;  // number of the mutant in work
    volatile std::uint64_t opened;
    volatile std::uint64_t plain;
    volatile std::uint64_t attached;
    volatile double slowest;
    volatile std::uint64_t slowestNumber;
};

double Now() {
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

std::optional<Options> Parse(int count, char** words) {
    Options options;
    for (int i = 1; i < count; ++i) {
        const std::string_view word = words[i];
        if (!word.starts_with("--")) {
            options.files.emplace_back(word);
            continue;
        }
        if (i + 1 == count) return std::nullopt;
        const char* const value = words[++i];
        if (word == "--seed") {
            options.seed = std::strtoull(value, nullptr, 10);
        } else if (word == "--first") {
            options.first = std::strtoull(value, nullptr, 10);
        } else if (word == "--count") {
            options.count = std::strtoull(value, nullptr, 10);
        } else if (word == "--keep") {
            options.keep = value;
        } else {
            return std::nullopt;
        }
    }
    return options;
}

// Two neighbours have nothing to do with each other: the generator is seeded with words that differ in many bits.
std::string MakeMutant(const std::vector<std::string>& files, std::uint64_t seed, std::uint64_t number) {
    std::seed_seq mixed{static_cast<std::uint32_t>(seed), static_cast<std::uint32_t>(seed >> 32),
                        static_cast<std::uint32_t>(number), static_cast<std::uint32_t>(number >> 32)};
    std::uint32_t words[2];
    mixed.generate(std::begin(words), std::end(words));
    return Mutator(files, (std::uint64_t{words[0]} << 32) | words[1]).Make();
}

void Limit(int what, rlim_t value) {
    const rlimit limit = {value, value};
    setrlimit(static_cast<__rlimit_resource>(what), &limit);
}

// The trying process; its result is 0 when all mutants did no harm.
int TryMutants(const std::vector<std::string>& files, const Options& options, std::uint64_t first, Progress& progress,
               const std::filesystem::path& folder) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // when the run is ended, this is too
    if (!checksAddresses) Limit(RLIMIT_AS, memoryLimit);
    signal(SIGXFSZ, SIG_IGN);
    Limit(RLIMIT_FSIZE, fileLimit);
    Limit(RLIMIT_CORE, 0);
    Exercise exercise(folder, SmallPdfs());
    for (std::uint64_t number = first; number < options.first + options.count; ++number) {
        progress.current = number;
        const std::string mutant = MakeMutant(files, options.seed, number);
        const double start = Now();
        try {
            RunWithStack(stackSize, [&] {
                const Exercised result = exercise.Run(mutant);
                progress.opened = progress.opened + (result.opened ? 1 : 0);
                progress.plain = progress.plain + (result.isPlain ? 1 : 0);
                progress.attached = progress.attached + (result.attached ? 1 : 0);
            });
        } catch (const std::exception& error) {
            std::fprintf(stderr, "mutant %" PRIu64 ": %s\n", number, error.what());
            return 1;
        }
        if (const double took = Now() - start; took > progress.slowest) {
            progress.slowest = took;
            progress.slowestNumber = number;
        }
#if defined(__SANITIZE_ADDRESS__)
        if ((number + 1) % leakCheckEvery == 0 && __lsan_do_recoverable_leak_check() != 0) return 1;
#endif
    }
    return 0;
}

// Waits for the process; ends one that takes too long with a mutant. What went wrong, empty for nothing.
std::string Watch(pid_t process, const Progress& progress, std::uint64_t end) {
    std::uint64_t current = progress.current;
    double since = Now();
    double told = since;
    for (;;) {
        int status = 0;
        if (waitpid(process, &status, WNOHANG) == process) {
            if (WIFSIGNALED(status)) return "signal " + std::to_string(WTERMSIG(status));
            return WEXITSTATUS(status) == 0 ? "" : "see above";
        }
        if (progress.current != current) {
            current = progress.current;
            since = Now();
        }
        if (Now() - since > secondsForOne) {
            kill(process, SIGKILL);
            waitpid(process, &status, 0);
            return "no end after " + std::to_string(static_cast<int>(secondsForOne)) + " seconds";
        }
        if (Now() - told > 10) {
            told = Now();
            std::printf("%" PRIu64 " of %" PRIu64 "\n", current, end);
        }
        usleep(20000);
    }
}

std::filesystem::path MemoryFolder() {
    return access("/dev/shm", W_OK) == 0 ? "/dev/shm" : std::filesystem::temp_directory_path();
}

int Run(const Options& options) {
    std::vector<std::string> files;
    for (const std::string& path : options.files) files.push_back(ReadBytes(path));
    if (files.empty()) files = SmallPdfs();
    if (!options.keep.empty()) {
        std::ofstream(options.keep, std::ios::binary) << MakeMutant(files, options.seed, options.first);
        return 0;
    }

    void* const shared = mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) throw std::runtime_error("no shared memory");
    Progress& progress = *new (shared) Progress{};
    setenv("TMPDIR", MemoryFolder().c_str(), 1);
    const TestFolder folder;
    const double start = Now();
    const std::uint64_t end = options.first + options.count;
    int failures = 0;
    for (std::uint64_t next = options.first; next < end && failures < maxFailures; next = progress.current + 1) {
        progress.current = next;
        const pid_t process = fork();
        if (process < 0) throw std::runtime_error("no second process");
        if (process == 0) std::exit(TryMutants(files, options, next, progress, folder.Path()));
        const std::string what = Watch(process, progress, end);
        if (what.empty()) break;
        ++failures;
        std::printf("FAILED: --seed %" PRIu64 " --first %" PRIu64 " --count 1: %s\n", options.seed,
                    static_cast<std::uint64_t>(progress.current), what.c_str());
    }
    std::printf("%" PRIu64 " mutants of %zu files, seed %" PRIu64 ": %d failures, %" PRIu64 " opened (%" PRIu64
                " without repair), %" PRIu64 " attached to, %.0f s, slowest %.2f s (%" PRIu64 ")\n",
                progress.current + 1 - options.first, files.size(), options.seed, failures,
                static_cast<std::uint64_t>(progress.opened), static_cast<std::uint64_t>(progress.plain),
                static_cast<std::uint64_t>(progress.attached), Now() - start, static_cast<double>(progress.slowest),
                static_cast<std::uint64_t>(progress.slowestNumber));
    return failures == 0 ? 0 : 1;
}

}  // namespace

int main(int count, char** words) {
    setvbuf(stdout, nullptr, _IONBF, 0);
    const std::optional<Options> options = Parse(count, words);
    if (!options) {
        std::fputs(usage, stderr);
        return 2;
    }
    try {
        return Run(*options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "pdf_mutate: %s\n", error.what());
        return 2;
    }
}
