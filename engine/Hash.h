// A fast hash of bytes, for tables whose keys are compared as well. It is no protection against forged bytes.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

namespace zavo::pdf {

inline std::uint64_t HashBytes(std::string_view bytes, std::uint64_t seed) {
    constexpr std::uint64_t factor = 0x9E3779B97F4A7C15;  // 2^64 divided by the golden ratio
    std::uint64_t hash = (seed ^ bytes.size()) * factor;
    const auto mix = [&hash](std::uint64_t word) {
        hash = (hash ^ word) * factor;
        hash ^= hash >> 32;
    };
    while (bytes.size() >= 8) {
        std::uint64_t word;
        std::memcpy(&word, bytes.data(), sizeof word);
        mix(word);
        bytes.remove_prefix(8);
    }
    std::uint64_t last = 0;
    if (!bytes.empty()) std::memcpy(&last, bytes.data(), bytes.size());
    mix(last);
    return hash;
}

}  // namespace zavo::pdf
