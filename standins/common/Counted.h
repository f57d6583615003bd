// COM objects that count their references.
#pragma once

#include <windows.h>
#include <unknwn.h>

// An object of these interfaces that starts with one reference and is deleted with the last.
template <typename... Interfaces>
class Counted : public Interfaces... {
public:
    Counted() = default;
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

    ULONG STDMETHODCALLTYPE AddRef() override { return InterlockedIncrement(&references_); }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = InterlockedDecrement(&references_);
        if (left == 0) delete this;
        return left;
    }

protected:
    virtual ~Counted() = default;

    ULONG references_ = 1;
};
