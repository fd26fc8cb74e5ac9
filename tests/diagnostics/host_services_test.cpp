// The host's message box and file redirection services as the diagnostics use them.
#include <gtest/gtest.h>

#include <string>

#include "diagnostics/FakeHost.h"
#include "diagnostics/HostMessageBox.h"
#include "diagnostics/RedirectedFiles.h"

namespace parcelon::test {
namespace {

using HostServicesTest = DiagnosticsTest;

TEST_F(HostServicesTest, MessageBoxPassesStyleAndOwner) {
  ShowMessageBox("Upload time attributes successfully removed.\n", "ZPSSettings Warning",
                 host::kMessageBoxIconStop, false);
  ASSERT_EQ(1u, messageBoxes_.shown.size());
  EXPECT_EQ("Upload time attributes successfully removed.\n", messageBoxes_.shown[0].text);
  EXPECT_EQ("ZPSSettings Warning", messageBoxes_.shown[0].caption);
  EXPECT_EQ(0x10, messageBoxes_.shown[0].style);
  EXPECT_FALSE(messageBoxes_.shown[0].ownedByMainWindow);
}

// Opening and renaming, with and without the host's redirection, are seen in the logger's and the
// dumps' tests; what is left is the path as named and removal.
TEST_F(HostServicesTest, WithoutRedirectionPathsStandAsNamed) {
  const RedirectedFiles files;
  std::string mapped;
  ASSERT_TRUE(files.Map(scratch_.File("a.txt").c_str(), mapped));
  EXPECT_EQ(scratch_.File("a.txt"), mapped);
  EXPECT_FALSE(files.Remove(scratch_.File("missing.txt").c_str()));
}

TEST_F(HostServicesTest, RedirectionMapsRemove) {
  WithFileRedirection();
  redirection_.table["named.txt"] = scratch_.File("kept.txt");
  WriteFile(scratch_.File("kept.txt"), "text");
  EXPECT_TRUE(RedirectedFiles().Remove("named.txt"));
  EXPECT_FALSE(FileExists(scratch_.File("kept.txt")));
}

TEST_F(HostServicesTest, FailingRedirectionOpensNothing) {
  WithFileRedirection();
  redirection_.result = E_ACCESSDENIED;
  const RedirectedFiles files;
  std::string mapped;
  EXPECT_FALSE(files.Map(scratch_.File("a.txt").c_str(), mapped));
  EXPECT_EQ(nullptr, files.Open(scratch_.File("a.txt").c_str(), "w"));
  EXPECT_FALSE(FileExists(scratch_.File("a.txt")));
  WriteFile(scratch_.File("a.txt"), "x");
  EXPECT_FALSE(files.Rename(scratch_.File("a.txt").c_str(), scratch_.File("b.txt").c_str()));
  EXPECT_FALSE(files.Remove(scratch_.File("a.txt").c_str()));
  EXPECT_TRUE(FileExists(scratch_.File("a.txt")));
}

}  // namespace
}  // namespace parcelon::test
