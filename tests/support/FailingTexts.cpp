// The program's own imports of the two functions.
#include "tests/support/FailingTexts.h"

#include <windows.h>
#include <oleauto.h>

std::atomic<long> textsUntilFailure = -1;

namespace {

bool Fails() { return textsUntilFailure >= 0 && textsUntilFailure-- == 0; }

template <typename Function>
Function RealOne(const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(LoadLibraryW(L"oleaut32.dll"), name)));
}

BSTR WINAPI Allocate(const OLECHAR* text) {
    static const auto real = RealOne<decltype(&SysAllocString)>("SysAllocString");
    return Fails() ? nullptr : real(text);
}

BSTR WINAPI AllocateLength(const OLECHAR* text, UINT length) {
    static const auto real = RealOne<decltype(&SysAllocStringLen)>("SysAllocStringLen");
    return Fails() ? nullptr : real(text, length);
}

}  // namespace

// Under these names the linker looks for imported functions; it takes what it finds first.
extern "C" {
extern decltype(&SysAllocString) const __imp_SysAllocString;
extern decltype(&SysAllocStringLen) const __imp_SysAllocStringLen;
decltype(&SysAllocString) const __imp_SysAllocString = Allocate;
decltype(&SysAllocStringLen) const __imp_SysAllocStringLen = AllocateLength;
}
