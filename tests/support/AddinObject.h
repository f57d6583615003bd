// An add-in object that a test owns.
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
