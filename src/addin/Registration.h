// The add-in's entries in the registry.
#pragma once

#include <windows.h>

// Writes the class, the ProgID and the add-in key of each of the four hosts. Stops at the first value that cannot be
// written and answers its error; what was written before stays. S_FALSE for no module, and nothing is written.
HRESULT RegisterAddin(HINSTANCE instance);

// Removes these keys with everything below them. A key that is already gone is no error.
HRESULT UnregisterAddin();
