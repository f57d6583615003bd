// The ribbon's callbacks. A callback's arguments arrive last one first.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include "src/addin/OfficeAddin.h"

// Keeps the ribbon that the host hands over and watches the themes for it. E_INVALIDARG for no object; the error of a
// failed query for IRibbonUI.
HRESULT OnRibbonLoaded(ZOfficeAddin& addin, const DISPPARAMS* params);

// Runs the command of the clicked button. S_OK whatever the command did, and for an identifier without a command;
// E_INVALIDARG for no argument, DISP_E_TYPEMISMATCH for a control without a readable identifier.
HRESULT OnButtonClick(ZOfficeAddin& addin, const DISPPARAMS* params);

// VT_BOOL in `result`: whether the check box's option is set. False and E_NOTIMPL for another identifier.
HRESULT GetCheckBoxState(const ZOfficeAddin& addin, const DISPPARAMS* params, VARIANT* result);

// Stores the check box's new state. E_NOTIMPL for another identifier.
HRESULT OnCheckBoxChanged(ZOfficeAddin& addin, const DISPPARAMS* params);
