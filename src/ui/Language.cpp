#include "src/ui/Language.h"

UiLanguage DetectUiLanguage() { return UiLanguageOf(GetUserDefaultUILanguage()); }

UiLanguage UiLanguageOf(LANGID langId) {
    constexpr unsigned primaryMask = 0x03FF;
    constexpr unsigned sublanguageMask = 0xFC00;
    constexpr unsigned taiwan = SUBLANG_CHINESE_TRADITIONAL << 10;
    switch (langId & primaryMask) {
        case LANG_CHINESE:
            return (langId & sublanguageMask) == taiwan ? UiLanguage::TraditionalChinese
                                                        : UiLanguage::SimplifiedChinese;
        case LANG_GERMAN: return UiLanguage::German;
        case LANG_SPANISH: return UiLanguage::Spanish;
        case LANG_FRENCH: return UiLanguage::French;
        case LANG_ITALIAN: return UiLanguage::Italian;
        case LANG_JAPANESE: return UiLanguage::Japanese;
        case LANG_KOREAN: return UiLanguage::Korean;
        case LANG_DUTCH: return UiLanguage::Dutch;
        case LANG_PORTUGUESE: return UiLanguage::Portuguese;
        case LANG_RUSSIAN: return UiLanguage::Russian;
        default: return UiLanguage::English;
    }
}
