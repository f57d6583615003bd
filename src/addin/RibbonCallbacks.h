// The ribbon's callbacks: what the markup names, by the number that the host calls it by.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <string_view>

#include "src/addin/OfficeAddin.h"

struct RibbonCallback {
    std::wstring_view name;
    DISPID dispid;
    HRESULT (*run)(ZOfficeAddin& addin, const DISPPARAMS* params, VARIANT* result);
};

// Null where there is none of that name, which may be null, or number.
const RibbonCallback* FindRibbonCallback(const wchar_t* name);
const RibbonCallback* FindRibbonCallback(DISPID dispid);
