// The twelve languages, and which one Windows shows.
#pragma once

#include <windows.h>

enum class UiLanguage : LONG {
    SimplifiedChinese = 0,
    English = 1,
    German = 2,
    French = 3,
    Italian = 4,
    Japanese = 5,
    Portuguese = 6,
    Spanish = 7,
    TraditionalChinese = 8,
    Russian = 9,
    Dutch = 10,
    Korean = 11,
};

// The language of the signed-in user's Windows interface. The host's own language setting is not asked.
UiLanguage DetectUiLanguage();

// English for a language that has no texts. Chinese is in traditional script for Taiwan only; Hong Kong, Macao and
// Singapore get the simplified texts.
UiLanguage UiLanguageOf(LANGID langId);
