// Message boxes through the host's message box service; where the host has none, a plain
// message box on Windows and a line on standard error elsewhere.
#pragma once

#include "platform/ComBase.h"

namespace parcelon {

// Shows `text` titled `caption` with the OK button and returns when it is closed. `style` holds
// icon flags (host::kMessageBoxIconStop or 0); `ownedByMainWindow` makes the host's main window
// (window class "TamberFrame") the owner, where it exists.
void ShowMessageBox(const char* text, const char* caption, LONG style, bool ownedByMainWindow);

}  // namespace parcelon
