// The feature settings file: sections, keys and values as read, its bounds, the problems it logs,
// and when it is read again.
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

// What the settings in memory give for the keys these tests write.
std::string Seen() {
  return "indent " + std::to_string(Switch("NetworkAdapter.IndentXML")) + " dump " +
         std::to_string(Switch("NetworkAdapter.DumpAttachment")) + " chunk " +
         std::to_string(Number("NetworkAdapter.PDFChunk"));
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

class FeatureSettingsTest : public DiagnosticsTest {
 protected:
  // The log entry of a problem with the settings file.
  std::string Problem(const std::string& problem) const {
    return "The settings file \"" + SettingsPath() + "\" " + problem + "  HRESULT=0x80004005";
  }
};

TEST_F(FeatureSettingsTest, MissingFileOrAFolderInItsPlaceReadsEverythingOffSilently) {
  EXPECT_FALSE(FileExists(SettingsPath()));
  EXPECT_EQ("indent 0 dump 0 chunk 0", Seen());
  EXPECT_EQ("", AmbitAccess::GetURLAddress("EmailService.FormGatewayURL"));
  ASSERT_TRUE(CreateFolders(SettingsPath()));
  AmbitAccess::Reload();
  EXPECT_EQ("indent 0 dump 0 chunk 0", Seen());
  EXPECT_FALSE(FileExists(LogPath()));
}

// Each file, what it reads as, and the problems it logs.
TEST_F(FeatureSettingsTest, FilesReadAsTheyShould) {
  std::string binary;
  for (int i = 0; i < 4096; ++i) binary += char((i * 7919) % 256);
  // Read in pieces of 199 characters, the end of the long line would turn a switch on.
  const std::string longLine = "EmailService.Long=" + std::string(199 - 18, 'u') + "NetworkAdapter.DumpAttachment=1\n";
  const std::string longer = "has lines longer than 196 characters; they are ignored.";
  const std::string malformed = "has malformed lines; they are ignored.";
#ifdef _WIN32
  // The profile API reads only the lines of the two sections, and random bytes hold neither.
  const std::vector<std::string> binaryProblems;
#else
  const std::vector<std::string> binaryProblems = {malformed, longer};
#endif
  const struct {
    const char* what;
    std::string settings, seen;
    std::vector<std::string> problems;
  } cases[] = {
      {"keys missing", "[ZPSSettings]\nNetworkAdapter.IndentXML=1\n", "indent 1 dump 0 chunk 0", {}},
      {"keys and sections without case",
       "[zpssettings]\nnetworkadapter.indentxml=1\nNETWORKADAPTER.PDFCHUNK=12\n", "indent 1 dump 0 chunk 12", {}},
      {"other sections", "NetworkAdapter.IndentXML=1\n[Other]\nNetworkAdapter.IndentXML=1\n[URLs]\n"
       "NetworkAdapter.IndentXML=1\n[ZPSSettings]\nNetworkAdapter.DumpAttachment=1\n", "indent 0 dump 1 chunk 0", {}},
      {"comments and blank lines", "; settings for support\n\n[ZPSSettings]\n# indentation\n  \n"
       "NetworkAdapter.IndentXML = 1 ; two spaces a level\n;NetworkAdapter.DumpAttachment=1\n",
       "indent 1 dump 0 chunk 0", {}},
      {"Windows line ends", "[ZPSSettings]\r\nNetworkAdapter.IndentXML=1\r\nNetworkAdapter.PDFChunk=42\r\n",
       "indent 1 dump 0 chunk 42", {}},
      {"last of repeated keys", "[ZPSSettings]\nNetworkAdapter.PDFChunk=1\nNetworkAdapter.PDFChunk=2\n",
       "indent 0 dump 0 chunk 2", {}},
      {"garbage lines", "[ZPSSettings]\nthis is garbage\nNetworkAdapter.IndentXML=1\nNetworkAdapter.DumpAttachment\n",
       "indent 1 dump 0 chunk 0", {malformed}},
      {"binary", binary, "indent 0 dump 0 chunk 0", binaryProblems},
      {"longer line", "[ZPSSettings]\n" + longLine + "NetworkAdapter.IndentXML=1\n", "indent 1 dump 0 chunk 0",
       {longer}},
      {"huge line", "[ZPSSettings]\nNetworkAdapter.PDFChunk=" + std::string(100000, '1') +
       "\nNetworkAdapter.IndentXML=1\n", "indent 1 dump 0 chunk 0", {longer}},
      {"size bound", SettingsOfSize(AmbitAccess::kMaxFileSize), "indent 1 dump 0 chunk 0", {}},
      {"one byte beyond the size bound", SettingsOfSize(AmbitAccess::kMaxFileSize + 1), "indent 0 dump 0 chunk 0",
       {"is larger than 1048576 bytes; every setting reads off."}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    std::remove(LogPath().c_str());
    WriteSettings(c.settings);
    EXPECT_EQ(c.seen, Seen());
    std::vector<std::string> entries;
    for (const std::string& problem : c.problems) entries.push_back(Problem(problem));
    EXPECT_EQ(entries, FileExists(LogPath()) ? LogEntries() : std::vector<std::string>());
  }
  EXPECT_EQ(AmbitAccess::kMaxFileSize, SettingsOfSize(AmbitAccess::kMaxFileSize).size());
}

TEST_F(FeatureSettingsTest, SectionAndKeyLookupsWithoutCaseOrWithout) {
  WriteSettings("[ZPSSettings]\nNetworkAdapter.IndentXML=1\n[Other]\nNetworkAdapter.DumpAttachment=1\n");
  EXPECT_TRUE(AmbitAccess::GetFeatureParamAsBool("ZPSSETTINGS", "NetworkAdapter.IndentXml", nullptr));
  EXPECT_FALSE(AmbitAccess::GetFeatureParamAsBool("Other", "NetworkAdapter.DumpAttachment", nullptr));
  EXPECT_FALSE(Switch(""));
  EXPECT_FALSE(AmbitAccess::GetFeatureParamAsBool(kSection, nullptr, nullptr));
  EXPECT_EQ(0, AmbitAccess::GetFeatureParamAsInt(kSection, nullptr, nullptr));
  EXPECT_FALSE(AmbitAccess::GetFeatureParamAsBool(nullptr, "NetworkAdapter.IndentXML", nullptr));
}

// Only the 26 ASCII capitals fold: not their neighbours '@' and '[' (whose lower-case neighbours
// are '`' and '{'), nor letters beyond ASCII.
TEST_F(FeatureSettingsTest, OnlyAsciiLettersCompareWithoutCase) {
  WriteSettings("[ZPSSettings]\nAZ@[\xC0.Key.With.Seventeen=1\n");
  for (const char* found : {"AZ@[\xC0.Key.With.Seventeen", "az@[\xC0.KEY.WITH.SEVENTEEN"})
    EXPECT_TRUE(Switch(found)) << found;
  for (const char* other : {"AZ`[\xC0.Key.With.Seventeen", "AZ@{\xC0.Key.With.Seventeen", "AZ@[\xE0.Key.With.Seventeen",
                            "AZ@[\xC0.Key.With.Seventeem", "AZ@[\xC0.Key.With.Seventee",
                            "AZ@[\xC0.Key.With.Seventeen."})
    EXPECT_FALSE(Switch(other)) << other;
}

TEST_F(FeatureSettingsTest, SwitchesReadTheAcceptedSpellings) {
  const auto read = [this](const std::string& value) {
    WriteSettings("[ZPSSettings]\nNetworkAdapter.IndentXML=" + value + "\n");
    return Switch("NetworkAdapter.IndentXML");
  };
  for (const char* on : {"1", "true", "TRUE", "True", "yes", "YES", "on", "On", "2", "-1", "+1", "  yes  ", "1 ; on"})
    EXPECT_TRUE(read(on)) << '"' << on << '"';
  for (const char* off : {"0", "false", "no", "off", "00", "maybe", "", "y", "t", "1x", "0x1", "truee", "1.0",
                          "99999999999", "\"1\""})
    EXPECT_FALSE(read(off)) << '"' << off << '"';
}

TEST_F(FeatureSettingsTest, NumbersAreDecimalIntsAndZeroForAnythingElse) {
  const std::pair<const char*, int> cases[] = {
      {"42", 42}, {"-17", -17}, {"+8", 8}, {"0", 0}, {"007", 7}, {" 1000 ", 1000}, {"2147483647", 2147483647},
      {"-2147483648", -2147483647 - 1}, {"2147483648", 0}, {"-2147483649", 0}, {"99999999999999999999", 0},
      {"12abc", 0}, {"abc", 0}, {"", 0}, {"1.5", 0}, {"0x10", 0}, {"+-3", 0}, {"--3", 0}, {"+", 0}, {"-", 0},
      {"1 2", 0}, {"true", 0},
  };
  for (const auto& [value, number] : cases) {
    WriteSettings(std::string("[ZPSSettings]\nNetworkAdapter.PDFChunk=") + value + "\n");
    EXPECT_EQ(number, Number("NetworkAdapter.PDFChunk")) << '"' << value << '"';
  }
}

TEST_F(FeatureSettingsTest, PeriodicCheckReloadsOnlyAChangedFile) {
  namespace fs = std::filesystem;
  // A time in whole seconds, which every file system keeps exactly.
  const fs::file_time_type written = std::chrono::floor<std::chrono::seconds>(
      fs::file_time_type::clock::now() - std::chrono::hours(1));
  const auto write = [&](const std::string& chunk, fs::file_time_type time) {
    WriteFile(SettingsPath(), "[ZPSSettings]\nNetworkAdapter.PDFChunk=" + chunk + "\n");
    fs::last_write_time(SettingsPath(), time);
  };
  write("1", written);
  AmbitAccess::Reload();

  // Same path, size and time: the settings in memory stand.
  write("2", written);
  AmbitAccess::CheckAtNextRead();
  EXPECT_EQ(1, Number("NetworkAdapter.PDFChunk"));

  // Another time.
  fs::last_write_time(SettingsPath(), written + std::chrono::seconds(10));
  AmbitAccess::CheckAtNextRead();
  EXPECT_EQ(2, Number("NetworkAdapter.PDFChunk"));

  // Another size.
  write("33", written + std::chrono::seconds(10));
  AmbitAccess::CheckAtNextRead();
  EXPECT_EQ(33, Number("NetworkAdapter.PDFChunk"));

  // Same size and time once more: the check keeps what it has, Reload reads the file anyway.
  write("34", written + std::chrono::seconds(10));
  AmbitAccess::CheckAtNextRead();
  EXPECT_EQ(33, Number("NetworkAdapter.PDFChunk"));
  AmbitAccess::Reload();
  EXPECT_EQ(34, Number("NetworkAdapter.PDFChunk"));

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

// Reload reads the variable again too.
TEST_F(FeatureSettingsTest, WithoutTheVariableTheUserConfigFolderIsRead) {
  WriteSettings("[ZPSSettings]\nNetworkAdapter.IndentXML=1\n");
  const std::string folder = scratch_.File("config") + kPathSeparator + kUserFolder;
  ASSERT_TRUE(CreateFolders(folder));
  WriteFile(folder + kPathSeparator + "ZPSSettings.aov", "[ZPSSettings]\nNetworkAdapter.PDFChunk=9\n");
  ScopedEnv config(kConfigVariable, scratch_.File("config").c_str());
  ScopedEnv variable(AmbitAccess::kPathVariable, nullptr);
  AmbitAccess::Reload();
  EXPECT_EQ("indent 0 dump 0 chunk 9", Seen());
}

TEST_F(FeatureSettingsTest, UrlsAreReadFromTheirSection) {
  WriteSettings(
      "[ZPSSettings]\nEmailService.FormGatewayURL=https://wrong.example.com/\n[URLs]\n"
      "EmailService.FormGatewayURL = https://forms.example.com/gateway?a=1;b=2\n"
      "emailservice.formgatewayattachurl=https://forms.example.com/attach\n");
  EXPECT_EQ("https://forms.example.com/gateway?a=1;b=2", AmbitAccess::GetURLAddress("EmailService.FormGatewayURL"));
  EXPECT_EQ("https://forms.example.com/attach", AmbitAccess::GetURLAddress("EmailService.FormGatewayAttachURL"));
  EXPECT_EQ("", AmbitAccess::GetURLAddress("EmailService.Other"));
  EXPECT_EQ("", AmbitAccess::GetURLAddress(nullptr));
}

TEST_F(FeatureSettingsTest, LinesUpToTheBoundAreReadLongerOnesIgnored) {
  const std::string key = "EmailService.Long=";
  const std::string url(AmbitAccess::kMaxLineLength - key.size(), 'u');
  WriteSettings("[URLs]\n" + key + url + "\n");
  EXPECT_EQ(url, AmbitAccess::GetURLAddress("EmailService.Long"));
  EXPECT_FALSE(FileExists(LogPath()));
  WriteSettings("[URLs]\n" + key + url + "u\n");
  EXPECT_EQ("", AmbitAccess::GetURLAddress("EmailService.Long"));
  EXPECT_EQ(std::vector<std::string>{Problem("has lines longer than 196 characters; they are ignored.")},
            LogEntries());
}

TEST_F(FeatureSettingsTest, ProblemIsLoggedWithContextWhenTheFileAsksForIt) {
  WriteSettings("[ZPSSettings]\nNetworkAdapter.EnableLogContext=1\ngarbage\n");
  EXPECT_EQ(std::vector<std::string>{"Parcelon:AmbitAccess::ReadSettingsFile(const FileIdentity&): " +
                                     Problem("has malformed lines; they are ignored.")},
            LogEntries());
}

TEST_F(FeatureSettingsTest, ReadsWhileReloadingSeeWholeSettings) {
  WriteSettings("[ZPSSettings]\nNetworkAdapter.IndentXML=1\nNetworkAdapter.PDFChunk=700\n");
  std::atomic<int> wrong{0};
  std::vector<std::thread> readers;
  for (int t = 0; t < 3; ++t) {
    readers.emplace_back([&wrong] {
      for (int i = 0; i < 20000; ++i)
        if (!Switch("NetworkAdapter.IndentXML") || Number("NetworkAdapter.PDFChunk") != 700) ++wrong;
    });
  }
  for (int i = 0; i < 200; ++i) AmbitAccess::Reload();
  for (auto& reader : readers) reader.join();
  EXPECT_EQ(0, wrong.load());
}

}  // namespace
}  // namespace parcelon::test
