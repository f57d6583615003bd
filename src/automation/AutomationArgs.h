// The argument pack of a long method call, and the builders of the values that go into it.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <memory>

#include "src/base/Handles.h"

// The positional arguments of one call. Every slot starts as an omitted argument (VT_ERROR, DISP_E_PARAMNOTFOUND).
// On release only slots that hold a text are cleared: whoever puts a counted reference into a slot releases it.
struct AutomationArgs {
    VARIANT* slots = nullptr;  // in the order of Invoke: the last argument first
    DISPPARAMS params = {};

    // Argument `position` of the method, counted from 1; its slot is cArgs - position.
    VARIANT& Argument(UINT position) { return slots[params.cArgs - position]; }
};

void ReleaseAutomationArgs(AutomationArgs* pack);

struct AutomationArgsReleaser {
    void operator()(AutomationArgs* pack) const { ReleaseAutomationArgs(pack); }
};
using AutomationArgsHandle = std::unique_ptr<AutomationArgs, AutomationArgsReleaser>;

// An empty handle when the allocation fails.
AutomationArgsHandle MakeAutomationArgs(UINT count);

VARIANT MakeVariantInt(LONG value);
VARIANT MakeVariantBool(VARIANT_BOOL value);     // the value as it is: which one stands for true is the caller's affair
VARIANT MakeVariantString(const wchar_t* text);  // a new BSTR; the caller clears it
VARIANT TextArgument(const Bstr& text);          // borrows the text

void InitVariant(VARIANT* v);
void ClearVariant(VARIANT* v);
