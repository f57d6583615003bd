// Word as other programs drive it: it starts with no window and no document, opens what it is told to, and quits.
#pragma once

#include <windows.h>
#include <oaidl.h>
#include <wrl/client.h>

#include <functional>

// Word's `_Application` interface; its members are called by name.
inline constexpr IID wordApplicationIid = {
    0x00020970, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

// The application. `quit` is called when somebody calls Quit, and when nobody holds any of its objects any more.
Microsoft::WRL::ComPtr<IDispatch> MakeAutomatedWord(std::function<void()> quit);
