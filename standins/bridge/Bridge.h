// Requests to the bridge, the helper through which the stand-ins reach LibreOffice and PDF tools. The environment
// variables ZAVO_BRIDGE_PORT and ZAVO_BRIDGE_TOKEN say where it is and let a request in. The requests and their values
// stand in bridge.py.
#pragma once

#include <string>
#include <utility>
#include <vector>

struct BridgeAnswer {
    bool ok = false;
    std::wstring text;  // the answer's value, or what went wrong
};

using BridgeRequest = std::vector<std::pair<std::string, std::wstring>>;

// Sends the request and waits for the answer.
BridgeAnswer AskBridge(const BridgeRequest& request);

// The Linux path of a Windows path; empty where there is none, as on Windows itself.
std::wstring LinuxPath(const std::wstring& windowsPath);
