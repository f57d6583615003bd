// Pages, which LibreOffice renders through the bridge.
#include "standins/office/window/PageView.h"

#include <stdexcept>

#include "standins/bridge/Bridge.h"
#include "standins/common/Text.h"

namespace {

constexpr int pageMargin = 18;  // at 96 dots per inch

// The path of a file that does not stay, in the user's folder for such files.
class TemporaryPicture {
public:
    TemporaryPicture() {
        wchar_t folder[MAX_PATH];
        wchar_t file[MAX_PATH];
        if (GetTempPathW(ARRAYSIZE(folder), folder) == 0 || GetTempFileNameW(folder, L"pag", 0, file) == 0) {
            throw std::runtime_error("there is no folder for temporary files");
        }
        placeholder_ = file;
    }
    TemporaryPicture(const TemporaryPicture&) = delete;
    TemporaryPicture& operator=(const TemporaryPicture&) = delete;
    ~TemporaryPicture() {
        DeleteFileW(Path().c_str());
        DeleteFileW(placeholder_.c_str());
    }

    std::wstring Path() const { return placeholder_ + L".png"; }

private:
    std::wstring placeholder_;  // keeps the name
};

}  // namespace

PageView::PageView(HWND parent, const Look& look) : look_(look) {
    Create(L"ZavoStandInPage", L"Page", WS_CHILD | WS_VISIBLE, 0, {}, parent);
}

void PageView::Show(const std::wstring& path, const std::wstring& reader) {
    path_ = path;
    reader_ = reader;
    isRendered_ = path.empty();
    page_ = {};
    problem_.clear();
    Redraw();
}

LRESULT PageView::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_ERASEBKGND: return TRUE;
        case WM_SIZE: Redraw(); return 0;
        case WM_PAINT: Paint(); return 0;
        default: return Window::Handle(message, wParam, lParam);
    }
}

void PageView::Paint() {
    if (!isRendered_) Render();
    const Painting painting(Get());
    const HDC dc = painting.Get();
    FillArea(dc, painting.Area(), look_.palette.workspace);
    const int margin = look_.fonts.Scaled(pageMargin);
    if (!problem_.empty())
        DrawLine(dc, {problem_, {margin, margin}}, TextStyle::Plain, look_.palette.text, look_.fonts);
    if (!page_.bitmap.Get()) return;
    const int left = std::max<int>(margin, (painting.Area().right - page_.size.cx) / 2);
    FrameArea(dc, {left - 1, margin - 1, left + page_.size.cx + 1, margin + page_.size.cy + 1}, look_.palette.line);
    const MemoryDc memory;
    const Selected bitmap(memory.Get(), page_.bitmap.Get());
    BitBlt(dc, left, margin, page_.size.cx, page_.size.cy, memory.Get(), 0, 0, SRCCOPY);
}

void PageView::Render() {
    isRendered_ = true;
    const TemporaryPicture picture;
    const int dpi = MulDiv(static_cast<int>(look_.fonts.Dpi()), look_.host.zoom, 100);
    BridgeRequest request = {{"command", L"picture"},
                             {"source", LinuxPath(path_)},
                             {"target", LinuxPath(picture.Path())},
                             {"dpi", std::to_wstring(dpi)}};
    if (!reader_.empty()) request.push_back({"reader", reader_});
    const BridgeAnswer answer = AskBridge(request);
    if (answer.ok) {
        page_ = LoadImageFile(picture.Path());
    } else {
        problem_ = answer.text;
    }
}
