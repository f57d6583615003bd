// The ribbon control that a callback hands over.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <string>

// The control's `Id` property, read by DISPID 1 from a callback's argument. Empty when the argument is no object or the
// read fails or yields no text.
std::wstring GetControlId(const VARIANT& argument);
