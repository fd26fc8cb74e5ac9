// Texts of the reference host: UTF-16 strings, their BSTR copies and their UTF-8 forms.
#pragma once

#include <string>
#include <string_view>

#include "platform/ComBase.h"

namespace parcelon::refhost {

// Every text of the company is kept as UTF-16, so that handing one out is a single copy.
using Text = std::u16string;

// A new BSTR holding `text` (an empty text gives an empty, non-null BSTR); null when memory runs
// out.
BSTR ToBstr(std::u16string_view text);
// The text of a BSTR; a null BSTR reads as empty.
Text FromBstr(BSTR text);

// Converts UTF-8 to UTF-16; false for ill-formed UTF-8 (overlong forms, surrogates, beyond
// U+10FFFF, cut sequences).
bool Utf8ToText(std::string_view utf8, Text& out);
// Converts UTF-16 to UTF-8; an unpaired surrogate becomes U+FFFD.
std::string TextToUtf8(std::u16string_view text);

// Text of an ASCII literal, for the fixed texts of the host.
Text AsciiText(std::string_view ascii);

}  // namespace parcelon::refhost
