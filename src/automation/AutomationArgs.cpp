#include "src/automation/AutomationArgs.h"

#include <oleauto.h>

#include <new>

AutomationArgsHandle MakeAutomationArgs(UINT count) {
    AutomationArgsHandle pack(new (std::nothrow) AutomationArgs);
    if (!pack) return nullptr;
    if (count > 0) {
        pack->slots = new (std::nothrow) VARIANT[count];
        if (!pack->slots) return nullptr;
    }
    for (UINT i = 0; i < count; ++i) {
        VariantInit(&pack->slots[i]);
        pack->slots[i].vt = VT_ERROR;
        pack->slots[i].scode = DISP_E_PARAMNOTFOUND;
    }
    pack->params = {pack->slots, nullptr, count, 0};
    return pack;
}

void ReleaseAutomationArgs(AutomationArgs* pack) {
    if (!pack) return;
    for (UINT i = 0; i < pack->params.cArgs; ++i) {
        VARIANT& slot = pack->slots[i];
        if (slot.vt == VT_BSTR && slot.bstrVal) VariantClear(&slot);
    }
    delete[] pack->slots;
    delete pack;
}

VARIANT MakeVariantInt(LONG value) {
    VARIANT v;
    VariantInit(&v);
    v.vt = VT_I4;
    v.lVal = value;
    return v;
}

VARIANT MakeVariantBool(VARIANT_BOOL value) {
    VARIANT v;
    VariantInit(&v);
    v.vt = VT_BOOL;
    v.boolVal = value;
    return v;
}

VARIANT MakeVariantString(const wchar_t* text) {
    VARIANT v;
    VariantInit(&v);
    v.vt = VT_BSTR;
    v.bstrVal = SysAllocString(text);
    return v;
}

VARIANT TextArgument(const Bstr& text) {
    VARIANT argument;
    VariantInit(&argument);
    argument.vt = VT_BSTR;
    argument.bstrVal = text.Get();
    return argument;
}

void InitVariant(VARIANT* v) { VariantInit(v); }

void ClearVariant(VARIANT* v) { VariantClear(v); }
