// The bridge's client.
#include "standins/bridge/Bridge.h"

#include <winsock2.h>
#include <windows.h>

#include "standins/common/Text.h"

namespace {

class Connection {
public:
    explicit Connection(unsigned short port) {
        WSADATA data;
        started_ = WSAStartup(MAKEWORD(2, 2), &data) == 0;
        socket_ = socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(port);
        connected_ = connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() {
        if (socket_ != INVALID_SOCKET) closesocket(socket_);
        if (started_) WSACleanup();
    }

    bool Connected() const { return connected_; }

    bool Send(const std::string& text) {
        size_t sent = 0;
        while (sent < text.size()) {
            const int n = send(socket_, text.data() + sent, static_cast<int>(text.size() - sent), 0);
            if (n <= 0) return false;
            sent += static_cast<size_t>(n);
        }
        return true;
    }

    std::string ReceiveAll() {
        std::string text;
        char chunk[1024];
        for (;;) {
            const int n = recv(socket_, chunk, sizeof chunk, 0);
            if (n <= 0) return text;
            text.append(chunk, static_cast<size_t>(n));
        }
    }

private:
    bool started_ = false;
    bool connected_ = false;
    SOCKET socket_ = INVALID_SOCKET;
};

}  // namespace

BridgeAnswer AskBridge(const BridgeRequest& request) {
    const auto port = static_cast<unsigned short>(wcstoul(Environment(L"ZAVO_BRIDGE_PORT").c_str(), nullptr, 10));
    if (port == 0) return {false, L"ZAVO_BRIDGE_PORT is not set: start this program through the scripts"};
    std::string text = "token\t" + Utf8(Environment(L"ZAVO_BRIDGE_TOKEN")) + "\n";
    for (const auto& [name, value] : request) text += name + "\t" + Utf8(value) + "\n";
    Connection connection(port);
    if (!connection.Connected() || !connection.Send(text + "\n")) return {false, L"the bridge does not answer"};
    std::string answer = connection.ReceiveAll();
    while (!answer.empty() && answer.back() == '\n') answer.pop_back();
    const size_t tab = answer.find('\t');
    if (tab == std::string::npos) return {false, L"the bridge gave no answer"};
    return {answer.substr(0, tab) == "ok", Wide(answer.substr(tab + 1))};
}

std::wstring LinuxPath(const std::wstring& windowsPath) {
    using ToUnix = char*(CDECL*)(const WCHAR*);
    const HMODULE kernel = GetModuleHandleW(L"kernel32.dll");
    const auto toUnix =
        reinterpret_cast<ToUnix>(reinterpret_cast<void*>(GetProcAddress(kernel, "wine_get_unix_file_name")));
    if (!toUnix) return {};
    wchar_t full[32768];
    const DWORD length = GetFullPathNameW(windowsPath.c_str(), ARRAYSIZE(full), full, nullptr);
    if (length == 0 || length >= ARRAYSIZE(full)) return {};
    char* path = toUnix(full);
    if (!path) return {};
    std::wstring result = Wide(path);
    HeapFree(GetProcessHeap(), 0, path);
    return result;
}
