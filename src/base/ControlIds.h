// The ribbon's identifiers, letter for letter as the markup names them and as the host hands them back.
#pragma once

// Word, Excel, PowerPoint.
inline constexpr wchar_t BUTTON_ID_CREATE[] = L"BUTTON_ID_CREATE";
inline constexpr wchar_t BUTTON_ID_CREATE_AND_SHARE[] = L"BUTTON_ID_CREATE_AND_SHARE";
inline constexpr wchar_t CheckBox_ID_OpenAfterExport[] = L"CheckBox_ID_OpenAfterExport";
inline constexpr wchar_t CheckBox_ID_PDFA[] = L"CheckBox_ID_PDFA";
inline constexpr wchar_t CheckBox_ID_CreateBookmarks[] = L"CheckBox_ID_CreateBookmarks";
inline constexpr wchar_t CheckBox_ID_IncludeDocProps[] = L"CheckBox_ID_IncludeDocProps";

// Outlook.
inline constexpr wchar_t Menu_ID_Open[] = L"Menu_ID_Open";
inline constexpr wchar_t Menu_ID_Create[] = L"Menu_ID_Create";
inline constexpr wchar_t Button_ID_OpenFromMail[] = L"Button_ID_OpenFromMail";
inline constexpr wchar_t Button_ID_OpenFromFolder[] = L"Button_ID_OpenFromFolder";
inline constexpr wchar_t Button_ID_CreateByMail[] = L"Button_ID_CreateByMail";
inline constexpr wchar_t Button_ID_CreateByFolder[] = L"Button_ID_CreateByFolder";
inline constexpr wchar_t Button_ID_CreateMergeByFolder[] = L"Button_ID_CreateMergeByFolder";
inline constexpr wchar_t Button_ID_CreatePortfolioByMail[] = L"Button_ID_CreatePortfolioByMail";

// The callbacks, as the markup names them.
inline constexpr wchar_t OnRibbonLoadedName[] = L"OnRibbonLoaded";
inline constexpr wchar_t OnButtonClickName[] = L"OnButtonClick";
inline constexpr wchar_t OnLoadImageName[] = L"OnLoadImage";
inline constexpr wchar_t GetCheckBoxStateName[] = L"GetCheckBoxState";
inline constexpr wchar_t OnCheckBoxChangedName[] = L"OnCheckBoxChanged";
