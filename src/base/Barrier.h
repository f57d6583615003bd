// The exception barrier: nothing that is thrown inside it gets out.
#pragma once

#include <windows.h>

#include <new>
#include <utility>

// Runs `body`, which answers an HRESULT, and answers it. An allocation that failed becomes E_OUTOFMEMORY, anything else
// that was thrown E_UNEXPECTED. It stands around every export, every interface method that can throw and every thread
// function.
template <typename Body>
HRESULT Barrier(Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}
