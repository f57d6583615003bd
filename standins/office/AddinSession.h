// One add-in in one host: found in the registry, loaded through COM, connected, its ribbon read and its callbacks
// called, in the order and with the arguments of Office.
#pragma once

#include <windows.h>
#include <oaidl.h>
#include <ocidl.h>
#include <wrl/client.h>

#include <functional>
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
    bool pressed = false;                                // of a getPressed callback
    Microsoft::WRL::ComPtr<IPicture> picture = nullptr;  // of a getImage callback
};

class AddinSession {
public:
    // Loads and connects; throws std::runtime_error with the reason when the add-in refuses. `onInvalidate` is called
    // when the add-in asks for the ribbon to be drawn afresh, on whichever thread it does so.
    AddinSession(
        const std::wstring& progId, IDispatch* application, const std::wstring& ribbonId,
        std::function<void()> onInvalidate = [] {});
    AddinSession(const AddinSession&) = delete;
    AddinSession& operator=(const AddinSession&) = delete;
    ~AddinSession();  // disconnects

    const std::wstring& Markup() const { return markup_; }
    const Ribbon& GetRibbon() const { return ribbon_; }

    CallbackResult Click(const RibbonElement& button);
    CallbackResult GetPressed(const RibbonElement& checkBox);
    CallbackResult SetPressed(const RibbonElement& checkBox, bool pressed);
    CallbackResult LoadImage(const RibbonElement& element);

private:
    AddinSession(const std::wstring& progId, std::function<void()> onInvalidate);  // loads only
    void Connect(IDispatch* application, const std::wstring& ribbonId);
    CallbackResult CallFor(const RibbonElement& element, const std::wstring& callback);  // the control alone
    CallbackResult Call(const std::wstring& callback, VARIANT* arguments, UINT count);

    Microsoft::WRL::ComPtr<_IDTExtensibility2> addin_;
    Microsoft::WRL::ComPtr<IDispatch> callbacks_;
    std::wstring markup_;
    Ribbon ribbon_;
    std::function<void()> onInvalidate_;
};
