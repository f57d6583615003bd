// Ribbon images: which icon, which set, which size.
#include "src/ui/RibbonImages.h"

#include <olectl.h>

#include <algorithm>
#include <iterator>
#include <string_view>

#include "src/automation/AutomationCalls.h"
#include "src/automation/HostWindow.h"
#include "src/automation/RibbonControl.h"
#include "src/base/ControlIds.h"
#include "src/base/Module.h"
#include "src/ui/ScreenScale.h"
#include "src/ui/Theme.h"

namespace {

enum class Named { ByImageId, ByControl };
enum class Size { Small, Large };

struct RibbonImage {
    std::wstring_view id;
    LONG number;
    Named named;
    Size size;
};

constexpr RibbonImage images[] = {
    {L"ICON_CREATE", 10, Named::ByImageId, Size::Small},
    {L"ICON_CREATE_AND_SHARE", 11, Named::ByImageId, Size::Small},
    {BUTTON_ID_CREATE, 10, Named::ByControl, Size::Large},
    {BUTTON_ID_CREATE_AND_SHARE, 11, Named::ByControl, Size::Large},
    {Menu_ID_Open, 12, Named::ByControl, Size::Large},
    {Menu_ID_Create, 10, Named::ByControl, Size::Large},  // the picture of BUTTON_ID_CREATE, on purpose
    {Button_ID_OpenFromMail, 13, Named::ByControl, Size::Small},
    {Button_ID_OpenFromFolder, 14, Named::ByControl, Size::Small},
    {Button_ID_CreateByMail, 15, Named::ByControl, Size::Small},
    {Button_ID_CreateByFolder, 16, Named::ByControl, Size::Small},
    {Button_ID_CreateMergeByFolder, 17, Named::ByControl, Size::Small},
    {Button_ID_CreatePortfolioByMail, 18, Named::ByControl, Size::Large},
};

struct IconResource {
    LONG number;
    LONG light;
    LONG dark;
};

// Nothing asks for the numbers 0 to 9 any more and their icons are gone; their rows stay, in their own order.
constexpr IconResource iconResources[] = {
    {0, 100, 200},  {1, 103, 203},  {2, 102, 202},  {3, 104, 204},  {4, 101, 201},  {5, 105, 205},  {6, 108, 208},
    {7, 107, 207},  {8, 109, 209},  {9, 106, 206},  {10, 110, 210}, {11, 111, 211}, {12, 112, 212}, {13, 113, 213},
    {14, 114, 214}, {15, 115, 215}, {16, 116, 216}, {17, 117, 217}, {18, 118, 218},
};

constexpr LONG unknownIcon = 100;
constexpr int smallIconSize = 16;  // at 96 dots per inch

const RibbonImage* FindImage(std::wstring_view id, Named named) {
    const auto* found = std::find_if(std::begin(images), std::end(images),
                                     [&](const RibbonImage& image) { return image.named == named && image.id == id; });
    return found == std::end(images) ? nullptr : found;
}

// A large icon is shared and never destroyed. A small one is made anew at each call and left to the process, on
// purpose: the picture does not own it, and the host may keep the picture for as long as it likes.
HICON LoadIconOf(const RibbonImage& image, const AddinState& addin) {
    const LPCWSTR resource = MAKEINTRESOURCEW(ResolveIconResourceId(image.number));
    if (image.size == Size::Large) return LoadIconW(moduleState.handle, resource);
    const int size = ScaleForDpi(smallIconSize, GetActiveWindowHandle(addin.application.Get()));
    return static_cast<HICON>(LoadImageW(moduleState.handle, resource, IMAGE_ICON, size, size, 0));
}

// Whether the ribbon wants dark glyphs on a light ground. Office's theme decides; where it stores none the ribbon is
// taken for dark even when Windows is light.
bool IsRibbonLight() {
    constexpr ULONG lightThemes = 0x2D;  // 0, 2, 3 and 5
    const auto theme = static_cast<ULONG>(GetOfficeUiTheme());
    return theme <= 5 && ((lightThemes >> theme) & 1U);
}

}  // namespace

LONG ResolveIconResourceId(LONG imageNumber) {
    bool light = IsWindowsAppsLightTheme();
    if (imageNumber >= 10 && imageNumber <= 18) light = IsRibbonLight();
    const auto* found = std::find_if(std::begin(iconResources), std::end(iconResources),
                                     [&](const IconResource& icon) { return icon.number == imageNumber; });
    if (found == std::end(iconResources)) return unknownIcon;
    return light ? found->light : found->dark;
}

HRESULT OnLoadImage(const AddinState& addin, const DISPPARAMS* params, VARIANT* result) {
    if (!params || params->cArgs == 0 || !result) return E_INVALIDARG;
    const VARIANT& argument = params->rgvarg[0];
    const RibbonImage* image = nullptr;
    switch (argument.vt) {
        case VT_BSTR: image = FindImage(TextOf(argument).value_or(std::wstring()), Named::ByImageId); break;
        case VT_DISPATCH: image = FindImage(GetControlId(argument), Named::ByControl); break;
        default: return DISP_E_MEMBERNOTFOUND;
    }
    if (!image) return DISP_E_TYPEMISMATCH;

    const HICON icon = LoadIconOf(*image, addin);
    if (!icon) return DISP_E_MEMBERNOTFOUND;

    PICTDESC description = {};
    description.cbSizeofstruct = sizeof description;
    description.picType = PICTYPE_ICON;
    description.icon.hicon = icon;
    IDispatch* picture = nullptr;
    const HRESULT made =
        OleCreatePictureIndirect(&description, IID_IPictureDisp, FALSE, reinterpret_cast<void**>(&picture));
    if (FAILED(made)) return made;
    VariantInit(result);
    result->vt = VT_DISPATCH;
    result->pdispVal = picture;
    return S_OK;
}

static_assert(sizeof(PICTDESC) == 24);
