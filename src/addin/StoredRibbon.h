// The ribbon's own interface, from the ribbon-loaded callback to disconnection.
#pragma once

#include <wrl/client.h>

#include <atomic>
#include <utility>
#include <vector>

#include "src/addin/OfficeInterfaces.h"

// Takes and gives back the host's references on the host's thread only; another thread merely calls the ribbon. So one
// that a later one replaced is kept, too, until Release: it may be in the middle of a call.
class StoredRibbon {
public:
    // What is called from here on.
    void Store(Microsoft::WRL::ComPtr<IRibbonUI> ribbon) {
        held_.push_back(std::move(ribbon));
        current_ = held_.back().Get();
    }

    // Asks the ribbon to draw itself afresh, if there is one. From any thread that has ended when Release is called.
    void Invalidate() const {
        if (IRibbonUI* ribbon = current_) ribbon->Invalidate();
    }

    // Releases all that were stored, once. The pointer keeps its stale value on purpose: nothing reads it any more.
    void Release() { const auto released = std::exchange(held_, {}); }

private:
    std::vector<Microsoft::WRL::ComPtr<IRibbonUI>> held_;
    std::atomic<IRibbonUI*> current_ = nullptr;
};
