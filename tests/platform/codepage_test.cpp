// The ANSI code page (Windows-1252): our table on Linux, MultiByteToWideChar and
// WideCharToMultiByte on Windows, held to the same expectations.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <string>
#include <tuple>

#include "platform/Bstr.h"
#include "platform/CodePage.h"

namespace {

using parcelon::AnsiToBstr;
using parcelon::WideToAnsi;

std::string Hex(const std::string& bytes) {
  std::string out;
  for (unsigned char c : bytes) {
    char two[4];
    std::snprintf(two, sizeof two, "%02X ", c);
    out += two;
  }
  return out;
}

std::string Narrow(const std::u16string& text) {
  std::string out;
  EXPECT_TRUE(WideToAnsi(reinterpret_cast<const OLECHAR*>(text.data()), text.size(), out));
  return out;
}

std::u16string Widen(const std::string& bytes) {
  BSTR wide = nullptr;
  EXPECT_EQ(AnsiToBstr(bytes.data(), bytes.size(), &wide), S_OK);
  Bstr owned = Bstr::Attach(wide);
  return std::u16string(reinterpret_cast<const char16_t*>(wide), SysStringLen(wide));
}

// On Windows the conversions follow the thread's ANSI code page: the tests need Windows-1252,
// so they ask for an English (United States) thread locale when the thread has another one.
class CodePage : public ::testing::Test {
 protected:
  void SetUp() override {
#ifdef _WIN32
    previous_ = GetThreadLocale();
    if (ThreadCodePage() != 1252) SetThreadLocale(MAKELCID(MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US), SORT_DEFAULT));
    if (ThreadCodePage() != 1252)
      GTEST_SKIP() << "the thread's ANSI code page is " << ThreadCodePage()
                   << ", not 1252, even with an English (United States) thread locale";
#endif
  }
#ifdef _WIN32
  void TearDown() override { SetThreadLocale(previous_); }

  static UINT ThreadCodePage() {
    CPINFOEXW info;
    return GetCPInfoExW(CP_THREAD_ACP, 0, &info) ? info.CodePage : 0;
  }

  LCID previous_ = 0;
#endif
};

TEST_F(CodePage, EveryByteRoundTrips) {
  std::string all;
  for (int b = 0; b < 256; ++b) all.push_back(char(b));
  const std::u16string wide = Widen(all);
  ASSERT_EQ(wide.size(), 256u);
  for (int b = 0; b < 0x80; ++b) EXPECT_EQ(wide[size_t(b)], char16_t(b)) << b;
  for (int b = 0xA0; b < 0x100; ++b) EXPECT_EQ(wide[size_t(b)], char16_t(b)) << b;
  EXPECT_EQ(Hex(Narrow(wide)), Hex(all));
}

// The range 0x80-0x9F, both ways. The five bytes the code page leaves undefined keep their
// own value as a C1 control character.
TEST_F(CodePage, SpecialsBothWays) {
  const char16_t specials[32] = {
      0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,  // 80-87
      0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,  // 88-8F
      0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,  // 90-97
      0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,  // 98-9F
  };
  for (int i = 0; i < 32; ++i) {
    const std::string byte(1, char(0x80 + i));
    SCOPED_TRACE(Hex(byte));
    EXPECT_EQ(Widen(byte), std::u16string(1, specials[i]));
    EXPECT_EQ(Hex(Narrow(std::u16string(1, specials[i]))), Hex(byte));
  }
}

// Characters outside the page: a one-byte best fit where the system has one, else '?'. Each
// half of a surrogate pair is a '?' of its own, so the text keeps one byte per UTF-16 unit.
TEST_F(CodePage, CharactersOutsideThePage) {
  const struct { std::u16string text; std::string bytes; } cases[] = {
      {u"\u4E2D", "?"}, {u"\U0001F600", "??"}, {std::u16string{0xD83D, u'A'}, "?A"},
      {std::u16string{0xDE00}, "?"},
      {u"\u0100", "A"},  // Latin A with macron
      {u"\u0107", "c"},  // Latin c with acute
      {u"\u0141", "L"},  // Latin L with stroke
      {u"\u0131", "i"},  // dotless i
      {u"\u0127", "h"},  // h with stroke
      {u"\uFF21", "A"},  // fullwidth A
      {u"\u3000", " "},  // ideographic space
      {u"\u0410", "?"},  // Cyrillic A
      {u"\u01C4", "?"},  // DZ with caron: no one-byte fit
      {u"\uFB01", "?"},  // fi ligature: no one-byte fit
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(Hex(std::string(reinterpret_cast<const char*>(c.text.data()), 2 * c.text.size())));
    EXPECT_EQ(Narrow(c.text), c.bytes);
  }
}

