// The state of a ribbon's controls.
#include "standins/office/RibbonState.h"

#include "standins/common/Results.h"

RibbonState::RibbonState(AddinSession& session) : session_(session) { Reload(); }

void RibbonState::Reload() { Reload(GetRibbon().tabs); }

void RibbonState::Reload(const std::vector<RibbonElement>& elements) {
    for (const RibbonElement& element : elements) {
        if (!element.getPressed.empty()) {
            const CallbackResult state = session_.GetPressed(element);
            Expect(state.result, element.id);
            ticks_[element.id] = state.pressed;
        }
        if (!element.getImage.empty()) {
            const CallbackResult image = session_.LoadImage(element);
            Expect(image.result, L"the picture of " + element.id);
            pictures_[element.id] = image.picture;
        }
        Reload(element.children);
    }
}

HICON RibbonState::Picture(const RibbonElement& element) const {
    const auto found = pictures_.find(element.id);
    OLE_HANDLE handle = 0;
    if (found == pictures_.end() || !found->second || FAILED(found->second->get_Handle(&handle))) return nullptr;
    return reinterpret_cast<HICON>(static_cast<LONG_PTR>(static_cast<LONG>(handle)));  // handles are 32 bits wide
}

bool RibbonState::IsTicked(const RibbonElement& element) const {
    const auto found = ticks_.find(element.id);
    return found != ticks_.end() && found->second;
}

HRESULT RibbonState::Use(const RibbonElement& element) {
    if (element.kind != L"checkBox") return session_.Click(element).result;
    const bool ticked = !IsTicked(element);
    const HRESULT result = session_.SetPressed(element, ticked).result;
    if (SUCCEEDED(result)) ticks_[element.id] = ticked;  // Office does not ask again
    return result;
}
