// BSTR semantics, checked alike against the adapter and against the system's oleaut32 (Wine):
// byte prefix, terminators, embedded zeros, reallocation and the lengths that are refused.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "platform/Bstr.h"
#include "platform/ComBase.h"

namespace {

std::u16string Units(BSTR text) {
  return std::u16string(reinterpret_cast<const char16_t*>(text), SysStringLen(text));
}

uint32_t BytePrefix(BSTR text) {
  uint32_t bytes;
  std::memcpy(&bytes, reinterpret_cast<const char*>(text) - sizeof bytes, sizeof bytes);
  return bytes;
}

// A null BSTR reads as empty, but an empty one is a string of its own.
TEST(Bstr, NullReadsAsEmptyAndAnEmptyStringIsNotNull) {
  EXPECT_EQ(SysStringLen(nullptr), 0u);
  EXPECT_EQ(SysStringByteLen(nullptr), 0u);
  EXPECT_EQ(SysAllocString(nullptr), nullptr);
  SysFreeString(nullptr);
  Bstr owned;
  EXPECT_TRUE(owned.Empty());
  Bstr fromLiteral(OLESTR(""));
  Bstr fromLength(nullptr, 0);
  for (BSTR text : {fromLiteral.Get(), fromLength.Get()}) {
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(SysStringLen(text), 0u);
    EXPECT_EQ(BytePrefix(text), 0u);
    EXPECT_EQ(text[0], 0);
  }
}

TEST(Bstr, ByteCountPrecedesTheTextAndAZeroFollows) {
  Bstr text(OLESTR("Parcelon"));
  ASSERT_NE(text.Get(), nullptr);
  EXPECT_EQ(SysStringLen(text.Get()), 8u);
  EXPECT_EQ(SysStringByteLen(text.Get()), 16u);
  EXPECT_EQ(BytePrefix(text.Get()), 16u);
  EXPECT_EQ(text.Get()[8], 0);
  EXPECT_EQ(Units(text.Get()), u"Parcelon");
  // Allocated without text, then filled.
  Bstr filled(nullptr, 4);
  ASSERT_NE(filled.Get(), nullptr);
  EXPECT_EQ(SysStringLen(filled.Get()), 4u);
  EXPECT_EQ(filled.Get()[4], 0);
  for (int i = 0; i < 4; ++i) filled.Get()[i] = OLECHAR(u"wxyz"[i]);
  EXPECT_EQ(Units(filled.Get()), u"wxyz");
}

TEST(Bstr, OddByteLengthKeepsItsByteCount) {
  Bstr text = Bstr::Attach(SysAllocStringByteLen("abcde", 5));
  ASSERT_NE(text.Get(), nullptr);
  EXPECT_EQ(SysStringByteLen(text.Get()), 5u);
  EXPECT_EQ(SysStringLen(text.Get()), 2u);
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.Get());
  EXPECT_EQ(std::memcmp(bytes, "abcde", 5), 0);
  // A zero byte ends the odd count, and a whole zero character follows the last half one.
  EXPECT_EQ(bytes[5], 0);
  EXPECT_EQ(text.Get()[3], 0);
  // Without a source the string is zero-terminated too.
  Bstr unset = Bstr::Attach(SysAllocStringByteLen(nullptr, 6));
  ASSERT_NE(unset.Get(), nullptr);
  EXPECT_EQ(SysStringByteLen(unset.Get()), 6u);
  EXPECT_EQ(unset.Get()[3], 0);
}

TEST(Bstr, EmbeddedZerosAreKeptByLengthNotByZero) {
  const OLECHAR units[] = {'a', 0, 'b', 0, 'c'};
  Bstr counted(units, 5);
  EXPECT_EQ(SysStringLen(counted.Get()), 5u);
  EXPECT_EQ(Units(counted.Get()), std::u16string(u"a\0b\0c", 5));
  // A copy goes by the length too.
  Bstr copy(counted);
  EXPECT_EQ(Units(copy.Get()), std::u16string(u"a\0b\0c", 5));
  // Counting the zero-terminated way stops at the first zero.
  Bstr terminated(units);
  EXPECT_EQ(Units(terminated.Get()), u"a");
}

TEST(Bstr, ReAllocStringReplacesTheText) {
  BSTR text = SysAllocString(OLESTR("short"));
  ASSERT_TRUE(SysReAllocString(&text, OLESTR("a much longer text")));
  EXPECT_EQ(Units(text), u"a much longer text");
  ASSERT_TRUE(SysReAllocString(&text, OLESTR("ab")));
  EXPECT_EQ(Units(text), u"ab");
  EXPECT_EQ(text[2], 0);
  // Its own text is a valid source.
  ASSERT_TRUE(SysReAllocString(&text, text));
  EXPECT_EQ(Units(text), u"ab");
  // No text gives no string, as SysAllocString(nullptr) does; a null string takes new text.
  EXPECT_TRUE(SysReAllocString(&text, nullptr));
  EXPECT_EQ(text, nullptr);
  EXPECT_TRUE(SysReAllocString(&text, nullptr));
  EXPECT_EQ(text, nullptr);
  EXPECT_TRUE(SysReAllocString(&text, OLESTR("x")));
  EXPECT_EQ(Units(text), u"x");
  SysFreeString(text);
}

TEST(Bstr, ReAllocLenWithoutTextKeepsTheOldText) {
  BSTR text = SysAllocString(OLESTR("hello world"));
  ASSERT_TRUE(SysReAllocStringLen(&text, nullptr, 5));
  EXPECT_EQ(Units(text), u"hello");
  EXPECT_EQ(text[5], 0);
  ASSERT_TRUE(SysReAllocStringLen(&text, nullptr, 8));
  EXPECT_EQ(SysStringLen(text), 8u);
  EXPECT_EQ(Units(text).substr(0, 5), u"hello");
  EXPECT_EQ(text[8], 0);
  SysFreeString(text);
}

// Lengths whose byte count does not fit the signed 32-bit count are refused with a null string
// (and a failed reallocation leaves the old string as it was).
TEST(Bstr, LengthsBeyondTheSignedCountAreRefused) {
  for (UINT length : {0x3FFFFFFDu, 0x40000000u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(length);
    EXPECT_EQ(SysAllocStringLen(nullptr, length), nullptr);
  }
  for (UINT bytes : {0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFAu, 0xFFFFFFFFu}) {
    SCOPED_TRACE(bytes);
    EXPECT_EQ(SysAllocStringByteLen(nullptr, bytes), nullptr);
  }
  BSTR text = SysAllocString(OLESTR("kept"));
  EXPECT_FALSE(SysReAllocStringLen(&text, nullptr, 0x80000000u));
  EXPECT_EQ(Units(text), u"kept");
  SysFreeString(text);
}

}  // namespace