TEST_F(CodePage, MixedTextKeepsItsShape) {
  const std::u16string text = u"Caf\u00E9 \u20AC5 \u2019\u4E2D\U0001F600!";
  EXPECT_EQ(Hex(Narrow(text)), Hex("Caf\xE9 \x80" "5 \x92?" "??" "!"));
  EXPECT_EQ(Widen("Caf\xE9 \x80" "5 \x92!"), u"Caf\u00E9 \u20AC5 \u2019!");
}

// Texts that are not multiples of the sixteen-byte blocks, with high bytes at the edges.
TEST_F(CodePage, BlockEdges) {
  for (size_t length : {1u, 15u, 16u, 17u, 31u, 33u, 100u}) {
    SCOPED_TRACE(length);
    std::string bytes(length, 'x');
    std::u16string expected(length, u'x');
    for (const auto& [at, byte, unit] : {std::tuple{size_t(0), '\x80', u'\u20AC'},
                                         std::tuple{size_t(16), '\xE9', u'\u00E9'},
                                         std::tuple{length - 1, '\x92', u'\u2019'}}) {
      if (at >= length) continue;
      bytes[at] = byte;
      expected[at] = unit;
    }
    const std::u16string wide = Widen(bytes);
    EXPECT_EQ(wide, expected);
    EXPECT_EQ(Hex(Narrow(wide)), Hex(bytes));
  }
}

// WideToAnsi appends to what the output holds; no bytes give a null BSTR; a count whose text
// would not fit a BSTR is refused before any byte is read.
TEST_F(CodePage, Edges) {
  std::string out = "kept:";
  const std::u16string text = u"\u20AC1";
  ASSERT_TRUE(WideToAnsi(reinterpret_cast<const OLECHAR*>(text.data()), text.size(), out));
  EXPECT_EQ(out, "kept:\x80" "1");
  ASSERT_TRUE(WideToAnsi(reinterpret_cast<const OLECHAR*>(text.data()), 0, out));
  EXPECT_EQ(out, "kept:\x80" "1");

  const Bstr previous(OLESTR("replaced"));
  BSTR wide = previous.Get();
  EXPECT_EQ(AnsiToBstr("abc", 0, &wide), S_OK);
  EXPECT_EQ(wide, nullptr);
  const char one = 'x';
  EXPECT_EQ(AnsiToBstr(&one, size_t(INT_MAX) + 1, &wide), E_INVALIDARG);
  EXPECT_EQ(wide, nullptr);
}

// A document beyond 64 MiB is converted with streaming stores from an aligned start; whatever the
// alignment and wherever the non-ASCII bytes fall, it must read as the same text converted in
// pieces small enough for ordinary stores.
TEST(CodePageLarge, LargeTextReadsAsItsSmallPiecesDo) {
  std::string text(64 * 1024 * 1024 + 37, 'a');
  for (size_t i = 0; i < text.size(); ++i) text[i] = char(0x20 + (i * 7) % 95);
  for (size_t i = 5; i < text.size(); i += 4099) text[i] = char(0x80 + i % 128);  // in some blocks only
  for (size_t offset : {size_t(0), size_t(1), size_t(3)}) {
    BSTR whole = nullptr;
    ASSERT_EQ(S_OK, parcelon::AnsiToBstr(text.data() + offset, text.size() - offset, &whole));
    const Bstr owned = Bstr::Attach(whole);
    ASSERT_EQ(owned.Length(), text.size() - offset);
    constexpr size_t kPiece = 1000 * 1000 + 1;
    for (size_t at = offset; at < text.size(); at += kPiece) {
      const size_t piece = std::min<size_t>(kPiece, text.size() - at);
      BSTR small = nullptr;
      ASSERT_EQ(S_OK, parcelon::AnsiToBstr(text.data() + at, piece, &small));
      const Bstr smallOwned = Bstr::Attach(small);
      ASSERT_EQ(0, std::char_traits<OLECHAR>::compare(owned.Get() + (at - offset), smallOwned.Get(), piece))
          << "at " << at << " offset " << offset;
    }
  }
}

}  // namespace
