// The ribbon's own interface, from the ribbon-loaded callback to disconnection.
#pragma once

#include <wrl/client.h>

#include "src/addin/OfficeInterfaces.h"

// Holds one reference. Its operations may be called from any thread; none calls the ribbon with the lock held.
class StoredRibbon {
public:
    StoredRibbon() = default;
    StoredRibbon(const StoredRibbon&) = delete;
    StoredRibbon& operator=(const StoredRibbon&) = delete;
    ~StoredRibbon() { Release(); }

    // Keeps the ribbon and releases the one held before, if any.
    void Store(Microsoft::WRL::ComPtr<IRibbonUI> ribbon);

    // Asks the ribbon to draw itself afresh, if one is held. It is called under a reference of its own.
    void Invalidate();

    // Releases the reference, once. The pointer keeps its stale value on purpose: nothing reads it any more.
    void Release();

private:
    SRWLOCK lock_ = SRWLOCK_INIT;  // takes no memory and cannot fail, so that the last release of the add-in cannot
    IRibbonUI* ribbon_ = nullptr;
    bool held_ = false;
};
