// The main window of the host that the stand-in plays: title row, ribbon, and what the host shows below it.
#pragma once

#include <windows.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "standins/office/Hosts.h"
#include "standins/office/OutlookModel.h"
#include "standins/office/RibbonState.h"
#include "standins/office/window/Look.h"
#include "standins/office/window/MailList.h"
#include "standins/office/window/PageView.h"
#include "standins/office/window/RibbonView.h"
#include "standins/office/window/Window.h"

class HostWindow final : public Window {
public:
    // The window is visible at once. `title` is what it shows, as "report.docx"; empty for none.
    HostWindow(const OfficeHost& host, const std::wstring& title);

    // What stands below the ribbon: the first page of a document, or a folder's mails with the one in focus beside
    // them.
    void ShowDocument(const std::wstring& path);
    void ShowMails(const OutlookFolder& folder);

    // Draws that ribbon, and uses it, from now on until it is taken back with null.
    void ShowRibbon(RibbonState* state);

    // The add-in asked for the ribbon to be drawn afresh. May be called on any thread; the window then asks for
    // everything again.
    void Invalidate() const;
    // How often that was done.
    int Refreshes() const { return refreshes_; }

    // The result of the last use of a control with the mouse, once; nothing if there was none.
    std::optional<HRESULT> TakeResult();

    const Look& GetLook() const { return look_; }
    const Ribbon& GetRibbon() const { return state_->GetRibbon(); }  // while one is shown
    RibbonView& GetRibbonView() const { return *ribbon_; }
    MailList* Mails() const { return mails_.get(); }  // null but for Outlook

private:
    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam) override;
    void Paint() const;
    void Place();
    void Refresh();
    void Use(const RibbonElement& element);
    void ReleaseCaptionButton(POINT at);
    int CaptionButtonAt(POINT at) const;
    RECT CaptionButton(int button) const;

    static constexpr int noButton = -1;

    Look look_;
    const std::wstring title_;
    RibbonState* state_ = nullptr;
    std::unique_ptr<RibbonView> ribbon_;
    std::unique_ptr<MailList> mails_;
    std::unique_ptr<PageView> page_;
    int refreshes_ = 0;
    int pressedButton_ = noButton;  // of the title row
    std::optional<HRESULT> result_;
};

// A ribbon that is drawn and used in a window for the length of a scope.
class ShownRibbon {
public:
    ShownRibbon(HostWindow& window, RibbonState& state) : window_(window) { window_.ShowRibbon(&state); }
    ShownRibbon(const ShownRibbon&) = delete;
    ShownRibbon& operator=(const ShownRibbon&) = delete;
    ~ShownRibbon() { window_.ShowRibbon(nullptr); }

private:
    HostWindow& window_;
};
