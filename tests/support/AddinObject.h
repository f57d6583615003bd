// An add-in object that a test owns, and the state of one for tests that need no object.
#pragma once

#include "src/addin/OfficeAddin.h"

class AddinObject {
public:
    AddinObject() : addin_(new ZOfficeAddin) {}
    AddinObject(const AddinObject&) = delete;
    AddinObject& operator=(const AddinObject&) = delete;
    ~AddinObject() { addin_->Release(); }

    ZOfficeAddin* operator->() const { return addin_; }
    ZOfficeAddin* Get() const { return addin_; }

private:
    ZOfficeAddin* addin_;
};

inline AddinState StateOf(Host host, IDispatch* application) {
    AddinState state;
    state.host = host;
    state.application = application;
    return state;
}
