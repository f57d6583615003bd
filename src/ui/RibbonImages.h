// The pictures of the ribbon's buttons.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include "src/base/AddinState.h"

// The image callback. The argument is a ribbon control or an image id; `result` gets an IPictureDisp. E_INVALIDARG for
// no argument or no place for the result, DISP_E_TYPEMISMATCH for an id that is not known for its kind of argument,
// DISP_E_MEMBERNOTFOUND for another kind or an icon that cannot be loaded. `result` is untouched on failure.
HRESULT OnLoadImage(const AddinState& addin, const DISPPARAMS* params, VARIANT* result);

// The resource of an image number in the set that fits the themes of this moment; 100 for an unknown number.
LONG ResolveIconResourceId(LONG imageNumber);
