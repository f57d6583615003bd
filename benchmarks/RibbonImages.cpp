// What one request for a ribbon picture costs, beside the two system calls that it cannot do without, in the same run.
#include <windows.h>
#include <olectl.h>

#include <algorithm>
#include <cstdio>
#include <vector>

#include "src/base/Handles.h"
#include "src/base/Module.h"
#include "src/ui/RibbonImages.h"

namespace {

constexpr int requests = 2000;
constexpr int rounds = 5;
constexpr int requestsARound = requests / rounds;

double Seconds() {
    LARGE_INTEGER now, frequency;
    QueryPerformanceCounter(&now);
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(now.QuadPart) / static_cast<double>(frequency.QuadPart);
}

void CheckResult(HRESULT result) {
    if (SUCCEEDED(result)) return;
    fprintf(stderr, "a request failed: 0x%08lX\n", static_cast<unsigned long>(result));
    ExitProcess(1);
}

// The image id is given as a text, so that no host is asked for anything.
void RequestThroughTheCallback(const AddinState& addin) {
    static const Bstr id(L"ICON_CREATE");
    VARIANT argument = {};
    argument.vt = VT_BSTR;
    argument.bstrVal = id.Get();
    DISPPARAMS params = {&argument, nullptr, 1, 0};
    OwnedVariant picture;
    CheckResult(OnLoadImage(addin, &params, &picture));
}

void RequestBare() {
    PICTDESC description = {};
    description.cbSizeofstruct = sizeof description;
    description.picType = PICTYPE_ICON;
    description.icon.hicon =
        static_cast<HICON>(LoadImageW(moduleState.handle, MAKEINTRESOURCEW(210), IMAGE_ICON, 16, 16, 0));
    OwnedVariant picture;
    picture.vt = VT_DISPATCH;
    CheckResult(
        OleCreatePictureIndirect(&description, IID_IPictureDisp, FALSE, reinterpret_cast<void**>(&picture.pdispVal)));
}

template <typename Request>
double MicrosecondsEach(Request&& request) {
    const double start = Seconds();
    for (int i = 0; i < requestsARound; ++i) request();
    return (Seconds() - start) * 1e6 / requestsARound;
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

}  // namespace

int main() {
    moduleState.handle = GetModuleHandleW(nullptr);
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const AddinState addin;
    std::vector<double> callback;
    std::vector<double> bare;
    RequestThroughTheCallback(addin);
    RequestBare();
    for (int round = 0; round < rounds; ++round) {
        callback.push_back(MicrosecondsEach([&] { RequestThroughTheCallback(addin); }));
        bare.push_back(MicrosecondsEach(RequestBare));
    }
    printf("ribbon picture, %d requests each, median of %d rounds\n", requests, rounds);
    printf("  through the callback              %8.1f us\n", Median(callback));
    printf("  bare LoadImageW and picture       %8.1f us\n", Median(bare));
    printf("  ratio                             %8.2f\n", Median(callback) / Median(bare));
}
