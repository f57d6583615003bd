// The ribbon's own interface, from the ribbon-loaded callback to disconnection.
#pragma once

#include <mutex>

#include "src/addin/OfficeInterfaces.h"

// Holds one reference. Its operations may be called from any thread; none calls the ribbon with the lock held.
class StoredRibbon {
public:
    StoredRibbon() = default;
    StoredRibbon(const StoredRibbon&) = delete;
    StoredRibbon& operator=(const StoredRibbon&) = delete;
    ~StoredRibbon() { Release(); }

    // Takes over the caller's reference and releases the one held before, if any.
    void Store(IRibbonUI* ribbon);

    // Releases the reference, once. The pointer keeps its stale value on purpose: nothing reads it any more.
    void Release();

private:
    std::mutex mutex_;
    IRibbonUI* ribbon_ = nullptr;
    bool held_ = false;
};
