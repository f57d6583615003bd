// What the commands know of the add-in: which host it runs in, that host's application, the options, the PDFs made so
// far. Owned by the add-in object.
#pragma once

#include <windows.h>
#include <oaidl.h>
#include <wrl/client.h>

#include <map>
#include <string>

#include "src/base/ExportSettings.h"

enum Host : LONG {
    HostUnknown = -1,
    HostWord = 0,
    HostExcel = 1,
    HostPowerPoint = 2,
    HostOutlook = 3,
};

struct AddinState {
    ExportSettings settings;
    Host host = HostUnknown;
    Microsoft::WRL::ComPtr<IDispatch> application;         // the host's, from connection to disconnection
    std::map<std::wstring, std::wstring> conversionCache;  // mail key to PDF path
};
