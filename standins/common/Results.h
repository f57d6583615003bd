// Results that have to be good.
#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>

#include "standins/common/Text.h"

// Throws std::runtime_error, "WHAT failed: 0x80004005", for a failure.
inline void Expect(HRESULT result, const std::wstring& what) {
    if (FAILED(result)) throw std::runtime_error(Utf8(what + L" failed: " + HexText(result)));
}
