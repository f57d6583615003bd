// The list of a folder's mails: sender, time, subject and whether something is attached.
#pragma once

#include <windows.h>

#include <functional>
#include <vector>

#include "standins/office/OutlookModel.h"
#include "standins/office/window/Look.h"
#include "standins/office/window/Window.h"

class MailList final : public Window {
public:
    // `onFocus` is called with the place of the item that the user looks at. The folder has to outlive the list.
    MailList(HWND parent, const OutlookFolder& folder, const Look& look, std::function<void(size_t)> onFocus);

    static int WidthOf(const Fonts& fonts);

    // The places of the selected items, from 0, in the order of the list.
    std::vector<size_t> Selected() const;

    // The list box itself, for the mouse, and the place of an item in it, which is scrolled into view.
    HWND List() const { return list_; }
    RECT ShowItem(size_t place);

    void Refresh();  // draws everything again

private:
    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
    void DrawItem(const DRAWITEMSTRUCT& draw) const;

    const OutlookFolder& folder_;
    const Look& look_;
    const std::function<void(size_t)> onFocus_;
    HWND list_ = nullptr;
    GdiObject background_;
};
