// Conversion between UTF-16 and the ANSI code page (Windows-1252 off Windows; the thread's ANSI
// code page on Windows), with WideCharToMultiByte's behaviour for characters the page lacks.
#pragma once

#include <cstddef>
#include <string>

#include "platform/ComBase.h"

namespace parcelon {

// Appends the ANSI form of `length` UTF-16 units to `out`. A character the code page lacks is
// written as its best-fit equivalent where one is known, else as '?'; each half of a surrogate
// pair gives one '?', so the result has one byte per UTF-16 unit. Returns false only when memory
// runs out.
bool WideToAnsi(const OLECHAR* text, size_t length, std::string& out);

// Converts `count` ANSI bytes into a new BSTR; zero bytes give a null BSTR. Returns E_INVALIDARG
// when the result would not fit a BSTR's signed length, E_OUTOFMEMORY when allocation fails.
HRESULT AnsiToBstr(const char* bytes, size_t count, BSTR* out);

}  // namespace parcelon
