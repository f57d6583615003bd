// The stored ribbon.
#include "src/addin/StoredRibbon.h"

#include <utility>

void StoredRibbon::Store(IRibbonUI* ribbon) {
    IRibbonUI* earlier = nullptr;
    {
        const std::lock_guard lock(mutex_);
        if (held_) earlier = ribbon_;
        ribbon_ = ribbon;
        held_ = true;
    }
    if (earlier) earlier->Release();
}

void StoredRibbon::Release() {
    IRibbonUI* released = nullptr;
    {
        const std::lock_guard lock(mutex_);
        if (std::exchange(held_, false)) released = ribbon_;
    }
    if (released) released->Release();
}
