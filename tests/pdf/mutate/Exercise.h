// What the engine must bear: everything that it does with a PDF, done with a file that is made to harm.
#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace zavo::pdf {

// A promise of the engine that did not hold; the text says which.
class BrokenPromise : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// What became of a file, for the statistics of a run.
struct Exercised {
    bool opened = false;
    bool isPlain = false;  // and needed no repair
    bool attached = false;
};

class Exercise {
public:
    // Files are written to `folder`. Each file that is tried is merged between two of `good`.
    Exercise(std::filesystem::path folder, std::vector<std::string> good);

    // Opens, lists, merges and attaches. Refusing is fine; everything else throws what it threw or BrokenPromise.
    Exercised Run(const std::string& bytes);

private:
    void Merge();
    bool Attach(const std::string& bytes);

    std::filesystem::path folder_;
    std::filesystem::path input_;
    std::filesystem::path output_;
    std::vector<std::filesystem::path> good_;
    std::size_t goodPages_ = 0;
};

// PDFs of a few objects in each form that there is, for where no others are at hand.
std::vector<std::string> SmallPdfs();

}  // namespace zavo::pdf
