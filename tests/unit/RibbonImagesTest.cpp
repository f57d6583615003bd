// The image callback: which picture comes for which argument, pixel by pixel.
#include "src/ui/RibbonImages.h"

#include <gtest/gtest.h>
#include <olectl.h>

#include "src/base/Handles.h"
#include "src/base/Module.h"
#include "standins/common/Text.h"
#include "tests/support/ScriptedDispatch.h"
#include "tests/support/ThemeKeys.h"

namespace {

struct Pixels {
    int width = 0;
    int height = 0;
    std::vector<DWORD> argb;

    bool operator==(const Pixels&) const = default;
};

Pixels PixelsOf(HICON icon) {
    ICONINFO info = {};
    EXPECT_TRUE(GetIconInfo(icon, &info));
    BITMAP bitmap = {};
    GetObjectW(info.hbmColor, sizeof bitmap, &bitmap);
    Pixels pixels{static_cast<int>(bitmap.bmWidth), static_cast<int>(bitmap.bmHeight), {}};
    pixels.argb.resize(static_cast<size_t>(pixels.width) * static_cast<size_t>(pixels.height));
    BITMAPINFO format = {};
    format.bmiHeader = {sizeof(BITMAPINFOHEADER), pixels.width, -pixels.height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    const HDC screen = GetDC(nullptr);
    GetDIBits(screen, info.hbmColor, 0, static_cast<UINT>(pixels.height), pixels.argb.data(), &format, DIB_RGB_COLORS);
    ReleaseDC(nullptr, screen);
    DeleteObject(info.hbmColor);
    DeleteObject(info.hbmMask);
    return pixels;
}

HICON IconOf(const VARIANT& picture) {
    EXPECT_EQ(picture.vt, VT_DISPATCH);
    IPicture* face = nullptr;
    EXPECT_EQ(picture.pdispVal->QueryInterface(IID_IPicture, reinterpret_cast<void**>(&face)), S_OK);
    SHORT type = 0;
    EXPECT_EQ(face->get_Type(&type), S_OK);
    EXPECT_EQ(type, PICTYPE_ICON);
    OLE_HANDLE handle = 0;
    EXPECT_EQ(face->get_Handle(&handle), S_OK);
    face->Release();
    return reinterpret_cast<HICON>(static_cast<LONG_PTR>(static_cast<LONG>(handle)));
}

HICON ResourceIcon(LONG id, int size) {
    return static_cast<HICON>(LoadImageW(moduleState.handle, MAKEINTRESOURCEW(id), IMAGE_ICON, size, size, 0));
}

class RibbonImages : public testing::Test {
protected:
    RibbonImages() {
        moduleState.handle = GetModuleHandleW(nullptr);
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        ThemeKeys::SetOffice(L"16.0", 0);
    }

    HRESULT Load(VARIANT argument, VARIANT* result) {
        DISPPARAMS params = {&argument, nullptr, 1, 0};
        return OnLoadImage(addin_, &params, result);
    }
    HRESULT LoadControl(const wchar_t* id, VARIANT* result) {
        ScriptedControl control(id);
        const HRESULT loaded = Load(ObjectArgument(&control), result);
        EXPECT_EQ(control.References(), 1U);
        return loaded;
    }
    HRESULT LoadText(const std::wstring& id, VARIANT* result) {
        const Bstr text(id);
        VARIANT argument = {};
        argument.vt = VT_BSTR;
        argument.bstrVal = text.Get();
        return Load(argument, result);
    }

    const ThemeKeys keys_;
    AddinState addin_;
};

int SmallSize() {
    const std::wstring dpi = Environment(L"ZAVO_TEST_DPI");
    return dpi.empty() ? 16 : MulDiv(16, static_cast<int>(wcstol(dpi.c_str(), nullptr, 10)), 96);
}

struct ControlIcon {
    const wchar_t* id;
    LONG number;
    bool large;
};

constexpr ControlIcon controls[] = {
    {L"BUTTON_ID_CREATE", 10, true},
    {L"BUTTON_ID_CREATE_AND_SHARE", 11, true},
    {L"Menu_ID_Open", 12, true},
    {L"Menu_ID_Create", 10, true},
    {L"Button_ID_OpenFromMail", 13, false},
    {L"Button_ID_OpenFromFolder", 14, false},
    {L"Button_ID_CreateByMail", 15, false},
    {L"Button_ID_CreateByFolder", 16, false},
    {L"Button_ID_CreateMergeByFolder", 17, false},
    {L"Button_ID_CreatePortfolioByMail", 18, true},
};

}  // namespace

TEST_F(RibbonImages, EveryControlGetsItsIconInEitherSet) {
    for (const DWORD theme : {0U, 4U}) {
        ThemeKeys::SetOffice(L"16.0", theme);
        for (const ControlIcon& control : controls) {
            OwnedVariant picture;
            ASSERT_EQ(LoadControl(control.id, &picture), S_OK) << Utf8(control.id);
            const int size = control.large ? GetSystemMetrics(SM_CXICON) : SmallSize();
            const Pixels pixels = PixelsOf(IconOf(picture));
            EXPECT_EQ(pixels.width, size);
            EXPECT_EQ(pixels, PixelsOf(ResourceIcon((theme ? 200 : 100) + control.number, size))) << Utf8(control.id);
        }
    }
}

TEST_F(RibbonImages, ImageIdsGiveSmallIcons) {
    const struct {
        const wchar_t* id;
        LONG resource;
    } rows[] = {{L"ICON_CREATE", 110}, {L"ICON_CREATE_AND_SHARE", 111}};
    for (const auto& row : rows) {
        OwnedVariant picture;
        ASSERT_EQ(LoadText(row.id, &picture), S_OK);
        EXPECT_EQ(PixelsOf(IconOf(picture)), PixelsOf(ResourceIcon(row.resource, SmallSize())));
    }
}

TEST_F(RibbonImages, ThemeIsReadAfreshAtEveryRequest) {
    OwnedVariant light;
    ASSERT_EQ(LoadControl(L"BUTTON_ID_CREATE", &light), S_OK);
    ThemeKeys::SetOffice(L"16.0", 1);
    OwnedVariant dark;
    ASSERT_EQ(LoadControl(L"BUTTON_ID_CREATE", &dark), S_OK);
    EXPECT_NE(PixelsOf(IconOf(light)), PixelsOf(IconOf(dark)));
}

TEST_F(RibbonImages, SmallIconIsScaledForTheHostsWindow) {
    const auto before = SetThreadDpiAwarenessContext(DPI_AWARENESS_CONTEXT_UNAWARE);
    const HWND unaware =
        CreateWindowW(L"STATIC", L"", WS_OVERLAPPEDWINDOW, 0, 0, 9, 9, nullptr, nullptr, nullptr, nullptr);
    SetThreadDpiAwarenessContext(before);
    ScriptedDispatch window;
    window.GiveNumber(L"hwnd", static_cast<LONG>(reinterpret_cast<LONG_PTR>(unaware)));
    ScriptedDispatch application;
    application.GiveObject(L"ActiveWindow", &window);
    addin_.application = &application;
    for (const Host host : {HostWord, HostExcel, HostPowerPoint, HostOutlook, HostUnknown}) {
        addin_.host = host;
        window.invocations.clear();
        OwnedVariant picture;
        ASSERT_EQ(LoadControl(L"Button_ID_OpenFromMail", &picture), S_OK);
        EXPECT_EQ(PixelsOf(IconOf(picture)).width, 16) << host;  // whatever the screen has
        EXPECT_EQ(window.Invoked(), std::vector<std::wstring>{L"hwnd"}) << host;
    }
    addin_.application.Reset();
    EXPECT_EQ(application.References(), 1U);
    EXPECT_EQ(window.References(), 1U);
    DestroyWindow(unaware);
}

TEST_F(RibbonImages, EverySmallRequestMakesAnIconAndLargeOnesShareOne) {
    OwnedVariant first, second;
    ASSERT_EQ(LoadControl(L"Button_ID_OpenFromMail", &first), S_OK);
    ASSERT_EQ(LoadControl(L"Button_ID_OpenFromMail", &second), S_OK);
    EXPECT_NE(IconOf(first), IconOf(second));
    OwnedVariant third, fourth;
    ASSERT_EQ(LoadControl(L"Menu_ID_Open", &third), S_OK);
    ASSERT_EQ(LoadControl(L"Menu_ID_Open", &fourth), S_OK);
    EXPECT_EQ(IconOf(third), IconOf(fourth));
}

TEST_F(RibbonImages, LargeIconAsksTheHostForNothing) {
    ScriptedDispatch application;
    addin_.application = &application;
    OwnedVariant picture;
    EXPECT_EQ(LoadControl(L"Menu_ID_Open", &picture), S_OK);
    EXPECT_TRUE(application.lookups.empty());
    addin_.application.Reset();
}

TEST_F(RibbonImages, IdOfTheWrongKindIsATypeMismatchAndLeavesTheResultAlone) {
    VARIANT result = {};
    result.vt = 0xBEEF;
    for (const wchar_t* id : {L"BUTTON_ID_CREATE", L"Menu_ID_Open", L"icon_create", L"", L"other"}) {
        EXPECT_EQ(LoadText(id, &result), DISP_E_TYPEMISMATCH) << Utf8(id);
    }
    for (const wchar_t* id :
         {L"ICON_CREATE", L"ICON_CREATE_AND_SHARE", L"CheckBox_ID_PDFA", L"button_id_create", L""}) {
        EXPECT_EQ(LoadControl(id, &result), DISP_E_TYPEMISMATCH) << Utf8(id);
    }
    EXPECT_EQ(result.vt, 0xBEEF);
}

TEST_F(RibbonImages, NullTextNullObjectAndUnreadableControlAreTypeMismatches) {
    VARIANT result = {};
    VARIANT argument = {};
    argument.vt = VT_BSTR;
    EXPECT_EQ(Load(argument, &result), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(Load(ObjectArgument(nullptr), &result), DISP_E_TYPEMISMATCH);
    ScriptedControl control(L"BUTTON_ID_CREATE");
    control.idResult = E_FAIL;
    EXPECT_EQ(Load(ObjectArgument(&control), &result), DISP_E_TYPEMISMATCH);
}

TEST_F(RibbonImages, IdOfSixtyThousandCharactersIsATypeMismatch) {
    VARIANT result = {};
    EXPECT_EQ(LoadText(std::wstring(60000, L'x'), &result), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(LoadControl(std::wstring(60000, L'x').c_str(), &result), DISP_E_TYPEMISMATCH);
}

TEST_F(RibbonImages, OtherKindsOfArgumentsAreNotFound) {
    VARIANT result = {};
    for (const int type : {VT_EMPTY, VT_NULL, VT_I4, VT_BOOL, VT_UNKNOWN, VT_ERROR}) {
        VARIANT argument = {};
        argument.vt = static_cast<VARTYPE>(type);
        EXPECT_EQ(Load(argument, &result), DISP_E_MEMBERNOTFOUND) << type;
    }
}

TEST_F(RibbonImages, MissingArgumentsAreInvalid) {
    VARIANT result = {};
    DISPPARAMS none = {};
    VARIANT argument = {};
    DISPPARAMS one = {&argument, nullptr, 1, 0};
    EXPECT_EQ(OnLoadImage(addin_, nullptr, &result), E_INVALIDARG);
    EXPECT_EQ(OnLoadImage(addin_, &none, &result), E_INVALIDARG);
    EXPECT_EQ(OnLoadImage(addin_, &one, nullptr), E_INVALIDARG);
}

TEST_F(RibbonImages, IconThatCannotBeLoadedIsNotFound) {
    moduleState.handle = GetModuleHandleW(L"kernel32.dll");  // which has no such icons
    VARIANT result = {};
    result.vt = 0xBEEF;
    EXPECT_EQ(LoadControl(L"BUTTON_ID_CREATE", &result), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(LoadControl(L"Button_ID_OpenFromMail", &result), DISP_E_MEMBERNOTFOUND);
    EXPECT_EQ(result.vt, 0xBEEF);
}

TEST_F(RibbonImages, PictureOutlivesTheRequestAndItsIconThePicture) {
    HICON icon = nullptr;
    {
        OwnedVariant picture;
        ASSERT_EQ(LoadControl(L"Button_ID_OpenFromMail", &picture), S_OK);
        icon = IconOf(picture);
    }
    EXPECT_EQ(PixelsOf(icon).width, SmallSize());
}
