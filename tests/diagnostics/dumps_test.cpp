// The diagnostic dumps of attachments and response cookies: their switches, file names, and the
// log lines of dumps that cannot be written.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "diagnostics/Dumps.h"
#include "diagnostics/FakeHost.h"

namespace parcelon::test {
namespace {

using DumpsTest = DiagnosticsTest;

// The names of the files in `folder`, sorted.
std::vector<std::string> FileNames(const std::string& folder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

bool IsUniqueName(const std::string& name, const std::string& prefix, const std::string& suffix) {
  if (name.size() != prefix.size() + 6 + suffix.size()) return false;
  if (name.compare(0, prefix.size(), prefix) != 0) return false;
  if (name.compare(prefix.size() + 6, suffix.size(), suffix) != 0) return false;
  for (size_t i = prefix.size(); i < prefix.size() + 6; ++i)
    if (!std::isalnum(static_cast<unsigned char>(name[i]))) return false;
  return true;
}

const std::string kPdf = "%PDF-1.4 \x01\x02\xff bytes";

TEST_F(DumpsTest, SwitchedOffWritesNothing) {
  EXPECT_EQ(S_OK, DumpAttachment(kPdf.data(), kPdf.size(), 1, "pdf"));
  EXPECT_EQ(S_OK, DumpResponseHeaderCookie("messageid=42"));
  EXPECT_TRUE(FileNames(TempPath()).empty());
  EXPECT_FALSE(FileExists(LogPath()));
}

TEST_F(DumpsTest, FixedNameTellsTypeAndExtension) {
  WriteSettings("[ZPSSettings]\nNetworkAdapter.DumpAttachment=1\n");
  const struct {
    long formType;
    const char* extension;
    const char* name;
  } cases[] = {
      {1, "pdf", "na2003_Invoice.pdf"},    {2, "pdf", "na2003_Estimate.pdf"},   {3, "pdf", "na2003_Statement.pdf"},
      {0, "pdf", "na2003_Attachment.pdf"}, {4, "pdf", "na2003_Attachment.pdf"}, {-1, "pdf", "na2003_Attachment.pdf"},
      {1, "", "na2003_Invoice.pdf"},       {1, nullptr, "na2003_Invoice.pdf"},  {2, "doc", "na2003_Estimate.doc"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    for (const std::string& name : FileNames(TempPath())) std::remove((TempPath() + name).c_str());
    EXPECT_EQ(S_OK, DumpAttachment(kPdf.data(), kPdf.size(), c.formType, c.extension));
    EXPECT_EQ(std::vector<std::string>{c.name}, FileNames(TempPath()));
    EXPECT_EQ(kPdf, ReadFile(TempPath() + c.name));
  }
}

// Two dumps of a kind: under its fixed name the second replaces the first; with
// DoNotOverwriteDump each has a file of its own.
TEST_F(DumpsTest, SecondDumpReplacesTheFirstUnlessEachHasItsOwnFile) {
  const auto attachment = [](const std::string& data) { return DumpAttachment(data.data(), data.size(), 1, "pdf"); };
  const auto cookie = [](const std::string& data) { return DumpResponseHeaderCookie(data.c_str()); };
  const std::string own = "NetworkAdapter.DoNotOverwriteDump=1\n";
  const struct {
    std::string settings;
    std::function<HRESULT(const std::string&)> dump;
    const char* prefix;  // the fixed name, or the beginning of the unique names
    const char* suffix;  // empty for a fixed name
  } cases[] = {
      {"DumpAttachment=1\n", attachment, "na2003_Invoice.pdf", ""},
      {"DumpAttachment=1\n" + own, attachment, "NARequest", "_Invoice.pdf"},
      {"DumpResponseHeaderCookie=1\n", cookie, "responseHeaderCookie.txt", ""},
      {"DumpResponseHeaderCookie=1\n" + own, cookie, "NAResponseHeaderCookie", ".txt"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.settings);
    for (const std::string& name : FileNames(TempPath())) std::remove((TempPath() + name).c_str());
    WriteSettings("[ZPSSettings]\nNetworkAdapter." + c.settings);
    EXPECT_EQ(S_OK, c.dump("first"));
    EXPECT_EQ(S_OK, c.dump("second; path=/"));
    std::vector<std::string> contents;
    for (const std::string& name : FileNames(TempPath())) {
      EXPECT_TRUE(*c.suffix ? IsUniqueName(name, c.prefix, c.suffix) : name == c.prefix) << name;
      contents.push_back(ReadFile(TempPath() + name));
    }
    std::sort(contents.begin(), contents.end());
    const std::vector<std::string> kept = {"first", "second; path=/"};
    EXPECT_EQ(*c.suffix ? kept : std::vector<std::string>{kept[1]}, contents);
  }
}

TEST_F(DumpsTest, NoAttachmentOrCookieIsAnEmptyFile) {
  WriteSettings(
      "[ZPSSettings]\nNetworkAdapter.DumpAttachment=1\nNetworkAdapter.DumpResponseHeaderCookie=1\n");
  EXPECT_EQ(S_OK, DumpAttachment(nullptr, 0, 3, "pdf"));
  EXPECT_EQ(S_OK, DumpResponseHeaderCookie(nullptr));
  const std::vector<std::string> names = {"na2003_Statement.pdf", "responseHeaderCookie.txt"};
  EXPECT_EQ(names, FileNames(TempPath()));
  for (const std::string& name : names) EXPECT_EQ("", ReadFile(TempPath() + name)) << name;
}

TEST_F(DumpsTest, EachSwitchTurnsOnItsOwnDump) {
  WriteSettings("[ZPSSettings]\nNetworkAdapter.DumpResponseHeaderCookie=1\n");
  DumpAttachment(kPdf.data(), kPdf.size(), 1, "pdf");
  EXPECT_TRUE(FileNames(TempPath()).empty());
  WriteSettings("[ZPSSettings]\nNetworkAdapter.DumpAttachment=1\n");
  DumpResponseHeaderCookie("messageid=1");
  EXPECT_TRUE(FileNames(TempPath()).empty());
}

TEST_F(DumpsTest, UnwritableTemporaryFolderIsLogged) {
  WriteFile(scratch_.File("blocker"), "");
  ScopedEnv temp("TEMP", (scratch_.File("blocker") + kPathSeparator + "temp").c_str());
  ScopedEnv tmp("TMP", (scratch_.File("blocker") + kPathSeparator + "temp").c_str());
  const std::string attachment = "Unable to open attachment dump file  HRESULT=0x80004005";
  const std::string cookie = "Unable to open response header cookie dump file  HRESULT=0x80004005";
  const struct {
    bool attachment;
    const char* moreSettings;
    std::string entry;
  } cases[] = {
      {true, "", attachment},
      {true, "NetworkAdapter.DoNotOverwriteDump=1\n", attachment},
      {true, "NetworkAdapter.EnableLogContext=1\n", "Parcelon:CNA_Forms::DumpAttachment: " + attachment},
      {false, "", cookie},
      {false, "NetworkAdapter.DoNotOverwriteDump=1\n", cookie},
      {false, "NetworkAdapter.EnableLogContext=1\n",
       "NetworkAdapterManager:CNetworkAdapter::DumpResponseHeaderCookie: " + cookie},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.entry + " " + c.moreSettings);
    std::remove(LogPath().c_str());
    WriteSettings(std::string("[ZPSSettings]\nNetworkAdapter.") +
                  (c.attachment ? "DumpAttachment" : "DumpResponseHeaderCookie") + "=1\n" + c.moreSettings);
    EXPECT_EQ(E_FAIL, c.attachment ? DumpAttachment(kPdf.data(), kPdf.size(), 1, "pdf")
                                   : DumpResponseHeaderCookie("messageid=42"));
    EXPECT_EQ(std::vector<std::string>{c.entry}, LogEntries());
  }
}

TEST_F(DumpsTest, DumpGoesThroughTheHostsFileRedirection) {
  WithFileRedirection();
  WriteSettings("[ZPSSettings]\nNetworkAdapter.DumpAttachment=1\n");
  redirection_.table[TempPath() + "na2003_Invoice.pdf"] = scratch_.File("redirected.pdf");
  EXPECT_EQ(S_OK, DumpAttachment(kPdf.data(), kPdf.size(), 1, "pdf"));
  EXPECT_EQ(kPdf, ReadFile(scratch_.File("redirected.pdf")));
  EXPECT_TRUE(FileNames(TempPath()).empty());
}

#ifndef _WIN32
TEST_F(DumpsTest, ShortWritesAreLogged) {
  WithFileRedirection();
  WriteSettings(
      "[ZPSSettings]\nNetworkAdapter.DumpAttachment=1\nNetworkAdapter.DumpResponseHeaderCookie=1\n");
  redirection_.table[TempPath() + "na2003_Invoice.pdf"] = "/dev/full";
  redirection_.table[TempPath() + "responseHeaderCookie.txt"] = "/dev/full";
  EXPECT_EQ(E_FAIL, DumpAttachment(kPdf.data(), kPdf.size(), 1, "pdf"));
  const std::string big(100000, 'c');
  EXPECT_EQ(E_FAIL, DumpResponseHeaderCookie(big.c_str()));
  const std::vector<std::string> expected = {
      "Unable to dump full lenght of attachment file  HRESULT=0x80004005",
      "Unable to dump full length of response header cookie file  HRESULT=0x80004005"};
  EXPECT_EQ(expected, LogEntries());
}
#endif

}  // namespace
}  // namespace parcelon::test
