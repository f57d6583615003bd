// Late-bound calls into the host's object model: a member is looked up by its name and invoked. Locale 0x400
// (LOCALE_USER_DEFAULT) throughout; the host's exception text is not collected.
//
// Every function answers the HRESULT of the first step that failed, or of Invoke; E_POINTER for no target. None shows a
// message or releases the target. Results belong to the caller. The only exception that leaves them is the
// std::bad_alloc of the copied name or text.
#pragma once

#include <windows.h>
#include <oaidl.h>
#include <wrl/client.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "src/automation/AutomationArgs.h"

HRESULT AutomationGetProperty(IDispatch* disp, std::wstring_view name, VARIANT* result);

// `args` are the property's `count` values, the new value among them, in the order of Invoke (last one first).
HRESULT AutomationPutProperty(IDispatch* disp, std::wstring_view name, UINT count, VARIANT* args);

// `args` stand in the order of the method's documentation; this function reverses them for the wire, where argument k
// of N is slot N-k. They stay the caller's. `result` may be null.
HRESULT AutomationCallMethod(IDispatch* disp, std::wstring_view name, VARIANT* result, UINT count, const VARIANT* args);

// One argument, taken by value; what it holds stays the caller's.
HRESULT AutomationCallMethod1(IDispatch* disp, std::wstring_view name, VARIANT* result, VARIANT arg);

// A method with many optional arguments: looks the name up, makes a pack of `count` omitted arguments and lets
// `fill(AutomationArgs&)` give those that it wants. E_OUTOFMEMORY when there is no pack. `result` may be null.
HRESULT AutomationCallLongMethod(IDispatch* disp, std::wstring_view name, VARIANT* result, UINT count,
                                 const std::function<void(AutomationArgs&)>& fill);

// What a result counts as: an object only as a non-null VT_DISPATCH, a text only as a non-null VT_BSTR, a number only
// as VT_I4. `TakeObject` moves the reference out of the result.
Microsoft::WRL::ComPtr<IDispatch> TakeObject(VARIANT& result);
std::optional<std::wstring> TextOf(const VARIANT& result);
std::optional<LONG> NumberOf(const VARIANT& result);

// Property reads by these rules: null or nothing when the read fails or the result is of another type.
Microsoft::WRL::ComPtr<IDispatch> GetObjectProperty(IDispatch* disp, std::wstring_view name);
std::optional<std::wstring> GetTextProperty(IDispatch* disp, std::wstring_view name);
std::optional<LONG> GetNumberProperty(IDispatch* disp, std::wstring_view name);

// Whether the object has a property of that name that can be read; its value is dropped.
bool HasReadableProperty(IDispatch* disp, std::wstring_view name);

// Invokes a member whose number is known. `result` may be null.
HRESULT InvokeMember(IDispatch* disp, DISPID dispid, WORD flags, DISPPARAMS& params, VARIANT* result);
