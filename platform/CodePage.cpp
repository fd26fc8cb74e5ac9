// Code-page conversion. Off Windows, the Windows-1252 table is taken once from iconv, and the
// conversions themselves are table-driven with an ASCII fast path; iconv's transliteration is
// asked only for characters outside the code page.
#include "platform/CodePage.h"

#include <climits>
#include <cstring>
#include <new>

#ifdef _WIN32

namespace parcelon {

bool WideToAnsi(const OLECHAR* text, size_t length, std::string& out) {
  if (length == 0) return true;
  if (length > size_t(INT_MAX)) return false;
  const int needed = WideCharToMultiByte(CP_THREAD_ACP, 0, reinterpret_cast<LPCWCH>(text),
                                         int(length), nullptr, 0, nullptr, nullptr);
  if (needed <= 0) return false;
  const size_t start = out.size();
  try {
    out.resize(start + size_t(needed));
  } catch (const std::bad_alloc&) {
    return false;
  }
  WideCharToMultiByte(CP_THREAD_ACP, 0, reinterpret_cast<LPCWCH>(text), int(length), &out[start],
                      needed, nullptr, nullptr);
  return true;
}

HRESULT AnsiToBstr(const char* bytes, size_t count, BSTR* out) {
  *out = nullptr;
  if (count == 0) return S_OK;
  if (count > size_t(INT_MAX)) return E_INVALIDARG;
  const int needed = MultiByteToWideChar(CP_THREAD_ACP, 0, bytes, int(count), nullptr, 0);
  if (needed <= 0) return E_OUTOFMEMORY;
  BSTR result = SysAllocStringLen(nullptr, UINT(needed));
  if (!result) return E_OUTOFMEMORY;
  if (MultiByteToWideChar(CP_THREAD_ACP, 0, bytes, int(count), result, needed) != needed) {
    SysFreeString(result);
    return E_OUTOFMEMORY;
  }
  *out = result;
  return S_OK;
}

}  // namespace parcelon

#else  // !_WIN32

#include <iconv.h>
#include <locale.h>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace parcelon {

namespace {

constexpr const char* kAnsiCodePage = "WINDOWS-1252";

struct Cp1252Table {
  char16_t toWide[256];
  Cp1252Table() {
    for (int b = 0; b < 256; ++b) toWide[b] = char16_t(b);
    iconv_t cd = iconv_open("UTF-16LE", kAnsiCodePage);
    if (cd == iconv_t(-1)) return;
    // Bytes the code page leaves undefined keep their own value, as MultiByteToWideChar does.
    for (int b = 0x80; b < 256; ++b) {
      char in = char(b);
      unsigned char outBytes[4];
      char* inPtr = &in;
      char* outPtr = reinterpret_cast<char*>(outBytes);
      size_t inLeft = 1, outLeft = sizeof outBytes;
      if (iconv(cd, &inPtr, &inLeft, &outPtr, &outLeft) != size_t(-1) && outLeft == 2)
        toWide[b] = char16_t(outBytes[0] | outBytes[1] << 8);
      iconv(cd, nullptr, nullptr, nullptr, nullptr);
    }
    iconv_close(cd);
  }
};

const Cp1252Table& Table() {
  static const Cp1252Table table;
  return table;
}

// iconv transliterates by the calling thread's LC_CTYPE locale. The "C" locale knows few
// replacements (no base letter for accented Latin letters); "C.UTF-8" comes much closer to the
// best-fit table of WideCharToMultiByte (U+0100 -> 'A', U+0141 -> 'L', U+0107 -> 'c'). The
// locale is switched for the calling thread only, around each conversion.
locale_t TransliterationLocale() {
  // Null when the locale is not installed; the thread's own locale is used then.
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", locale_t(nullptr));
  return locale;
}

// One transliterating converter per thread (an iconv descriptor is not thread-safe).
class Transliterator {
 public:
  Transliterator() : cd_(iconv_open((std::string(kAnsiCodePage) + "//TRANSLIT").c_str(), "UTF-16LE")) {}
  ~Transliterator() {
    if (cd_ != iconv_t(-1)) iconv_close(cd_);
  }
  // Best-fit byte for one UTF-16 unit outside the page, '?' when there is none.
  char BestFit(char16_t unit) {
    if (cd_ == iconv_t(-1)) return '?';
    unsigned char in[2] = {uint8_t(unit), uint8_t(unit >> 8)};
    char outBytes[8];
    char* inPtr = reinterpret_cast<char*>(in);
    char* outPtr = outBytes;
    size_t inLeft = sizeof in, outLeft = sizeof outBytes;
    const locale_t locale = TransliterationLocale();
    const locale_t previous = locale ? uselocale(locale) : locale_t(nullptr);
    const size_t rc = iconv(cd_, &inPtr, &inLeft, &outPtr, &outLeft);
    iconv(cd_, nullptr, nullptr, nullptr, nullptr);
    if (previous) uselocale(previous);
    // Only a one-byte replacement keeps the one-byte-per-character shape of the page.
    if (rc == size_t(-1) || sizeof outBytes - outLeft != 1) return '?';
    return outBytes[0];
  }

