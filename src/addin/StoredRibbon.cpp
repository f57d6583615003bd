// The stored ribbon.
#include "src/addin/StoredRibbon.h"

#include <utility>

#include "src/base/Handles.h"

void StoredRibbon::Store(Microsoft::WRL::ComPtr<IRibbonUI> ribbon) {
    IRibbonUI* earlier = nullptr;
    {
        const ExclusiveLock lock(lock_);
        if (held_) earlier = ribbon_;
        ribbon_ = ribbon.Detach();
        held_ = true;
    }
    if (earlier) earlier->Release();
}

void StoredRibbon::Invalidate() {
    Microsoft::WRL::ComPtr<IRibbonUI> called;
    {
        const ExclusiveLock lock(lock_);
        if (held_) called = ribbon_;
    }
    if (called) called->Invalidate();
}

void StoredRibbon::Release() {
    IRibbonUI* released = nullptr;
    {
        const ExclusiveLock lock(lock_);
        if (std::exchange(held_, false)) released = ribbon_;
    }
    if (released) released->Release();
}
