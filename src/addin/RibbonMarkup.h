// The ribbon's markup.
#pragma once

#include <string>

#include "src/base/AddinState.h"

// The custom UI of the host, with its texts in the language of the Windows user interface. An unknown host gets the
// layout of Word, Excel and PowerPoint without the two check boxes that depend on the host. One line, no white space
// between elements.
std::wstring BuildRibbonMarkup(Host host);
