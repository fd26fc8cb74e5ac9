// GUID text: our parser and formatter, and CLSIDFromString/StringFromGUID2 (the system's on
// Windows), which must agree with them.
#include <gtest/gtest.h>

#include <string>

#include "platform/ComBase.h"

namespace {

const GUID kUploadOwner = {0x54901C71, 0x3408, 0x44FB, {0x90, 0x31, 0x7B, 0x4B, 0xB8, 0x1D, 0x87, 0x1C}};
const GUID kAllOnes = {0xFFFFFFFF, 0xFFFF, 0xFFFF, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}};
const GUID kDistinctBytes = {0x01234567, 0x89AB, 0xCDEF, {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF}};
const GUID kNull = {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};

std::basic_string<OLECHAR> Wide(const std::string& text) {
  return std::basic_string<OLECHAR>(text.begin(), text.end());
}

// Formats with ours and with StringFromGUID2, parses back with ours and with CLSIDFromString.
TEST(GuidText, FormatAndParseRoundTripAlikeWithTheSystem) {
  const struct { GUID guid; const char* text; } cases[] = {
      {kUploadOwner, "{54901C71-3408-44FB-9031-7B4BB81D871C}"},
      {kAllOnes, "{FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF}"},
      {kDistinctBytes, "{01234567-89AB-CDEF-0123-456789ABCDEF}"},
      {kNull, "{00000000-0000-0000-0000-000000000000}"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    char ours[39];
    parcelon::FormatGuid(c.guid, ours);
    EXPECT_STREQ(ours, c.text);
    OLECHAR system[39];
    ASSERT_EQ(StringFromGUID2(c.guid, system, 39), 39);
    EXPECT_EQ(std::basic_string<OLECHAR>(system), Wide(c.text));
    GUID parsed;
    ASSERT_TRUE(parcelon::ParseGuid(c.text, parsed));
    EXPECT_TRUE(IsEqualGUID(parsed, c.guid));
    CLSID fromSystem;
    ASSERT_EQ(CLSIDFromString(Wide(c.text).c_str(), &fromSystem), S_OK);
    EXPECT_TRUE(IsEqualGUID(fromSystem, c.guid));
  }
  OLECHAR text[39];
  EXPECT_EQ(StringFromGUID2(kUploadOwner, text, 38), 0);  // no room for the terminator
}

// Ours takes either case, with or without braces; CLSIDFromString the braced form only (other
// text would be a ProgID), and no text at all as the null class.
TEST(GuidText, ParseAcceptsEitherCaseWithOrWithoutBraces) {
  for (const char* text : {"{54901c71-3408-44fb-9031-7b4bb81d871c}", "54901C71-3408-44FB-9031-7B4BB81D871C",
                           "{54901C71-3408-44fb-9031-7B4BB81D871C}"}) {
    SCOPED_TRACE(text);
    GUID parsed;
    ASSERT_TRUE(parcelon::ParseGuid(text, parsed));
    EXPECT_TRUE(IsEqualGUID(parsed, kUploadOwner));
  }
  CLSID parsed = kUploadOwner;
  EXPECT_EQ(CLSIDFromString(Wide("54901C71-3408-44fb-9031-7B4BB81D871C").c_str(), &parsed),
            CO_E_CLASSSTRING);
  EXPECT_EQ(CLSIDFromString(nullptr, &parsed), S_OK);
  EXPECT_TRUE(IsEqualGUID(parsed, kNull));
}

TEST(GuidText, BothRefuseMalformedText) {
  GUID parsed;
  EXPECT_FALSE(parcelon::ParseGuid(nullptr, parsed));
  for (const char* text :
       {"", "{}", "{54901C71-3408-44fb-9031-7B4BB81D871C}x", "{54901C71-3408-44fb-9031-7B4BB81D871}",
        "{54901C71-3408-44fb-9031-7B4BB81D871C", "54901C71-3408-44fb-9031-7B4BB81D871C}",
        "{54901C7g-3408-44fb-9031-7B4BB81D871C}", "{54901C71340844fb90317B4BB81D871C}",
        "{54901C71-3408-44fb-9031_7B4BB81D871C}", "{54901C71-3408-44fb-9031-7B4BB81D871C0}",
        "{ 54901C71-3408-44fb-9031-7B4BB81D871C}", "{+4901C71-3408-44fb-9031-7B4BB81D871C}"}) {
    SCOPED_TRACE(text);
    EXPECT_FALSE(parcelon::ParseGuid(text, parsed));
    EXPECT_EQ(CLSIDFromString(Wide(text).c_str(), &parsed), CO_E_CLASSSTRING);
  }
}

}  // namespace
