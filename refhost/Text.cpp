// UTF-8, UTF-16 and BSTR conversions of the reference host's texts.
#include "refhost/Text.h"

namespace parcelon::refhost {

BSTR ToBstr(std::u16string_view text) {
  static_assert(sizeof(OLECHAR) == sizeof(char16_t));
  return SysAllocStringLen(reinterpret_cast<const OLECHAR*>(text.data()),
                           static_cast<UINT>(text.size()));
}

Text FromBstr(BSTR text) {
  if (!text) return {};
  return Text(reinterpret_cast<const char16_t*>(text), SysStringLen(text));
}

bool Utf8ToText(std::string_view utf8, Text& out) {
  out.clear();
  out.reserve(utf8.size());
  size_t i = 0;
  while (i < utf8.size()) {
    const unsigned char lead = static_cast<unsigned char>(utf8[i]);
    char32_t code;
    size_t length;
    char32_t minimum;
    if (lead < 0x80) {
      out.push_back(lead);
      ++i;
      continue;
    } else if ((lead & 0xE0) == 0xC0) {
      code = lead & 0x1F, length = 2, minimum = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
      code = lead & 0x0F, length = 3, minimum = 0x800;
    } else if ((lead & 0xF8) == 0xF0) {
      code = lead & 0x07, length = 4, minimum = 0x10000;
    } else {
      return false;
    }
    if (utf8.size() - i < length) return false;
    for (size_t k = 1; k < length; ++k) {
      const unsigned char next = static_cast<unsigned char>(utf8[i + k]);
      if ((next & 0xC0) != 0x80) return false;
      code = (code << 6) | (next & 0x3F);
    }
    if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return false;
    if (code >= 0x10000) {
      code -= 0x10000;
      out.push_back(static_cast<char16_t>(0xD800 + (code >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + (code & 0x3FF)));
    } else {
      out.push_back(static_cast<char16_t>(code));
    }
    i += length;
  }
  return true;
}

std::string TextToUtf8(std::u16string_view text) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    char32_t code = text[i];
    if (code >= 0xD800 && code <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
        text[i + 1] <= 0xDFFF) {
      code = 0x10000 + ((code - 0xD800) << 10) + (text[i + 1] - 0xDC00);
      ++i;
    } else if (code >= 0xD800 && code <= 0xDFFF) {
      code = 0xFFFD;
    }
    if (code < 0x80) {
      out.push_back(static_cast<char>(code));
    } else if (code < 0x800) {
      out.push_back(static_cast<char>(0xC0 | (code >> 6)));
      out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    } else if (code < 0x10000) {
      out.push_back(static_cast<char>(0xE0 | (code >> 12)));
      out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    } else {
      out.push_back(static_cast<char>(0xF0 | (code >> 18)));
      out.push_back(static_cast<char>(0x80 | ((code >> 12) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    }
  }
  return out;
}

Text AsciiText(std::string_view ascii) { return Text(ascii.begin(), ascii.end()); }

}  // namespace parcelon::refhost