 private:
  iconv_t cd_;
};

char NarrowOne(char16_t c) {
  if (c < 0x80) return char(c);
  const Cp1252Table& table = Table();
  if (c <= 0xFF && table.toWide[c] == c) return char(c);
  for (int b = 0x80; b < 0xA0; ++b)
    if (table.toWide[b] == c) return char(b);
  // Each half of a surrogate pair becomes its own '?', as WideCharToMultiByte writes a
  // character beyond U+FFFF for a single-byte code page.
  if (c >= 0xD800 && c <= 0xDFFF) return '?';
  thread_local Transliterator transliterator;
  return transliterator.BestFit(c);
}

}  // namespace

bool WideToAnsi(const OLECHAR* text, size_t length, std::string& out) {
  if (length == 0) return true;
  const size_t start = out.size();
  try {
    out.resize(start + length);
  } catch (const std::bad_alloc&) {
    return false;
  }
  char* dst = &out[start];
  for (size_t i = 0; i < length; ++i) dst[i] = NarrowOne(text[i]);
  return true;
}

// From this size on, the text outgrows even a large last-level cache and is written with
// streaming stores; below it, ordinary stores leave the text in the cache for the caller's next
// read of it, which measured faster for documents of a few to tens of megabytes.
constexpr size_t kStreamingBytes = size_t(64) << 20;

HRESULT AnsiToBstr(const char* bytes, size_t count, BSTR* out) {
  *out = nullptr;
  if (count == 0) return S_OK;
  if (count > size_t(INT32_MAX) / sizeof(OLECHAR) - 4) return E_INVALIDARG;
  BSTR result = SysAllocStringLen(nullptr, UINT(count));
  if (!result) return E_OUTOFMEMORY;
  const auto* src = reinterpret_cast<const unsigned char*>(bytes);
  char16_t* dst = result;
  size_t i = 0;
  const char16_t* table = Table().toWide;
#if defined(__SSE2__)
  // Sixteen ASCII bytes at a time: widening with zero is the whole conversion. A large document
  // is written with streaming stores, which do not first read the destination into the cache.
  const bool streaming = count >= kStreamingBytes;
  if (streaming)
    for (; i < count && (reinterpret_cast<uintptr_t>(dst + i) & 15) != 0; ++i) dst[i] = table[src[i]];
  const __m128i zero = _mm_setzero_si128();
  for (; i + 16 <= count; i += 16) {
    const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i*>(src + i));
    if (_mm_movemask_epi8(chunk) != 0) {
      for (size_t j = i; j < i + 16; ++j) dst[j] = table[src[j]];
      continue;
    }
    auto* to = reinterpret_cast<__m128i*>(dst + i);
    if (streaming) {
      _mm_stream_si128(to, _mm_unpacklo_epi8(chunk, zero));
      _mm_stream_si128(to + 1, _mm_unpackhi_epi8(chunk, zero));
    } else {
      _mm_storeu_si128(to, _mm_unpacklo_epi8(chunk, zero));
      _mm_storeu_si128(to + 1, _mm_unpackhi_epi8(chunk, zero));
    }
  }
  if (streaming) _mm_sfence();
#endif
  for (; i < count; ++i) dst[i] = table[src[i]];
  *out = result;
  return S_OK;
}

}  // namespace parcelon

#endif  // _WIN32
