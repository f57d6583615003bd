// The exception barrier of the engine's C interface: nothing that is thrown inside it gets out.
#pragma once

#include <utility>

// Runs `body` and answers what it answers, or `failure` where anything was thrown. It stands around every export.
template <typename Result, typename Body>
Result EngineBarrier(Result failure, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (...) {
        return failure;
    }
}
