// OLAString: the empty string, trimming and blanks, CDATA wrapping, replacement, comparison and
// the 32766-character bound on every way text comes in.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "clienttools/OLAString.h"
#include "platform/Bstr.h"

namespace {

constexpr int kMax = OLAString::kMaxChars;

std::string Text(const OLAString& s) { return std::string(s.GetText(), size_t(s.GetLength())); }

TEST(OLAString, UnassignedReadsAsEmpty) {
  const OLAString unassigned;
  ASSERT_NE(unassigned.GetText(), nullptr);
  EXPECT_STREQ(unassigned.GetText(), "");
  EXPECT_EQ(unassigned.GetLength(), 0);
  EXPECT_TRUE(unassigned.IsEmpty());
  EXPECT_TRUE(unassigned.IsBlank());
  EXPECT_TRUE(unassigned.Equals(""));
  EXPECT_TRUE(unassigned.Equals(nullptr));
  EXPECT_TRUE(unassigned == OLAString(""));
  EXPECT_TRUE(OLAString("") == unassigned);
  EXPECT_TRUE(unassigned.EqualsNoCase(""));
  EXPECT_FALSE(unassigned.Equals("x"));
  EXPECT_NE(OLAString().GetBuffer(0), nullptr);
}

// Only the space character is trimmed; blank text is made of spaces, tabs and line ends only.
TEST(OLAString, TrimAndIsBlank) {
  const struct { const char* text; const char* left; const char* right; bool blank; } cases[] = {
      {"\tx", "\tx", "\tx", false}, {"x\t", "x\t", "x\t", false}, {"  x  ", "x  ", "  x", false},
      {"   ", "", "", true}, {"", "", "", true}, {"x", "x", "x", false},
      {" \n ", "\n ", " \n", true}, {" \n\r\t", "\n\r\t", " \n\r\t", true},
      {"\t\t", "\t\t", "\t\t", true}, {"\v", "\v", "\v", false}, {"\f", "\f", "\f", false},
      {"_", "_", "_", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string("\"") + c.text + "\"");
    OLAString left(c.text), right(c.text);
    left.TrimLeft();
    right.TrimRight();
    EXPECT_EQ(Text(left), c.left);
    EXPECT_EQ(Text(right), c.right);
    EXPECT_EQ(OLAString(c.text).IsBlank(), c.blank);
  }
}

TEST(OLAString, WrapInCDataOnceAndUnwrap) {
  OLAString s("a<b");
  EXPECT_FALSE(s.IsCData());
  ASSERT_TRUE(s.WrapInCData());
  EXPECT_EQ(Text(s), "<![CDATA[a<b]]>");
  EXPECT_TRUE(s.IsCData());
  ASSERT_TRUE(s.WrapInCData());
  EXPECT_EQ(Text(s), "<![CDATA[a<b]]>");
  ASSERT_TRUE(s.UnwrapCData());
  EXPECT_EQ(Text(s), "a<b");
  EXPECT_FALSE(s.IsCData());

  // Text that arrives wrapped is not wrapped again, and is marked.
  OLAString arrived("<![CDATA[x]]>");
  ASSERT_TRUE(arrived.WrapInCData());
  EXPECT_EQ(Text(arrived), "<![CDATA[x]]>");
  EXPECT_TRUE(arrived.IsCData());

  OLAString empty;
  ASSERT_TRUE(empty.WrapInCData());
  EXPECT_EQ(Text(empty), "<![CDATA[]]>");
  ASSERT_TRUE(empty.UnwrapCData());
  EXPECT_EQ(Text(empty), "");

  OLAString plain("plain]]>");
  ASSERT_TRUE(plain.UnwrapCData());
  EXPECT_EQ(Text(plain), "plain]]>");
}

// Wrapping text near the bound shortens the text, never the closing marker: a section without
// its end would swallow the rest of the document.
TEST(OLAString, WrapInCDataNearTheBoundKeepsTheClosingMarker) {
  const struct { size_t length; bool fits; } cases[] = {
      {size_t(kMax) - 12, true}, {size_t(kMax) - 11, false}, {size_t(kMax), false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.length);
    OLAString s(std::string(c.length, 'x').c_str());
    EXPECT_EQ(s.WrapInCData(), c.fits);
    EXPECT_TRUE(s.IsCData());
    const std::string text = Text(s);
    EXPECT_EQ(text.size(), std::min(c.length + 12, size_t(kMax)));
    EXPECT_EQ(text.substr(0, 10), "<![CDATA[x");
    EXPECT_EQ(text.substr(text.size() - 4), "x]]>");
  }
}

TEST(OLAString, ReplaceAllDoesNotRescan) {
  const struct {
    const char* text;
    const char* from;
    const char* to;
    const char* result;
  } cases[] = {
      {"aaaa", "aa", "a", "aa"}, {"aaa", "a", "aa", "aaaaaa"}, {"abcabc", "b", "xyz", "axyzcaxyzc"},
      {"a&b&", "&", "&amp;", "a&amp;b&amp;"}, {"abc", "d", "x", "abc"}, {"abc", "", "x", "abc"},
      {"abc", "abc", "", ""}, {"", "a", "b", ""}, {"abab", "ab", "ba", "baba"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.text) + ": " + c.from + " -> " + c.to);
    OLAString s(c.text);
    EXPECT_TRUE(s.ReplaceAll(c.from, c.to));
    EXPECT_EQ(Text(s), c.result);
  }
}

