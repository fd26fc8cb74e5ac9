#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <string>

#include "diagnostics/Logger.h"
#include "diagnostics/FakeHost.h"

namespace parcelon::test {
namespace {

constexpr const char* kPrefix = "Parcelon:CInvoiceBuilder::BuildXML(XMLBuilder&)";

using LoggerTest = DiagnosticsTest;

TEST_F(LoggerTest, EntryIsTimeStampLineThenThreeSpacesAndMessage) {
  CNALogger::Log(kPrefix, "Failed to get customer.", E_FAIL);

  const std::string text = ReadFile(LogPath());
  const size_t stampEnd = text.find(kEol);
  ASSERT_EQ(24u, stampEnd);
  EXPECT_TRUE(IsCtimeStamp(text.substr(0, 24))) << text;
  EXPECT_EQ(WithEol("\n   Failed to get customer.  HRESULT=0x80004005\n"), text.substr(24));
  EXPECT_TRUE(messageBoxes_.shown.empty());
}

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

struct HresultCase {
  HRESULT hr;
  const char* text;
};

class LoggerHresultTest : public DiagnosticsTest, public ::testing::WithParamInterface<HresultCase> {};

TEST_P(LoggerHresultTest, HresultIsWrittenAsShortLowercaseHex) {
  CNALogger::Log(kPrefix, "Message", GetParam().hr);
  EXPECT_EQ(std::vector<std::string>{std::string("Message  HRESULT=") + GetParam().text},
            LogEntries());
}

INSTANTIATE_TEST_SUITE_P(Codes, LoggerHresultTest,
                         ::testing::Values(HresultCase{S_OK, "0"}, HresultCase{S_FALSE, "0x1"},
                                           HresultCase{E_FAIL, "0x80004005"},
                                           HresultCase{E_OUTOFMEMORY, "0x8007000e"},
                                           HresultCase{HRESULT(0x80049001), "0x80049001"},
                                           HresultCase{HRESULT(0xFFFFFFFF), "0xffffffff"}));

TEST_F(LoggerTest, EntriesAreAppended) {
  CNALogger::Log(kPrefix, "First", E_FAIL);
  CNALogger::Log(kPrefix, "Second", S_OK);
  const std::vector<std::string> expected = {"First  HRESULT=0x80004005", "Second  HRESULT=0"};
  EXPECT_EQ(expected, LogEntries());
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

struct RotationCase {
  size_t size;
  bool rotated;
};

class LoggerRotationTest : public DiagnosticsTest,
                           public ::testing::WithParamInterface<RotationCase> {};

TEST_P(LoggerRotationTest, LogBeyond50000BytesBecomesTheOldLog) {
  ASSERT_TRUE(CreateFolders(LogFolder()));
  const std::string old(GetParam().size, 'x');
  WriteFile(LogPath(), old);
  WriteFile(OldLogPath(), "previous generation");

  CNALogger::Log(kPrefix, "Entry", E_FAIL);

  const std::string text = ReadFile(LogPath());
  const std::string entry = WithEol("   Entry  HRESULT=0x80004005\n");
  if (GetParam().rotated) {
    EXPECT_EQ(old, ReadFile(OldLogPath()));
    EXPECT_EQ(24 + std::string(kEol).size() + entry.size(), text.size());
  } else {
    EXPECT_EQ("previous generation", ReadFile(OldLogPath()));
    EXPECT_EQ(old, text.substr(0, old.size()));
  }
  EXPECT_EQ(entry, text.substr(text.size() - entry.size()));
}

INSTANTIATE_TEST_SUITE_P(Sizes, LoggerRotationTest,
                         ::testing::Values(RotationCase{0, false}, RotationCase{49999, false},
                                           RotationCase{50000, false}, RotationCase{50001, true},
                                           RotationCase{70000, true}));

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

TEST_F(LoggerTest, HostFolderWithoutSeparatorIsCreatedLevelByLevel) {
  const std::string folder =
      scratch_.File("host") + kPathSeparator + "nested" + kPathSeparator + "logs";
  folders_.locator.folder = folder;
  CNALogger::Log(kPrefix, "Entry", E_FAIL);

  EXPECT_EQ(std::vector<LONG>{2}, folders_.locator.kinds);
  const std::string text = ReadFile(folder + kPathSeparator + "NALog.log");
  EXPECT_NE(std::string::npos, text.find("   Entry  HRESULT=0x80004005"));
  EXPECT_FALSE(FileExists(LogPath()));
}

TEST_F(LoggerTest, HostFolderWithSeparatorGetsNoSecondOne) {
  folders_.locator.folder = scratch_.File("host") + "/";
  CNALogger::Log(kPrefix, "Entry", E_FAIL);
  EXPECT_TRUE(FileExists(scratch_.File("host") + "/NALog.log"));
  EXPECT_TRUE(messageBoxes_.shown.empty());
}

TEST_F(LoggerTest, PathsAreSetUpOnceUntilReset) {
  CNALogger::Log(kPrefix, "First", E_FAIL);
  folders_.locator.folder = scratch_.File("elsewhere");
  CNALogger::Log(kPrefix, "Second", E_FAIL);
  EXPECT_EQ(2u, LogEntries().size());
  EXPECT_EQ(1u, folders_.locator.kinds.size());

  CNALogger::ResetForTesting();
  CNALogger::Log(kPrefix, "Third", E_FAIL);
  EXPECT_TRUE(FileExists(scratch_.File("elsewhere") + kPathSeparator + "NALog.log"));
}

#ifdef _WIN32
constexpr const char* kStateVariable = "LOCALAPPDATA";
constexpr const char* kStateFolder = "Parcelon";
#else
constexpr const char* kStateVariable = "XDG_STATE_HOME";
constexpr const char* kStateFolder = "parcelon";
#endif

TEST_F(LoggerTest, WithoutHostFolderServiceTheUserStateFolderIsUsed) {
  WithoutFolderService();
  ScopedEnv state(kStateVariable, scratch_.File("state").c_str());
  CNALogger::Log(kPrefix, "Entry", E_FAIL);
  const std::string text = ReadFile(scratch_.File("state") + kPathSeparator + kStateFolder +
                                    kPathSeparator + "NALog.log");
  EXPECT_NE(std::string::npos, text.find("   Entry  HRESULT=0x80004005"));
}

TEST_F(LoggerTest, FailingOrEmptyHostFolderFallsBackToTheUserStateFolder) {
  ScopedEnv state(kStateVariable, scratch_.File("state").c_str());
  const std::string log =
      scratch_.File("state") + kPathSeparator + kStateFolder + kPathSeparator + "NALog.log";
  folders_.locator.result = E_FAIL;
  CNALogger::Log(kPrefix, "Failing", E_FAIL);
  EXPECT_TRUE(FileExists(log));

  std::filesystem::remove(log);
  CNALogger::ResetForTesting();
  folders_.locator.result = S_OK;
  folders_.locator.folder = "";
  CNALogger::Log(kPrefix, "Empty", E_FAIL);
  EXPECT_TRUE(FileExists(log));
  EXPECT_FALSE(FileExists(LogPath()));
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

  ASSERT_EQ(1u, messageBoxes_.shown.size());
  const FakeMessageBox::Shown& shown = messageBoxes_.shown[0];
  EXPECT_EQ("Could not open the log file \"" + scratch_.File("blocker") + kPathSeparator +
                "NALog.log\"!\nIntended log entry: Failed to get customer.  HRESULT=0x80004005\n",
            shown.text);
  EXPECT_EQ("Network Adapter", shown.caption);
  EXPECT_EQ(host::kMessageBoxOk, shown.style);
  EXPECT_TRUE(shown.ownedByMainWindow);
}

TEST_F(LoggerTest, UnwritableLogShowsPlainTextInAMessageBox) {
  WriteFile(scratch_.File("blocker"), "");
  folders_.locator.folder = scratch_.File("blocker");
  CNALogger::LogText("Send started");
  ASSERT_EQ(1u, messageBoxes_.shown.size());
  EXPECT_EQ("Could not open the log file \"" + scratch_.File("blocker") + kPathSeparator +
                "NALog.log\"!\nIntended log entry: Send started",
            messageBoxes_.shown[0].text);
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

struct StatusCase {
  uint32_t hr;
  const char* name;
};

class StatusNameTest : public ::testing::TestWithParam<StatusCase> {};

TEST_P(StatusNameTest, NamesTheHostsNetworkStatusCodes) {
  EXPECT_STREQ(GetParam().name, CNALogger::StatusName(HRESULT(GetParam().hr)));
}

INSTANTIATE_TEST_SUITE_P(
    Table, StatusNameTest,
    ::testing::Values(
        StatusCase{0x80049000, "OENETSTATUS_OK"}, StatusCase{0x80049001, "OENETSTATUS_CANT_INIT"},
        StatusCase{0x8004900A,
                   "OENETSTATUS_CANT_INIT_REQUEST (Perhaps you haven't completed the Internet "
                   "Connection Setup in Ledgerine)"},
        StatusCase{0x8004900E, "OENETSTATUS_HTTP_400"},
        StatusCase{0x80049017, "OENETSTATUS_SSL_CERTID_MISMATCH"},
        StatusCase{0x8004901C, "OENETSTATUS_SERVER_CONFIG"},
        StatusCase{0x8004901D, "OENETSTATUS_UNKNOWN_ERROR"}, StatusCase{0x8004901E, ""},
        StatusCase{0x80048FFF, ""}, StatusCase{0x00000000, ""}, StatusCase{0x00049000, ""},
        StatusCase{0x80004005, ""}, StatusCase{0xFFFFFFFF, ""}));

}  // namespace
}  // namespace parcelon::test
