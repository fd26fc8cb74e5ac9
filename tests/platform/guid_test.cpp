#include <gtest/gtest.h>

#include "platform/ComBase.h"

TEST(Guid, ParseAndFormatRoundTrip) {
  GUID g;
  ASSERT_TRUE(parcelon::ParseGuid("{54901c71-3408-44fb-9031-7B4BB81D871C}", g));
  EXPECT_EQ(g.Data1, 0x54901C71u);
  EXPECT_EQ(g.Data2, 0x3408);
  EXPECT_EQ(g.Data4[7], 0x1C);
  char text[39];
  parcelon::FormatGuid(g, text);
  EXPECT_STREQ(text, "{54901C71-3408-44FB-9031-7B4BB81D871C}");
}
