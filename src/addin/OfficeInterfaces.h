// Office's published extensibility interfaces, as far as this add-in implements or calls them. Source: the type
// libraries "Microsoft Add-In Designer" (MSADDNDR) and "Microsoft Office Object Library" (MSO), documented on
// learn.microsoft.com under IDTExtensibility2, IRibbonExtensibility and IRibbonUI.
#pragma once

#include <windows.h>
#include <oaidl.h>

inline constexpr IID IID_IDTExtensibility2 = {
    0xB65AD801, 0xABAF, 0x11D0, {0xBB, 0x8B, 0x00, 0xA0, 0xC9, 0x0F, 0x27, 0x44}};
inline constexpr IID IID_IRibbonExtensibility = {
    0x000C0396, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
inline constexpr IID IID_IRibbonUI = {0x000C03A7, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

enum ext_ConnectMode : int {
    ext_cm_AfterStartup = 0,
    ext_cm_Startup = 1,
    ext_cm_External = 2,
    ext_cm_CommandLine = 3,
};

enum ext_DisconnectMode : int {
    ext_dm_HostShutdown = 0,
    ext_dm_UserClosed = 1,
};

struct _IDTExtensibility2 : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE OnConnection(IDispatch* application, ext_ConnectMode mode, IDispatch* addin,
                                                   SAFEARRAY** custom) = 0;
    virtual HRESULT STDMETHODCALLTYPE OnDisconnection(ext_DisconnectMode mode, SAFEARRAY** custom) = 0;
    virtual HRESULT STDMETHODCALLTYPE OnAddInsUpdate(SAFEARRAY** custom) = 0;
    virtual HRESULT STDMETHODCALLTYPE OnStartupComplete(SAFEARRAY** custom) = 0;
    virtual HRESULT STDMETHODCALLTYPE OnBeginShutdown(SAFEARRAY** custom) = 0;
};

struct IRibbonExtensibility : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE GetCustomUI(BSTR ribbonId, BSTR* markup) = 0;
};

struct IRibbonUI : IDispatch {
    virtual HRESULT STDMETHODCALLTYPE Invalidate() = 0;
    virtual HRESULT STDMETHODCALLTYPE InvalidateControl(BSTR controlId) = 0;
};
