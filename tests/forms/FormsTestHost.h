// The setting of the form request tests: the reference host of a company from fixture text,
// registered as the host; its log folder, the settings file and the temporary folder in a scratch
// folder; forms made by the component; and readers of the log and the request text.
//
// The log is written with its context on ("NetworkAdapter.EnableLogContext"), so every entry
// reads "prefix: message  HRESULT=0x...".
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <regex>
#include <string>
#include <vector>

#include "component/NA_Form.h"
#include "component/ParcelonInterfaces.h"
#include "diagnostics/FeatureSettings.h"
#include "diagnostics/Logger.h"
#include "platform/Bstr.h"
#include "platform/CodePage.h"
#include "platform/Paths.h"
#include "refhost/Fixture.h"
#include "refhost/ReferenceHost.h"
#include "support/TestSupport.h"

namespace parcelon::test {

class FormsTest : public ::testing::Test {
 protected:
  void SetUp() override {
#ifdef _WIN32
    ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
#endif
    ASSERT_TRUE(CreateFolders(TempPath()));
    settingsVariable_.emplace(AmbitAccess::kPathVariable, SettingsPath().c_str());
    tempVariable_.emplace("TEMP", TempPath().c_str());
    tmpVariable_.emplace("TMP", TempPath().c_str());
    WriteSettings("");
    CNALogger::ResetForTesting();
  }

  void TearDown() override {
    host_.reset();
    CNALogger::ResetForTesting();
#ifdef _WIN32
    CoUninitialize();
#endif
  }

  // Loads the company of `fixture` and registers it as the host, its logs in the scratch folder.
  void UseCompany(const std::string& fixture) {
    auto company = std::make_shared<refhost::Company>();
    std::string error;
    ASSERT_EQ(S_OK, refhost::LoadFixtureText(fixture, "company.json", *company, error)) << error;
    host_ = std::make_unique<refhost::ReferenceHost>(std::move(company));
    host_->SetLogFolder(LogFolder());
    ASSERT_EQ(S_OK, host_->Register());
  }

  refhost::ReferenceHost& Host() { return *host_; }
  refhost::Faults& Faults() { return host_->GetFaults(); }

  // The company file of the host, as the add-in gives it.
  ICompanyFilePtr CompanyFile() {
    ICompanyFilePtr file;
    EXPECT_EQ(S_OK, host_->GetCompanyFile(file.ReleaseAndGetAddressOf()));
    return file;
  }

  // A new form of the component.
  static INA_Form7Ptr NewForm() {
    INA_Form7Ptr form;
    EXPECT_EQ(S_OK, CNA_Form::CreateInstance(IidOf<INA_Form7>(), form.ReleaseAndGetVoidAddress()));
    return form;
  }

  // Settings file content after the context switch of the log; read at once.
  void WriteSettings(const std::string& settings) {
    WriteFile(SettingsPath(), "[ZPSSettings]\nNetworkAdapter.EnableLogContext=1\n" + settings);
    AmbitAccess::Reload();
  }

  std::string SettingsPath() const { return scratch_.File(AmbitAccess::kFileName); }
  std::string TempPath() const { return scratch_.File("temp") + kPathSeparator; }
  std::string LogFolder() const { return scratch_.File("logs") + kPathSeparator; }
  // A path in the scratch folder.
  std::string ScratchFile(const std::string& name) const { return scratch_.File(name); }

  // The log's entries, each without its time stamp line and leading blanks.
  std::vector<std::string> LogEntries() const {
    const std::string text = ReadFile(LogFolder() + "NALog.log");
    std::vector<std::string> entries;
    size_t at = 0;
    while (at < text.size()) {
      size_t end = text.find('\n', at);
      if (end == std::string::npos) end = text.size();
      std::string line = text.substr(at, end - at);
      if (!line.empty() && line.back() == '\r') line.pop_back();
      if (line.compare(0, 3, "   ") == 0) entries.push_back(line.substr(3));
      at = end + 1;
    }
    return entries;
  }

  // The ANSI text of a BSTR that the caller gave up.
  static std::string Take(BSTR text) {
    const Bstr owned = Bstr::Attach(text);
    std::string out;
    WideToAnsi(owned.Get(), owned.Length(), out);
    return out;
  }

  // `xml` with every "trnUID" value, which is new for each request, as "*"; fails the test when a
  // value is not a well-formed identifier.
  static std::string WithoutTrnUIDs(const std::string& xml) {
    static const std::regex any(R"re(trnUID="([^"]*)")re");
    static const std::regex wellFormed(R"re([0-9A-F]{4}(-[0-9A-F]{4}){7})re");
    std::string out;
    auto last = xml.cbegin();
    for (std::sregex_iterator it(xml.begin(), xml.end(), any), end; it != end; ++it) {
      EXPECT_TRUE(std::regex_match((*it)[1].str(), wellFormed)) << (*it)[1].str();
      out.append(last, (*it)[0].first);
      out += "trnUID=\"*\"";
      last = (*it)[0].second;
    }
    out.append(last, xml.cend());
    return out;
  }

 private:
  ScratchFolder scratch_;
  std::optional<ScopedEnv> settingsVariable_;
  std::optional<ScopedEnv> tempVariable_;
  std::optional<ScopedEnv> tmpVariable_;
  std::unique_ptr<refhost::ReferenceHost> host_;
};

}  // namespace parcelon::test