TEST(OLAString, ReplaceAllKeepsTheCDataMarkAndTheFirstCharactersBeyondTheBound) {
  OLAString s("a'b");
  s.WrapInCData();
  ASSERT_TRUE(s.ReplaceAll("'", "&apos;"));
  EXPECT_TRUE(s.IsCData());
  EXPECT_EQ(Text(s), "<![CDATA[a&apos;b]]>");
  OLAString huge(std::string(20000, 'a').c_str());
  EXPECT_FALSE(huge.ReplaceAll("a", "ab"));
  EXPECT_EQ(huge.GetLength(), kMax);
  EXPECT_EQ(Text(huge).substr(0, 6), "ababab");
}

// Text set as characters or as a BSTR is held to the bound: the first 32766 characters stay
// and the operation reports false.
TEST(OLAString, SetTextAndSetFromBstrAtTheBound) {
  const struct { size_t length; bool fits; } cases[] = {
      {size_t(kMax) - 1, true}, {size_t(kMax), true}, {size_t(kMax) + 1, false},
      {40000, false}, {1000000, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.length);
    std::string text;
    Bstr wide(nullptr, UINT(c.length));
    for (size_t i = 0; i < c.length; ++i) {
      text.push_back(char('a' + i % 26));
      wide.Get()[i] = OLECHAR(text.back());
    }
    const size_t kept = std::min(c.length, size_t(kMax));
    OLAString fromText, fromBstr("previous");
    EXPECT_EQ(fromText.SetText(text.c_str()), c.fits);
    EXPECT_EQ(fromBstr.SetFromBSTR(wide.Get()), c.fits);
    for (const OLAString* s : {&fromText, &fromBstr}) {
      EXPECT_EQ(size_t(s->GetLength()), kept);
      EXPECT_EQ(Text(*s), text.substr(0, kept));
      EXPECT_EQ(s->GetText()[kept], '\0');
    }
  }
  OLAString s("previous");
  EXPECT_TRUE(s.SetFromBSTR(nullptr));
  EXPECT_TRUE(s.IsEmpty());
  // Characters beyond U+FFFF take one '?' per UTF-16 unit, so the bound counts units.
  Bstr pairs(nullptr, 40000);
  for (UINT i = 0; i < 40000; i += 2) {
    pairs.Get()[i] = OLECHAR(0xD83D);
    pairs.Get()[i + 1] = OLECHAR(0xDE00);
  }
  EXPECT_FALSE(s.SetFromBSTR(pairs.Get()));
  EXPECT_EQ(Text(s), std::string(size_t(kMax), '?'));
}

TEST(OLAString, AppendAtTheBound) {
  OLAString s(std::string(size_t(kMax) - 10, 'x').c_str());
  EXPECT_FALSE(s.Append("0123456789ABCDEF"));
  EXPECT_EQ(s.GetLength(), kMax);
  EXPECT_EQ(Text(s).substr(size_t(kMax) - 12), "xx0123456789");
  // A full string takes nothing more.
  EXPECT_FALSE(s.Append("y"));
  EXPECT_FALSE(s.AppendChar('y'));
  EXPECT_EQ(s.GetLength(), kMax);
  EXPECT_EQ(Text(s).back(), '9');
  // Nothing to append is no failure.
  EXPECT_TRUE(s.Append(""));
  EXPECT_TRUE(s.Append(nullptr));
  EXPECT_TRUE(s.AppendChar('\0'));

  OLAString exact(std::string(size_t(kMax) - 3, 'x').c_str());
  EXPECT_TRUE(exact.Append("abc"));
  EXPECT_EQ(exact.GetLength(), kMax);
}

