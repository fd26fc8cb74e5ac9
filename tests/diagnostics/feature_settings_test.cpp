#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "diagnostics/FeatureSettings.h"
#include "diagnostics/FakeHost.h"

namespace parcelon::test {
namespace {

constexpr const char* kSection = "ZPSSettings";

bool Switch(const char* key) { return AmbitAccess::GetFeatureParamAsBool(kSection, key, nullptr); }
int Number(const char* key) { return AmbitAccess::GetFeatureParamAsInt(kSection, key, nullptr); }

using FeatureSettingsTest = DiagnosticsTest;

TEST_F(FeatureSettingsTest, MissingFileReadsEverythingOff) {
  EXPECT_FALSE(FileExists(SettingsPath()));
  EXPECT_FALSE(Switch("NetworkAdapter.IndentXML"));
  EXPECT_EQ(0, Number("NetworkAdapter.PDFChunk"));
  EXPECT_EQ("", AmbitAccess::GetURLAddress("EmailService.FormGatewayURL"));
  EXPECT_FALSE(FileExists(LogPath()));
}

TEST_F(FeatureSettingsTest, MissingKeysReadOff) {
  WriteSettings("[ZPSSettings]\nNetworkAdapter.IndentXML=1\n");
  EXPECT_TRUE(Switch("NetworkAdapter.IndentXML"));
  EXPECT_FALSE(Switch("NetworkAdapter.DumpAttachment"));
  EXPECT_EQ(0, Number("NetworkAdapter.PDFChunk"));
  EXPECT_FALSE(Switch(""));
  EXPECT_FALSE(AmbitAccess::GetFeatureParamAsBool(kSection, nullptr, nullptr));
  EXPECT_EQ(0, AmbitAccess::GetFeatureParamAsInt(kSection, nullptr, nullptr));
  EXPECT_FALSE(AmbitAccess::GetFeatureParamAsBool(nullptr, "NetworkAdapter.IndentXML", nullptr));
}

TEST_F(FeatureSettingsTest, KeysAndSectionsCompareWithoutCase) {
  WriteSettings("[zpssettings]\nnetworkadapter.indentxml=1\nNETWORKADAPTER.PDFCHUNK=12\n");
  EXPECT_TRUE(Switch("NetworkAdapter.IndentXML"));
  EXPECT_TRUE(AmbitAccess::GetFeatureParamAsBool("ZPSSETTINGS", "NetworkAdapter.IndentXml", nullptr));
  EXPECT_EQ(12, Number("NetworkAdapter.PDFChunk"));
}

struct KeyCase {
  const char* lookup;
  bool found;
};

class KeyCaseTest : public DiagnosticsTest, public ::testing::WithParamInterface<KeyCase> {};

// Only the 26 ASCII capitals fold: not their neighbours '@' and '[' (whose lower-case neighbours
// are '`' and '{'), nor letters beyond ASCII.
TEST_P(KeyCaseTest, OnlyAsciiLettersCompareWithoutCase) {
  WriteSettings("[ZPSSettings]\nAZ@[\xC0.Key.With.Seventeen=1\n");
  EXPECT_EQ(GetParam().found, Switch(GetParam().lookup)) << GetParam().lookup;
}

INSTANTIATE_TEST_SUITE_P(
    Keys, KeyCaseTest,
    ::testing::Values(KeyCase{"AZ@[\xC0.Key.With.Seventeen", true},
                      KeyCase{"az@[\xC0.KEY.WITH.SEVENTEEN", true},
                      KeyCase{"AZ`[\xC0.Key.With.Seventeen", false},
                      KeyCase{"AZ@{\xC0.Key.With.Seventeen", false},
                      KeyCase{"AZ@[\xE0.Key.With.Seventeen", false},
                      KeyCase{"AZ@[\xC0.Key.With.Seventeem", false},
                      KeyCase{"AZ@[\xC0.Key.With.Seventee", false},
                      KeyCase{"AZ@[\xC0.Key.With.Seventeen.", false}));

TEST_F(FeatureSettingsTest, OnlyTheFeatureSectionHoldsSwitches) {
  WriteSettings(
      "NetworkAdapter.IndentXML=1\n[Other]\nNetworkAdapter.IndentXML=1\n[URLs]\n"
      "NetworkAdapter.IndentXML=1\n[ZPSSettings]\nNetworkAdapter.DumpAttachment=1\n");
  EXPECT_FALSE(Switch("NetworkAdapter.IndentXML"));
  EXPECT_FALSE(AmbitAccess::GetFeatureParamAsBool("Other", "NetworkAdapter.IndentXML", nullptr));
  EXPECT_TRUE(Switch("NetworkAdapter.DumpAttachment"));
}

TEST_F(FeatureSettingsTest, CommentsAndBlankLinesAreSkipped) {
  WriteSettings(
      "; settings for support\n\n[ZPSSettings]\n# indentation\n  \nNetworkAdapter.IndentXML = 1 "
      "; two spaces a level\n;NetworkAdapter.DumpAttachment=1\n");
  EXPECT_TRUE(Switch("NetworkAdapter.IndentXML"));
  EXPECT_FALSE(Switch("NetworkAdapter.DumpAttachment"));
  EXPECT_FALSE(FileExists(LogPath()));
}

TEST_F(FeatureSettingsTest, WindowsLineEndsAreRead) {
  WriteSettings("[ZPSSettings]\r\nNetworkAdapter.IndentXML=1\r\nNetworkAdapter.PDFChunk=42\r\n");
  EXPECT_TRUE(Switch("NetworkAdapter.IndentXML"));
  EXPECT_EQ(42, Number("NetworkAdapter.PDFChunk"));
}

TEST_F(FeatureSettingsTest, GarbageLinesReadOffAndAreLogged) {
  WriteSettings(
      "[ZPSSettings]\nthis is garbage\nNetworkAdapter.IndentXML=1\n"
      "NetworkAdapter.DumpAttachment\n");
  EXPECT_TRUE(Switch("NetworkAdapter.IndentXML"));
  EXPECT_FALSE(Switch("NetworkAdapter.DumpAttachment"));
  EXPECT_EQ(std::vector<std::string>{"The settings file \"" + SettingsPath() +
                                     "\" has malformed lines; they are ignored.  HRESULT=0x80004005"},
            LogEntries());
}

TEST_F(FeatureSettingsTest, BinaryFileReadsOff) {
  std::string bytes;
  for (int i = 0; i < 4096; ++i) bytes += char((i * 7919) % 256);
  WriteSettings(bytes);
  EXPECT_FALSE(Switch("NetworkAdapter.IndentXML"));
  EXPECT_EQ(0, Number("NetworkAdapter.PDFChunk"));
}

struct SwitchCase {
  const char* value;
  bool on;
};

class SwitchSpellingTest : public DiagnosticsTest, public ::testing::WithParamInterface<SwitchCase> {};

TEST_P(SwitchSpellingTest, ReadsTheAcceptedSpellings) {
  WriteSettings(std::string("[ZPSSettings]\nNetworkAdapter.IndentXML=") + GetParam().value + "\n");
  EXPECT_EQ(GetParam().on, Switch("NetworkAdapter.IndentXML")) << '"' << GetParam().value << '"';
}

INSTANTIATE_TEST_SUITE_P(
    Values, SwitchSpellingTest,
    ::testing::Values(SwitchCase{"1", true}, SwitchCase{"0", false}, SwitchCase{"true", true},
                      SwitchCase{"TRUE", true}, SwitchCase{"True", true},
                      SwitchCase{"false", false}, SwitchCase{"yes", true}, SwitchCase{"YES", true},
                      SwitchCase{"no", false}, SwitchCase{"on", true}, SwitchCase{"On", true},
                      SwitchCase{"off", false}, SwitchCase{"2", true}, SwitchCase{"-1", true},
                      SwitchCase{"+1", true}, SwitchCase{"00", false}, SwitchCase{"maybe", false},
                      SwitchCase{"", false}, SwitchCase{"y", false}, SwitchCase{"t", false},
                      SwitchCase{"1x", false}, SwitchCase{"0x1", false},
                      SwitchCase{"truee", false}, SwitchCase{"1.0", false},
                      SwitchCase{"99999999999", false}, SwitchCase{"  yes  ", true},
                      SwitchCase{"1 ; on", true}, SwitchCase{"\"1\"", false}));

struct NumberCase {
  const char* value;
  int number;
};

class NumberTest : public DiagnosticsTest, public ::testing::WithParamInterface<NumberCase> {};

TEST_P(NumberTest, ReadsDecimalIntsAndZeroForAnythingElse) {
  WriteSettings(std::string("[ZPSSettings]\nNetworkAdapter.PDFChunk=") + GetParam().value + "\n");
  EXPECT_EQ(GetParam().number, Number("NetworkAdapter.PDFChunk")) << '"' << GetParam().value << '"';
}

INSTANTIATE_TEST_SUITE_P(
    Values, NumberTest,
    ::testing::Values(NumberCase{"42", 42}, NumberCase{"-17", -17}, NumberCase{"+8", 8},
                      NumberCase{"0", 0}, NumberCase{"007", 7}, NumberCase{" 1000 ", 1000},
                      NumberCase{"2147483647", 2147483647},
                      NumberCase{"-2147483648", -2147483647 - 1}, NumberCase{"2147483648", 0},
                      NumberCase{"-2147483649", 0}, NumberCase{"99999999999999999999", 0},
                      NumberCase{"12abc", 0}, NumberCase{"abc", 0}, NumberCase{"", 0},
                      NumberCase{"1.5", 0}, NumberCase{"0x10", 0}, NumberCase{"+-3", 0},
                      NumberCase{"--3", 0}, NumberCase{"+", 0}, NumberCase{"-", 0},
                      NumberCase{"1 2", 0}, NumberCase{"true", 0}));

TEST_F(FeatureSettingsTest, ChangeIsNoticedAtReload) {
  WriteSettings("[ZPSSettings]\nNetworkAdapter.IndentXML=0\n");
  EXPECT_FALSE(Switch("NetworkAdapter.IndentXML"));
  // Same size, possibly the same modification time: Reload reads it anyway.
  WriteSettings("[ZPSSettings]\nNetworkAdapter.IndentXML=1\n");
  EXPECT_TRUE(Switch("NetworkAdapter.IndentXML"));
  std::remove(SettingsPath().c_str());
  AmbitAccess::Reload();
  EXPECT_FALSE(Switch("NetworkAdapter.IndentXML"));
}

TEST_F(FeatureSettingsTest, PeriodicCheckReloadsOnlyAChangedFile) {
  namespace fs = std::filesystem;
  // A time in whole seconds, which every file system keeps exactly.
  const fs::file_time_type written = std::chrono::floor<std::chrono::seconds>(
      fs::file_time_type::clock::now() - std::chrono::hours(1));
  WriteFile(SettingsPath(), "[ZPSSettings]\nNetworkAdapter.PDFChunk=1\n");
  fs::last_write_time(SettingsPath(), written);
  AmbitAccess::Reload();

  // Same path, size and time: the settings in memory stand.
  WriteFile(SettingsPath(), "[ZPSSettings]\nNetworkAdapter.PDFChunk=2\n");
  fs::last_write_time(SettingsPath(), written);
  AmbitAccess::CheckAtNextRead();
  EXPECT_EQ(1, Number("NetworkAdapter.PDFChunk"));

  // Another time.
  fs::last_write_time(SettingsPath(), written + std::chrono::seconds(10));
  AmbitAccess::CheckAtNextRead();
  EXPECT_EQ(2, Number("NetworkAdapter.PDFChunk"));

  // Another size.
  WriteFile(SettingsPath(), "[ZPSSettings]\nNetworkAdapter.PDFChunk=33\n");
  fs::last_write_time(SettingsPath(), written + std::chrono::seconds(10));
  AmbitAccess::CheckAtNextRead();
  EXPECT_EQ(33, Number("NetworkAdapter.PDFChunk"));

  // Another path.
  const std::string other = scratch_.File("other.aov");
  WriteFile(other, "[ZPSSettings]\nNetworkAdapter.PDFChunk=44\n");
  {
    ScopedEnv variable(AmbitAccess::kPathVariable, other.c_str());
    AmbitAccess::CheckAtNextRead();
    EXPECT_EQ(44, Number("NetworkAdapter.PDFChunk"));
  }

  // No file.
  std::remove(SettingsPath().c_str());
  AmbitAccess::CheckAtNextRead();
  EXPECT_EQ(0, Number("NetworkAdapter.PDFChunk"));
}

TEST_F(FeatureSettingsTest, ChangeOfTheVariableIsNoticedAtReload) {
  WriteSettings("[ZPSSettings]\nNetworkAdapter.IndentXML=1\n");
  const std::string other = scratch_.File("other.aov");
  WriteFile(other, "[ZPSSettings]\nNetworkAdapter.PDFChunk=5\n");
  ScopedEnv variable(AmbitAccess::kPathVariable, other.c_str());
  AmbitAccess::Reload();
  EXPECT_FALSE(Switch("NetworkAdapter.IndentXML"));
  EXPECT_EQ(5, Number("NetworkAdapter.PDFChunk"));
}

#ifdef _WIN32
constexpr const char* kConfigVariable = "APPDATA";
constexpr const char* kConfigFolder = "Parcelon";
#else
constexpr const char* kConfigVariable = "XDG_CONFIG_HOME";
constexpr const char* kConfigFolder = "parcelon";
#endif

TEST_F(FeatureSettingsTest, WithoutTheVariableTheUserConfigFolderIsRead) {
  WriteSettings("[ZPSSettings]\nNetworkAdapter.IndentXML=1\n");
  const std::string folder = scratch_.File("config") + kPathSeparator + kConfigFolder;
  ASSERT_TRUE(CreateFolders(folder));
  WriteFile(folder + kPathSeparator + "ZPSSettings.aov", "[ZPSSettings]\nNetworkAdapter.PDFChunk=9\n");
  ScopedEnv config(kConfigVariable, scratch_.File("config").c_str());
  ScopedEnv variable(AmbitAccess::kPathVariable, nullptr);
  AmbitAccess::Reload();
  EXPECT_FALSE(Switch("NetworkAdapter.IndentXML"));
  EXPECT_EQ(9, Number("NetworkAdapter.PDFChunk"));
}

TEST_F(FeatureSettingsTest, UrlsAreReadFromTheirSection) {
  WriteSettings(
      "[ZPSSettings]\nEmailService.FormGatewayURL=https://wrong.example.com/\n[URLs]\n"
      "EmailService.FormGatewayURL = https://forms.example.com/gateway?a=1;b=2\n"
      "emailservice.formgatewayattachurl=https://forms.example.com/attach\n");
  EXPECT_EQ("https://forms.example.com/gateway?a=1;b=2",
            AmbitAccess::GetURLAddress("EmailService.FormGatewayURL"));
  EXPECT_EQ("https://forms.example.com/attach",
            AmbitAccess::GetURLAddress("EmailService.FormGatewayAttachURL"));
  EXPECT_EQ("", AmbitAccess::GetURLAddress("EmailService.Other"));
  EXPECT_EQ("", AmbitAccess::GetURLAddress(nullptr));
}

TEST_F(FeatureSettingsTest, LastOfRepeatedKeysCounts) {
  WriteSettings("[ZPSSettings]\nNetworkAdapter.PDFChunk=1\nNetworkAdapter.PDFChunk=2\n");
  EXPECT_EQ(2, Number("NetworkAdapter.PDFChunk"));
}

TEST_F(FeatureSettingsTest, LinesUpToTheBoundAreRead) {
  const std::string key = "EmailService.Long=";
  const std::string url(AmbitAccess::kMaxLineLength - key.size(), 'u');
  WriteSettings("[URLs]\n" + key + url + "\n");
  EXPECT_EQ(url, AmbitAccess::GetURLAddress("EmailService.Long"));
  EXPECT_FALSE(FileExists(LogPath()));
}

TEST_F(FeatureSettingsTest, LineOneBeyondTheBoundIsIgnored) {
  const std::string key = "EmailService.Long=";
  WriteSettings("[URLs]\n" + key + std::string(AmbitAccess::kMaxLineLength + 1 - key.size(), 'u') +
                "\n");
  EXPECT_EQ("", AmbitAccess::GetURLAddress("EmailService.Long"));
  EXPECT_EQ(1u, LogEntries().size());
}

TEST_F(FeatureSettingsTest, LongerLinesAreIgnoredWholeAndLogged) {
  // Read in pieces of 199 characters, the end of this line would turn a switch on.
  const std::string head = "EmailService.Long=";
  WriteSettings("[ZPSSettings]\n" + head + std::string(199 - head.size(), 'u') +
                "NetworkAdapter.DumpAttachment=1\nNetworkAdapter.IndentXML=1\n");
  EXPECT_FALSE(Switch("NetworkAdapter.DumpAttachment"));
  EXPECT_TRUE(Switch("NetworkAdapter.IndentXML"));
  EXPECT_EQ(std::vector<std::string>{"The settings file \"" + SettingsPath() +
                                     "\" has lines longer than 196 characters; they are "
                                     "ignored.  HRESULT=0x80004005"},
            LogEntries());
}

TEST_F(FeatureSettingsTest, HugeLineIsIgnored) {
  WriteSettings("[ZPSSettings]\nNetworkAdapter.PDFChunk=" + std::string(100000, '1') +
                "\nNetworkAdapter.IndentXML=1\n");
  EXPECT_EQ(0, Number("NetworkAdapter.PDFChunk"));
  EXPECT_TRUE(Switch("NetworkAdapter.IndentXML"));
}

// A settings file of `size` bytes that turns the indentation on, padded with comment lines.
std::string SettingsOfSize(size_t size) {
  std::string text = "[ZPSSettings]\nNetworkAdapter.IndentXML=1\n";
  std::string comment(100, '-');
  comment.front() = ';';
  comment.back() = '\n';
  while (text.size() + comment.size() <= size) text += comment;
  text += ';';
  text.append(size - text.size(), '-');
  return text;
}

TEST_F(FeatureSettingsTest, FileOfTheSizeBoundIsRead) {
  const std::string text = SettingsOfSize(AmbitAccess::kMaxFileSize);
  ASSERT_EQ(AmbitAccess::kMaxFileSize, text.size());
  WriteSettings(text);
  EXPECT_TRUE(Switch("NetworkAdapter.IndentXML"));
  EXPECT_FALSE(FileExists(LogPath()));
}

TEST_F(FeatureSettingsTest, LargerFileReadsOffAndIsLogged) {
  WriteSettings(SettingsOfSize(AmbitAccess::kMaxFileSize + 1));
  EXPECT_FALSE(Switch("NetworkAdapter.IndentXML"));
  EXPECT_EQ(std::vector<std::string>{"The settings file \"" + SettingsPath() +
                                     "\" is larger than 1048576 bytes; every setting reads "
                                     "off.  HRESULT=0x80004005"},
            LogEntries());
}

TEST_F(FeatureSettingsTest, ProblemIsLoggedWithContextWhenTheFileAsksForIt) {
  WriteSettings("[ZPSSettings]\nNetworkAdapter.EnableLogContext=1\ngarbage\n");
  EXPECT_EQ(std::vector<std::string>{"Parcelon:AmbitAccess::ReadSettingsFile(const "
                                     "FileIdentity&): The settings file \"" +
                                     SettingsPath() +
                                     "\" has malformed lines; they are ignored.  "
                                     "HRESULT=0x80004005"},
            LogEntries());
}

TEST_F(FeatureSettingsTest, FolderInPlaceOfTheFileReadsOff) {
  ASSERT_TRUE(CreateFolders(SettingsPath()));
  AmbitAccess::Reload();
  EXPECT_FALSE(Switch("NetworkAdapter.IndentXML"));
  EXPECT_FALSE(FileExists(LogPath()));
}

TEST_F(FeatureSettingsTest, ReadsWhileReloadingSeeWholeSettings) {
  WriteSettings("[ZPSSettings]\nNetworkAdapter.IndentXML=1\nNetworkAdapter.PDFChunk=700\n");
  std::atomic<int> wrong{0};
  std::vector<std::thread> readers;
  for (int t = 0; t < 3; ++t) {
    readers.emplace_back([&wrong] {
      for (int i = 0; i < 20000; ++i) {
        if (!Switch("NetworkAdapter.IndentXML") || Number("NetworkAdapter.PDFChunk") != 700)
          ++wrong;
      }
    });
  }
  for (int i = 0; i < 200; ++i) AmbitAccess::Reload();
  for (auto& reader : readers) reader.join();
  EXPECT_EQ(0, wrong.load());
}

}  // namespace
}  // namespace parcelon::test
