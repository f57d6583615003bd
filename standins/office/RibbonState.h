// What an add-in answered about the controls of its ribbon, and what happens when one is used.
#pragma once

#include <windows.h>
#include <ocidl.h>
#include <wrl/client.h>

#include <map>
#include <string>
#include <vector>

#include "standins/office/AddinSession.h"

class RibbonState {
public:
    // Asks for everything, as Office does before it draws a ribbon for the first time.
    explicit RibbonState(AddinSession& session);

    const Ribbon& GetRibbon() const { return session_.GetRibbon(); }

    // Asks for every picture and every tick again; throws std::runtime_error when the add-in refuses one.
    void Reload();

    HICON Picture(const RibbonElement& element) const;  // null where there is none; belongs to the add-in
    bool IsTicked(const RibbonElement& element) const;

    // Presses a button, or gives a check box its other state. Answers the callback's result.
    HRESULT Use(const RibbonElement& element);

private:
    void Reload(const std::vector<RibbonElement>& elements);

    AddinSession& session_;
    std::map<std::wstring, Microsoft::WRL::ComPtr<IPicture>> pictures_;
    std::map<std::wstring, bool> ticks_;
};
