// The first page of a document on a workspace.
#pragma once

#include <windows.h>

#include <string>

#include "standins/office/window/Images.h"
#include "standins/office/window/Look.h"
#include "standins/office/window/Window.h"

class PageView final : public Window {
public:
    PageView(HWND parent, const Look& look);

    // Shows the document of that path from the next drawing on; nothing for an empty path. `reader` is the name of
    // LibreOffice's filter for it where the file alone does not say.
    void Show(const std::wstring& path, const std::wstring& reader = {});

private:
    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
    void Paint();
    void Render();

    const Look& look_;
    std::wstring path_;
    std::wstring reader_;
    bool isRendered_ = true;
    Image page_ = {};
    std::wstring problem_;  // why there is no page
};
