// The table of commands.
#pragma once

#include <string_view>

#include "src/base/AddinState.h"

// Runs the command of a button, synchronously; an identifier without a command does nothing.
void RunCommand(AddinState& addin, std::wstring_view controlId);
