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

TEST_F(HostServicesTest, WithoutRedirectionPathsStandAsNamed) {
  const RedirectedFiles files;
  std::string mapped;
  ASSERT_TRUE(files.Map(scratch_.File("a.txt").c_str(), mapped));
  EXPECT_EQ(scratch_.File("a.txt"), mapped);

  std::FILE* file = OpenRedirectedFile(scratch_.File("a.txt").c_str(), "w");
  ASSERT_NE(nullptr, file);
  std::fputs("text", file);
  std::fclose(file);
  EXPECT_TRUE(files.Rename(scratch_.File("a.txt").c_str(), scratch_.File("b.txt").c_str()));
  EXPECT_EQ("text", ReadFile(scratch_.File("b.txt")));
  EXPECT_TRUE(files.Remove(scratch_.File("b.txt").c_str()));
  EXPECT_FALSE(FileExists(scratch_.File("b.txt")));
  EXPECT_FALSE(files.Remove(scratch_.File("b.txt").c_str()));
}

TEST_F(HostServicesTest, RedirectionMapsOpenRenameAndRemove) {
  WithFileRedirection();
  redirection_.table["named.txt"] = scratch_.File("kept.txt");
  redirection_.table["renamed.txt"] = scratch_.File("kept-renamed.txt");
  const RedirectedFiles files;

  std::FILE* file = files.Open("named.txt", "w");
  ASSERT_NE(nullptr, file);
  std::fputs("text", file);
  std::fclose(file);
  EXPECT_EQ("text", ReadFile(scratch_.File("kept.txt")));
  EXPECT_TRUE(files.Rename("named.txt", "renamed.txt"));
  EXPECT_EQ("text", ReadFile(scratch_.File("kept-renamed.txt")));
  EXPECT_TRUE(files.Remove("renamed.txt"));
  EXPECT_FALSE(FileExists(scratch_.File("kept-renamed.txt")));
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