TEST(OLAString, AppendOfItself) {
  OLAString s("abc");
  ASSERT_TRUE(s.Append(s));
  EXPECT_EQ(Text(s), "abcabc");
  // Growing may move the block the source lies in.
  ASSERT_TRUE(s.Append(s.GetText() + 1));
  EXPECT_EQ(Text(s), "abcabcbcabc");
  ASSERT_TRUE(s.SetText(s.GetText() + 6));
  EXPECT_EQ(Text(s), "bcabc");
}

TEST(OLAString, ConcatenationCarriesTheCDataMark) {
  OLAString plain("x"), wrapped("y");
  wrapped.WrapInCData();
  const struct { const OLAString& a; const OLAString& b; const char* text; bool cdata; } cases[] = {
      {plain, plain, "xx", false}, {plain, wrapped, "x<![CDATA[y]]>", true},
      {wrapped, plain, "<![CDATA[y]]>x", true},
      {wrapped, wrapped, "<![CDATA[y]]><![CDATA[y]]>", true}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const OLAString joined = c.a + c.b;
    EXPECT_EQ(Text(joined), c.text);
    EXPECT_EQ(joined.IsCData(), c.cdata);
  }
  const OLAString half(std::string(20000, 'h').c_str());
  EXPECT_EQ((half + half).GetLength(), kMax);
}

TEST(OLAString, Comparisons) {
  const struct { const char* a; const char* b; bool equal; bool equalNoCase; } cases[] = {
      {"Invoice", "Invoice", true, true}, {"Invoice", "INVOICE", false, true},
      {"abc", "abd", false, false}, {"abc", "ab", false, false}, {"ab", "abc", false, false},
      {"", "", true, true}, {"", "x", false, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.a) + " / " + c.b);
    const OLAString a(c.a);
    EXPECT_EQ(a.Equals(c.b), c.equal);
    EXPECT_EQ(a.Equals(OLAString(c.b)), c.equal);
    EXPECT_EQ(a.NotEquals(c.b), !c.equal);
    EXPECT_EQ(a.EqualsNoCase(c.b), c.equalNoCase);
  }
  // Lengths are compared first, so text with a zero inside is not equal to its prefix.
  const OLAString withZero("ab\0c", 4);
  EXPECT_FALSE(withZero.Equals(OLAString("ab")));
}

TEST(OLAString, CopyKeepsMarkAndMaxLength) {
  OLAString wrapped("abcdef");
  wrapped.WrapInCData();
  wrapped.SetMaxLength(5);
  EXPECT_FALSE(wrapped.IsValid());
  OLAString copy(wrapped);
  OLAString assigned;
  assigned = wrapped;
  for (const OLAString* s : {&copy, &assigned}) {
    EXPECT_EQ(Text(*s), Text(wrapped));
    EXPECT_TRUE(s->IsCData());
    EXPECT_EQ(s->GetMaxLength(), 5);
  }
}

TEST(OLAString, TruncateAndMaxLength) {
  OLAString s("abcdef");
  s.Truncate(-1);
  EXPECT_EQ(Text(s), "abcdef");
  s.Truncate(int16_t(s.GetCapacity()));
  EXPECT_EQ(Text(s), "abcdef");
  s.Truncate(4);
  EXPECT_EQ(Text(s), "abcd");
  s.SetMaxLength(2);
  EXPECT_FALSE(s.IsValid());
  s.TruncateToMaxLength();
  EXPECT_EQ(Text(s), "ab");
  EXPECT_TRUE(s.IsValid());
}

TEST(OLAString, SetFromDouble) {
  const struct { double value; const char* text; } cases[] = {
      {0.1, "0.1"}, {2.5, "2.5"}, {-3, "-3"}, {1e20, "1e+20"}, {1.0 / 3, "0.333333333333333"},
      {123456789012345678.0, "1.23456789012346e+17"}, {0, "0"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    OLAString s;
    ASSERT_TRUE(s.SetFromDouble(c.value));
    EXPECT_EQ(Text(s), c.text);
  }
}

}  // namespace
