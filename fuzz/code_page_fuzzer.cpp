// The code-page conversions: UTF-16 to the ANSI code page keeps one byte per UTF-16 unit, ANSI to
// a BSTR keeps one unit per byte, the bulk conversion agrees with converting byte by byte, and
// ANSI text survives the way to UTF-16 and back unchanged.
#include <cstdint>
#include <string>

#include "FuzzSupport.h"
#include "platform/Bstr.h"
#include "platform/CodePage.h"

using parcelon::fuzz::Finding;

namespace {

Bstr ToBstr(const char* bytes, size_t count) {
  BSTR out = nullptr;
  const HRESULT hr = parcelon::AnsiToBstr(bytes, count, &out);
  if (FAILED(hr)) Finding("AnsiToBstr fails with " + std::to_string(hr) + " for " + std::to_string(count) + " bytes");
  return Bstr::Attach(out);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto* bytes = reinterpret_cast<const char*>(data);

  // ANSI to UTF-16: one unit per byte, each the conversion of its byte alone.
  const Bstr wide = ToBstr(bytes, size);
  if (size == 0 && wide.Get()) Finding("no bytes give a BSTR");
  if (wide.Length() != size) Finding(std::to_string(size) + " bytes give " + std::to_string(wide.Length()) + " units");
  for (size_t i = 0; i < size; ++i) {
    const Bstr one = ToBstr(bytes + i, 1);
    if (one.Length() != 1 || one.Get()[0] != wide.Get()[i])
      Finding("byte " + std::to_string(i) + " converts otherwise in bulk than alone");
  }

  // And back: the ANSI text is unchanged.
  std::string back;
  if (!parcelon::WideToAnsi(wide.Get(), wide.Length(), back)) Finding("WideToAnsi fails");
  if (back != std::string(bytes, size)) Finding("ANSI text does not survive the way to UTF-16 and back");

  // UTF-16 to ANSI: the input read as UTF-16 units gives one byte per unit, and its ANSI form is
  // already ANSI (converting it to UTF-16 and back changes nothing).
  std::u16string units(size / 2, u'\0');
  for (size_t i = 0; i < units.size(); ++i) units[i] = char16_t(data[2 * i] | data[2 * i + 1] << 8);
  std::string ansi;
  if (!parcelon::WideToAnsi(reinterpret_cast<const OLECHAR*>(units.data()), units.size(), ansi))
    Finding("WideToAnsi fails");
  if (ansi.size() != units.size())
    Finding(std::to_string(units.size()) + " units give " + std::to_string(ansi.size()) + " bytes");
  const Bstr again = ToBstr(ansi.data(), ansi.size());
  std::string twice;
  parcelon::WideToAnsi(again.Get(), again.Length(), twice);
  if (twice != ansi) Finding("the ANSI form of UTF-16 text changes on a second round");
  // A unit that the code page holds comes back as itself.
  for (size_t i = 0; i < units.size(); ++i)
    if (again.Get()[i] != units[i] && ansi[i] != '?' && static_cast<unsigned char>(units[i]) != 0 &&
        units[i] < 0x80)
      Finding("the ASCII unit " + std::to_string(unsigned(units[i])) + " does not come back");
  return 0;
}
