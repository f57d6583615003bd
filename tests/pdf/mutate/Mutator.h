// Damages PDFs at random, the same way for the same seed.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace zavo::pdf {

class Mutator {
public:
    // `files` have to live as long.
    Mutator(const std::vector<std::string>& files, std::uint64_t seed) : files_(files), random_(seed) {}

    std::string Make();

private:
    std::size_t Below(std::size_t limit) { return limit == 0 ? 0 : static_cast<std::size_t>(random_() % limit); }
    bool OneIn(std::size_t count) { return Below(count) == 0; }
    const std::string& AnyFile() { return files_[Below(files_.size())]; }
    std::size_t RangeLength(std::size_t limit);

    void MutateOnce(std::string& bytes);
    void FlipBytes(std::string& bytes);
    void CutRange(std::string& bytes);
    void CopyRange(std::string& bytes);
    void SwapRanges(std::string& bytes);
    void ChangeDigits(std::string& bytes);
    void ChangeReference(std::string& bytes);
    void ReplaceName(std::string& bytes);
    void InsertToken(std::string& bytes);
    void Splice(std::string& bytes);

    const std::vector<std::string>& files_;
    std::mt19937_64 random_;
};

// The file with a new cross-reference table behind it, of the objects that are seen in it: what was damaged on the way
// to them is hidden, and what is inside them gets its turn.
std::string WithNewTable(std::string bytes);

}  // namespace zavo::pdf
