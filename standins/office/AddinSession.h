// One add-in in one host: found in the registry, loaded through COM, connected, its ribbon read and its callbacks
// called, in the order and with the arguments of Office.
#pragma once

#include <windows.h>
#include <oaidl.h>
#include <wrl/client.h>

#include <string>
#include <vector>

#include "src/addin/OfficeInterfaces.h"
#include "standins/office/Ribbon.h"

// The ProgIDs of the add-ins that the host loads at start-up, from the registry. `host` is Word, Excel, PowerPoint or
// Outlook.
std::vector<std::wstring> FindStartupAddins(const std::wstring& host);

// What Office would keep of a callback.
struct CallbackResult {
    HRESULT result = S_OK;
    bool pressed = false;  // of a getPressed callback
};

class AddinSession {
public:
    // Loads and connects; throws std::runtime_error with the reason when the add-in refuses.
    AddinSession(const std::wstring& progId, IDispatch* application, const std::wstring& ribbonId);
    AddinSession(const AddinSession&) = delete;
    AddinSession& operator=(const AddinSession&) = delete;
    ~AddinSession();  // disconnects

    const std::wstring& Markup() const { return markup_; }
    const Ribbon& GetRibbon() const { return ribbon_; }

    // How often the add-in asked for the ribbon to be drawn afresh.
    LONG Invalidations() const { return invalidations_; }

    CallbackResult Click(const RibbonElement& button);
    CallbackResult GetPressed(const RibbonElement& checkBox);
    CallbackResult SetPressed(const RibbonElement& checkBox, bool pressed);
    CallbackResult LoadImage(const RibbonElement& element);

private:
    explicit AddinSession(const std::wstring& progId);  // loads only
    void Connect(IDispatch* application, const std::wstring& ribbonId);
    CallbackResult Call(const std::wstring& callback, VARIANT* arguments, UINT count);

    Microsoft::WRL::ComPtr<_IDTExtensibility2> addin_;
    Microsoft::WRL::ComPtr<IDispatch> callbacks_;
    std::wstring markup_;
    Ribbon ribbon_;
    LONG invalidations_ = 0;
};
