// The failure log: the layout of its entries, where it goes, its rotation, and what shows the
// entry when the log cannot be written.
#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <functional>
#include <string>

#include "diagnostics/Logger.h"
#include "diagnostics/FakeHost.h"

namespace parcelon::test {
namespace {

constexpr const char* kPrefix = "Parcelon:CInvoiceBuilder::BuildXML(XMLBuilder&)";

using LoggerTest = DiagnosticsTest;

// LogEntries checks the layout of every entry it reads: a time stamp line, then three spaces and
// the message.

TEST_F(LoggerTest, ContextSwitchPutsThePrefixFirst) {
  WriteSettings("[ZPSSettings]\nNetworkAdapter.EnableLogContext=1\n");
  CNALogger::Log(kPrefix, "Failed to get customer.", E_FAIL);
  WriteSettings("[ZPSSettings]\nNetworkAdapter.EnableLogContext=0\n");
  CNALogger::Log(kPrefix, "Failed to get terms.", E_FAIL);

  const std::vector<std::string> expected = {
      "Parcelon:CInvoiceBuilder::BuildXML(XMLBuilder&): Failed to get customer.  HRESULT=0x80004005",
      "Failed to get terms.  HRESULT=0x80004005"};
  EXPECT_EQ(expected, LogEntries());
}

TEST_F(LoggerTest, HresultIsWrittenAsShortLowercaseHex) {
  const std::pair<HRESULT, const char*> cases[] = {
      {S_OK, "0"}, {S_FALSE, "0x1"}, {E_FAIL, "0x80004005"}, {E_OUTOFMEMORY, "0x8007000e"},
      {HRESULT(0x80049001), "0x80049001"}, {HRESULT(0xFFFFFFFF), "0xffffffff"}};
  std::vector<std::string> expected;
  for (const auto& [hr, text] : cases) {
    CNALogger::Log(kPrefix, "Message", hr);
    expected.push_back(std::string("Message  HRESULT=") + text);
  }
  EXPECT_EQ(expected, LogEntries()) << "entries are appended";
}

TEST_F(LoggerTest, LongMessageIsCutToTheEntryBound) {
  const std::string message(5000, 'm');
  CNALogger::Log(kPrefix, message.c_str(), E_FAIL);
  WriteSettings("[ZPSSettings]\nNetworkAdapter.EnableLogContext=1\n");
  CNALogger::Log(kPrefix, message.c_str(), E_FAIL);

  // 1023 characters with the line feed, as in a buffer of 1024 with its terminating zero.
  const std::string prefix = std::string(kPrefix) + ": ";
  const std::vector<std::string> expected = {std::string(1022, 'm'),
                                             prefix + std::string(1022 - prefix.size(), 'm')};
  EXPECT_EQ(expected, LogEntries());
}

TEST_F(LoggerTest, NullTextsLogAsEmpty) {
  CNALogger::Log(nullptr, nullptr, E_FAIL);
  EXPECT_EQ(std::vector<std::string>{"  HRESULT=0x80004005"}, LogEntries());
}

TEST_F(LoggerTest, LogBeyond50000BytesBecomesTheOldLog) {
  ASSERT_TRUE(CreateFolders(LogFolder()));
  const std::string entry = WithEol("   Entry  HRESULT=0x80004005\n");
  for (const size_t size : {0, 49999, 50000, 50001, 70000}) {
    SCOPED_TRACE(size);
    const bool rotated = size > 50000;
    const std::string old(size, 'x');
    WriteFile(LogPath(), old);
    WriteFile(OldLogPath(), "previous generation");

    CNALogger::Log(kPrefix, "Entry", E_FAIL);

    const std::string text = ReadFile(LogPath());
    EXPECT_EQ(rotated ? old : "previous generation", ReadFile(OldLogPath()));
    if (rotated) {
      EXPECT_EQ(24 + std::string(kEol).size() + entry.size(), text.size());
    } else {
      EXPECT_EQ(old, text.substr(0, old.size()));
    }
    EXPECT_EQ(entry, text.substr(text.size() - entry.size()));
  }
}

TEST_F(LoggerTest, RotationWithoutOldLogKeepsTheLogAsOldLog) {
  ASSERT_TRUE(CreateFolders(LogFolder()));
  WriteFile(LogPath(), std::string(50001, 'x'));
  CNALogger::Log(kPrefix, "Entry", E_FAIL);
  EXPECT_EQ(50001u, ReadFile(OldLogPath()).size());
  EXPECT_EQ(std::vector<std::string>{"Entry  HRESULT=0x80004005"}, LogEntries());
}

TEST_F(LoggerTest, PlainTextIsFollowedByTheLocalTime) {
  const auto Format = [](std::time_t t) {
    std::tm local{};
#ifdef _WIN32
    localtime_s(&local, &t);
#else
    localtime_r(&t, &local);
#endif
    char text[128];
    std::strftime(text, sizeof text, "%c", &local);
    return std::string(text);
  };
  const std::time_t before = std::time(nullptr);
  CNALogger::LogText("Send started");
  const std::time_t after = std::time(nullptr);

  const std::string text = ReadFile(LogPath());
  const std::string head = "Send started  ";
  ASSERT_EQ(head, text.substr(0, head.size()));
  const std::string eol = kEol;
  ASSERT_EQ(eol, text.substr(text.size() - eol.size()));
  const std::string stamp = text.substr(head.size(), text.size() - head.size() - eol.size());
  EXPECT_TRUE(stamp == Format(before) || stamp == Format(after)) << stamp;
}

TEST_F(LoggerTest, PlainTextIsCutToTheEntryBound) {
  CNALogger::LogText(std::string(3000, 't').c_str());
  const std::string text = ReadFile(LogPath());
  EXPECT_EQ(std::string(1023, 't') + "  ", text.substr(0, 1025));
}

TEST_F(LoggerTest, PathsAreSetUpOnceUntilReset) {
  CNALogger::Log(kPrefix, "First", E_FAIL);
  folders_.locator.folder = scratch_.File("elsewhere");
  CNALogger::Log(kPrefix, "Second", E_FAIL);
  EXPECT_EQ((std::vector<std::string>{"First  HRESULT=0x80004005", "Second  HRESULT=0x80004005"}), LogEntries());
  EXPECT_EQ(1u, folders_.locator.kinds.size());

  CNALogger::ResetForTesting();
  CNALogger::Log(kPrefix, "Third", E_FAIL);
  EXPECT_EQ(WithEol("\n   Third  HRESULT=0x80004005\n"),
            ReadFile(scratch_.File("elsewhere") + kPathSeparator + "NALog.log").substr(24));
}

// The log goes to the host's folder (made level by level, given a separator only when it has
// none); without one, to the user's state folder.
TEST_F(LoggerTest, LogGoesToTheHostsFolderOrTheUserStateFolder) {
  ScopedEnv state(kStateVariable, scratch_.File("state").c_str());
  const std::string stateLog = scratch_.File("state") + kPathSeparator + kUserFolder + kPathSeparator + "NALog.log";
  const std::string nested = scratch_.File("host") + kPathSeparator + "nested" + kPathSeparator + "logs";
  const struct {
    const char* what;
    std::function<void()> setUp;
    std::string log;
  } cases[] = {
      {"host folder", [&] { folders_.locator.folder = nested; }, nested + kPathSeparator + "NALog.log"},
      {"host folder with its separator", [&] { folders_.locator.folder = scratch_.File("host") + "/"; },
       scratch_.File("host") + "/NALog.log"},
      {"failing host folder", [&] { folders_.locator.result = E_FAIL; }, stateLog},
      {"empty host folder", [&] { folders_.locator.result = S_OK, folders_.locator.folder = ""; }, stateLog},
      {"no folder service", [&] { WithoutFolderService(); }, stateLog},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    c.setUp();
    CNALogger::ResetForTesting();
    CNALogger::Log(kPrefix, c.what, E_FAIL);
    EXPECT_EQ(WithEol(std::string("\n   ") + c.what + "  HRESULT=0x80004005\n"), ReadFile(c.log).substr(24));
    std::filesystem::remove(c.log);
  }
  EXPECT_EQ((std::vector<LONG>{2, 2, 2, 2}), folders_.locator.kinds);
  EXPECT_FALSE(FileExists(LogPath()));
  EXPECT_TRUE(messageBoxes_.shown.empty());
}

TEST_F(LoggerTest, WithNoFolderAtAllTheLogIsInTheCurrentDirectory) {
  WithoutFolderService();
  ScopedEnv state(kStateVariable, nullptr);
  ScopedEnv home("HOME", nullptr);
  const std::filesystem::path previous = std::filesystem::current_path();
  std::filesystem::current_path(scratch_.Path());
  CNALogger::Log(kPrefix, "Entry", E_FAIL);
  std::filesystem::current_path(previous);

  const std::string text = ReadFile(scratch_.File("NALog.log"));
  EXPECT_NE(std::string::npos, text.find("   Entry  HRESULT=0x80004005"));
}

TEST_F(LoggerTest, UnwritableLogFolderShowsTheEntryInAMessageBox) {
  // A file where the folder should be: neither the folder nor the log can be made.
  WriteFile(scratch_.File("blocker"), "");
  folders_.locator.folder = scratch_.File("blocker");
  CNALogger::Log(kPrefix, "Failed to get customer.", E_FAIL);
  CNALogger::LogText("Send started");

  const std::string cannot =
      "Could not open the log file \"" + scratch_.File("blocker") + kPathSeparator + "NALog.log\"!\n";
  ASSERT_EQ(2u, messageBoxes_.shown.size());
  EXPECT_EQ(cannot + "Intended log entry: Failed to get customer.  HRESULT=0x80004005\n", messageBoxes_.shown[0].text);
  EXPECT_EQ(cannot + "Intended log entry: Send started", messageBoxes_.shown[1].text);
  for (const FakeMessageBox::Shown& shown : messageBoxes_.shown) {
    EXPECT_EQ("Network Adapter", shown.caption);
    EXPECT_EQ(host::kMessageBoxOk, shown.style);
    EXPECT_TRUE(shown.ownedByMainWindow);
  }
}

#ifndef _WIN32
TEST_F(LoggerTest, WithoutHostMessageBoxTheTextGoesToStandardError) {
  WithoutMessageBoxService();
  WriteFile(scratch_.File("blocker"), "");
  folders_.locator.folder = scratch_.File("blocker");
  ::testing::internal::CaptureStderr();
  CNALogger::Log(kPrefix, "Entry", E_FAIL);
  EXPECT_EQ("Network Adapter: Could not open the log file \"" + scratch_.File("blocker") +
                "/NALog.log\"!\nIntended log entry: Entry  HRESULT=0x80004005\n\n",
            ::testing::internal::GetCapturedStderr());
}
#endif

TEST_F(LoggerTest, LogGoesThroughTheHostsFileRedirection) {
  WithFileRedirection();
  ASSERT_TRUE(CreateFolders(LogFolder()));
  const std::string redirected = scratch_.File("redirected.log");
  const std::string redirectedOld = scratch_.File("redirected-old.log");
  redirection_.table[LogPath()] = redirected;
  redirection_.table[OldLogPath()] = redirectedOld;
  WriteFile(redirected, std::string(50001, 'x'));

  CNALogger::Log(kPrefix, "Entry", E_FAIL);

  EXPECT_EQ(50001u, ReadFile(redirectedOld).size());
  EXPECT_NE(std::string::npos, ReadFile(redirected).find("   Entry  HRESULT=0x80004005"));
  EXPECT_FALSE(FileExists(LogPath()));
}

TEST_F(LoggerTest, RedirectionThatFailsCountsAsAnUnwritableLog) {
  WithFileRedirection();
  redirection_.result = E_ACCESSDENIED;
  CNALogger::Log(kPrefix, "Entry", E_FAIL);
  ASSERT_EQ(1u, messageBoxes_.shown.size());
  EXPECT_EQ("Could not open the log file \"" + LogPath() +
                "\"!\nIntended log entry: Entry  HRESULT=0x80004005\n",
            messageBoxes_.shown[0].text);
}

TEST(StatusName, NamesTheHostsNetworkStatusCodes) {
  const std::pair<uint32_t, const char*> cases[] = {
      {0x80049000, "OENETSTATUS_OK"}, {0x80049001, "OENETSTATUS_CANT_INIT"},
      {0x8004900A, "OENETSTATUS_CANT_INIT_REQUEST (Perhaps you haven't completed the Internet Connection Setup "
                   "in Ledgerine)"},
      {0x8004900E, "OENETSTATUS_HTTP_400"}, {0x80049017, "OENETSTATUS_SSL_CERTID_MISMATCH"},
      {0x8004901C, "OENETSTATUS_SERVER_CONFIG"}, {0x8004901D, "OENETSTATUS_UNKNOWN_ERROR"}, {0x8004901E, ""},
      {0x80048FFF, ""}, {0x00000000, ""}, {0x00049000, ""}, {0x80004005, ""}, {0xFFFFFFFF, ""}};
  for (const auto& [hr, name] : cases) EXPECT_STREQ(name, CNALogger::StatusName(HRESULT(hr))) << std::hex << hr;
}

}  // namespace
}  // namespace parcelon::test
