// The setting of the form request tests: the reference host of a company from fixture text,
// registered as the host; its log folder, the settings file and the temporary folder in a scratch
// folder; forms made by the component; readers of the log, of written texts and of the request
// text (also for the component tests); and the log entry, fault and raised error helpers.
//
// The log is written with its context on ("NetworkAdapter.EnableLogContext"), so every entry
// reads "prefix: message  HRESULT=0x...".
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <regex>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "clienttools/XMLBuilder.h"
#include "component/NA_Form.h"
#include "interfaces/ParcelonInterfaces.h"
#include "diagnostics/FeatureSettings.h"
#include "diagnostics/Logger.h"
#include "platform/Bstr.h"
#include "platform/CodePage.h"
#include "platform/ComError.h"
#include "platform/Paths.h"
#include "refhost/Fixture.h"
#include "refhost/ReferenceHost.h"
#include "support/TestSupport.h"

namespace parcelon::test {

// The tail of every message of an optional element that could not be read.
inline const std::string kSkipping = "  Skipping this optional element.";

// A log entry: the method's prefix, the message and the code.
inline std::string Entry(const std::string& prefix, const std::string& message, const std::string& hr = "0x80004005") {
  return prefix + message + "  HRESULT=" + hr;
}

// The text a builder holds.
inline std::string TextOf(const XMLBuilder& builder) {
  return std::string(builder.Buffer()->GetData(), builder.Buffer()->GetLength());
}

// What `write` writes on a new builder of `depth`; `write` must return `expected`.
template <class Write>
std::string Written(HRESULT expected, Write write, uint32_t depth = 0) {
  XMLBuilder builder(depth, 4096);
  EXPECT_EQ(expected, write(builder));
  return TextOf(builder);
}

// The code of the ComError that `action` raises; S_OK for none.
template <class Action>
HRESULT ErrorRaisedBy(Action action) {
  try {
    action();
  } catch (const ComError& error) {
    return error.Error();
  }
  return S_OK;
}

// `text` with each `from` line given as `to` (a removal for an empty `to`).
inline std::string Edited(std::string text, const std::vector<std::pair<std::string, std::string>>& edits) {
  for (const auto& [from, to] : edits) {
    const size_t at = ("\n" + text).find("\n" + from);
    if (at == std::string::npos) {
      ADD_FAILURE() << "no line " << from;
      continue;
    }
    text.replace(at, from.size(), to);
  }
  return text;
}

// `text` without the lines `removed` (each given with its line feed).
inline std::string WithoutLines(const std::string& text, const std::vector<std::string>& removed) {
  std::vector<std::pair<std::string, std::string>> edits;
  for (const std::string& line : removed) edits.push_back({line, ""});
  return Edited(text, edits);
}

// `xml` with every "trnUID" value, which is new for each request, as "*"; fails the test when a
// value is not a well-formed identifier.
inline std::string WithoutTrnUIDs(const std::string& xml) {
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

// `hr` as the log writes it ("0x80004005").
inline std::string HexCode(HRESULT hr) {
  char text[16];
  std::snprintf(text, sizeof text, "%#lx", static_cast<unsigned long>(static_cast<uint32_t>(hr)));
  return text;
}

// A fault of the reference host, as the failure tables give it: the operation, the record it is
// limited to (none: every record) and the code. An interface name alone ("ITerm2") makes that
// interface unavailable instead.
struct HostFault {
  const char* operation;
  std::optional<LONG> record;
  HRESULT hr;
};

// The whole text of a form aggregate of `kind` ("Invoice") with the company block `company` and
// the detail aggregate holding `detail`.
inline std::string FormText(const std::string& kind, const std::string& detail, const std::string& company) {
  return "<" + kind + "Form>\n" + company + "<" + kind + "Detail>\n" + detail + "</" + kind + "Detail>\n</" + kind +
         "Form>\n";
}

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

  // Makes `fault` happen.
  void Inject(const HostFault& fault) {
    if (std::string(fault.operation).find("::") == std::string::npos)
      ASSERT_TRUE(Faults().MakeUnavailable(fault.operation)) << fault.operation;
    else
      ASSERT_TRUE(Faults().Fail(fault.operation, fault.hr, fault.record)) << fault.operation;
  }

  // Clears the faults and the log, for the next case of a table.
  void StartCase() {
    Faults().Clear();
    CNALogger::ResetForTesting();
    std::remove((LogFolder() + "NALog.log").c_str());
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
    std::istringstream text(ReadFile(LogFolder() + "NALog.log"));
    std::vector<std::string> entries;
    for (std::string line; std::getline(text, line);) {
      if (!line.empty() && line.back() == '\r') line.pop_back();
      if (line.compare(0, 3, "   ") == 0) entries.push_back(line.substr(3));
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

 private:
  ScratchFolder scratch_;
  std::optional<ScopedEnv> settingsVariable_;
  std::optional<ScopedEnv> tempVariable_;
  std::optional<ScopedEnv> tmpVariable_;
  std::unique_ptr<refhost::ReferenceHost> host_;
};

}  // namespace parcelon::test
