// The published identifiers read back as their published texts, and the compile-time reading of
// GUID text agrees with the run-time parser.
#include <gtest/gtest.h>

#include <string>

#include "host/HostModel.h"
#include "interfaces/ParcelonInterfaces.h"

namespace {

std::string Text(const GUID& guid) {
  char text[39];
  parcelon::FormatGuid(guid, text);
  return text;
}

TEST(PublishedIds, ReadBackAsPublished) {
  const struct {
    GUID guid;
    const char* published;
  } cases[] = {
      {LIBID_PARCELONLib, "{37A2FBF3-1795-4679-94A3-A153F1A8BB54}"},
      {CLSID_NA_Forms, "{37A2FC00-1795-4679-94A3-A153F1A8BB54}"},
      {CLSID_NA_Form, "{37A2FC02-1795-4679-94A3-A153F1A8BB54}"},
      {IidOf<INA_Forms>(), "{37A2FBFF-1BB5-11D4-A345-005004269401}"},
      {IidOf<INA_Form>(), "{37A2FC01-1BB5-11D4-A345-005004269401}"},
      {IidOf<INA_Form2>(), "{E931D274-4E28-11D5-9094-00508BF6BC63}"},
      {IidOf<INA_Base>(), "{03CDB2B0-1B96-11D4-A345-005004269401}"},
      {IidOf<INA_Base5>(), "{85DBD043-794A-4D24-8884-27E18AC6FA8E}"},
      {IidOf<IDispatch>(), "{00020400-0000-0000-C000-000000000046}"},
      {parcelon::host::CLSID_LXInbox, "{4844F3F7-2161-4AC4-B219-B3B4311782AA}"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.published, Text(c.guid));
}

// Either case and with or without braces, the same value the run-time parser reads; the byte
// order of the last two groups is the text's.
TEST(PublishedIds, CompileTimeReadingAgreesWithTheParser) {
  constexpr GUID lower = parcelon::GuidFromText("54901c71-3408-44fb-9031-7b4bb81d871c");
  constexpr GUID braced = parcelon::GuidFromText("{54901C71-3408-44fb-9031-7B4BB81D871C}");
  static_assert(lower.Data1 == 0x54901C71 && lower.Data2 == 0x3408 && lower.Data3 == 0x44FB);
  static_assert(lower.Data4[0] == 0x90 && lower.Data4[1] == 0x31 && lower.Data4[7] == 0x1C);
  GUID parsed;
  ASSERT_TRUE(parcelon::ParseGuid("{54901C71-3408-44fb-9031-7B4BB81D871C}", parsed));
  EXPECT_TRUE(IsEqualGUID(parsed, lower));
  EXPECT_TRUE(IsEqualGUID(parsed, braced));
}

}  // namespace
