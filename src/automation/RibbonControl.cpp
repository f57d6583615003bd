#include "src/automation/RibbonControl.h"

#include "src/automation/AutomationCalls.h"
#include "src/base/Handles.h"

std::wstring GetControlId(const VARIANT& argument) {
    constexpr DISPID idOfId = 1;  // IRibbonControl::Id
    if (argument.vt != VT_DISPATCH || !argument.pdispVal) return {};
    DISPPARAMS params = {};
    OwnedVariant result;
    if (FAILED(InvokeMember(argument.pdispVal, idOfId, DISPATCH_PROPERTYGET, params, &result))) return {};
    return TextOf(result).value_or(std::wstring());
}
