// GUID text: our parser and formatter, and CLSIDFromString/StringFromGUID2 (the system's on
// Windows), which must agree with them.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "platform/ComBase.h"

namespace {

const GUID kUploadOwner = {0x54901C71, 0x3408, 0x44FB, {0x90, 0x31, 0x7B, 0x4B, 0xB8, 0x1D, 0x87, 0x1C}};
const GUID kAllOnes = {0xFFFFFFFF, 0xFFFF, 0xFFFF, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}};
const GUID kDistinctBytes = {0x01234567, 0x89AB, 0xCDEF, {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF}};
const GUID kNull = {0, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};

std::string Narrow(const OLECHAR* text) {
  std::string out;
  for (; *text; ++text) out.push_back(char(*text));
  return out;
}

std::basic_string<OLECHAR> Wide(const std::string& text) {
  return std::basic_string<OLECHAR>(text.begin(), text.end());
}

std::string Format(const GUID& guid) {
  char text[39];
  parcelon::FormatGuid(guid, text);
  return text;
}

TEST(GuidText, FormatMatchesStringFromGuid2) {
  for (const GUID& guid : {kUploadOwner, kAllOnes, kDistinctBytes, kNull}) {
    const std::string ours = Format(guid);
    SCOPED_TRACE(ours);
    EXPECT_EQ(ours.size(), 38u);
    OLECHAR system[39];
    ASSERT_EQ(StringFromGUID2(guid, system, 39), 39);
    EXPECT_EQ(Narrow(system), ours);
  }
  EXPECT_EQ(Format(kDistinctBytes), "{01234567-89AB-CDEF-0123-456789ABCDEF}");
}

TEST(GuidText, StringFromGuid2NeedsRoomForTheTerminator) {
  OLECHAR text[39];
  EXPECT_EQ(StringFromGUID2(kUploadOwner, text, 38), 0);
  EXPECT_EQ(StringFromGUID2(kUploadOwner, text, 39), 39);
}

TEST(GuidText, RoundTrip) {
  for (const GUID& guid : {kUploadOwner, kAllOnes, kDistinctBytes, kNull}) {
    const std::string text = Format(guid);
    SCOPED_TRACE(text);
    GUID parsed;
    ASSERT_TRUE(parcelon::ParseGuid(text.c_str(), parsed));
    EXPECT_TRUE(IsEqualGUID(parsed, guid));
    CLSID fromSystem;
    ASSERT_EQ(CLSIDFromString(Wide(text).c_str(), &fromSystem), S_OK);
    EXPECT_TRUE(IsEqualGUID(fromSystem, guid));
  }
}

TEST(GuidText, ParseAcceptsEitherCaseWithOrWithoutBraces) {
  for (const char* text : {"{54901c71-3408-44fb-9031-7b4bb81d871c}", "54901C71-3408-44FB-9031-7B4BB81D871C",
                           "{54901C71-3408-44fb-9031-7B4BB81D871C}"}) {
    SCOPED_TRACE(text);
    GUID parsed;
    ASSERT_TRUE(parcelon::ParseGuid(text, parsed));
    EXPECT_TRUE(IsEqualGUID(parsed, kUploadOwner));
  }
}

const char* const kMalformed[] = {
    "",
    "{}",
    "{54901C71-3408-44fb-9031-7B4BB81D871C}x",
    "{54901C71-3408-44fb-9031-7B4BB81D871}",
    "{54901C71-3408-44fb-9031-7B4BB81D871C",
    "54901C71-3408-44fb-9031-7B4BB81D871C}",
    "{54901C7g-3408-44fb-9031-7B4BB81D871C}",
    "{54901C71340844fb90317B4BB81D871C}",
    "{54901C71-3408-44fb-9031_7B4BB81D871C}",
    "{54901C71-3408-44fb-9031-7B4BB81D871C0}",
    "{ 54901C71-3408-44fb-9031-7B4BB81D871C}",
    "{+4901C71-3408-44fb-9031-7B4BB81D871C}",
};

TEST(GuidText, ParseRefusesMalformedText) {
  GUID parsed;
  EXPECT_FALSE(parcelon::ParseGuid(nullptr, parsed));
  for (const char* text : kMalformed) {
    SCOPED_TRACE(text);
    EXPECT_FALSE(parcelon::ParseGuid(text, parsed));
  }
}

// CLSIDFromString takes the braced form only (other text would be a ProgID).
TEST(GuidText, ClsidFromStringRefusesMalformedText) {
  for (const char* text : kMalformed) {
    SCOPED_TRACE(text);
    CLSID parsed;
    EXPECT_EQ(CLSIDFromString(Wide(text).c_str(), &parsed), CO_E_CLASSSTRING);
  }
  CLSID parsed;
  EXPECT_EQ(CLSIDFromString(Wide("54901C71-3408-44fb-9031-7B4BB81D871C").c_str(), &parsed),
            CO_E_CLASSSTRING);
}

TEST(GuidText, ClsidFromNoTextIsTheNullClass) {
  CLSID parsed = kUploadOwner;
  EXPECT_EQ(CLSIDFromString(nullptr, &parsed), S_OK);
  EXPECT_TRUE(IsEqualGUID(parsed, kNull));
}

}  // namespace
