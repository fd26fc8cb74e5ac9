// Fake host services for the diagnostics tests (folders, message boxes, file redirection), and a
// fixture that registers them, points settings, log and temporary folder at a scratch folder.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <optional>
#include <regex>
#include <string>
#include <vector>

#include "diagnostics/FeatureSettings.h"
#include "diagnostics/Logger.h"
#include "host/HostServices.h"
#include "platform/CodePage.h"
#include "support/FakeHostValues.h"
#include "platform/Paths.h"
#include "support/TestSupport.h"

namespace parcelon::test {

// The line end of a text-mode file on this target, and the user's folders for settings and state.
#ifdef _WIN32
inline constexpr const char* kEol = "\r\n";
inline constexpr const char* kConfigVariable = "APPDATA";
inline constexpr const char* kStateVariable = "LOCALAPPDATA";
inline constexpr const char* kUserFolder = "Parcelon";
#else
inline constexpr const char* kEol = "\n";
inline constexpr const char* kConfigVariable = "XDG_CONFIG_HOME";
inline constexpr const char* kStateVariable = "XDG_STATE_HOME";
inline constexpr const char* kUserFolder = "parcelon";
#endif

// `text` with each "\n" written as this target's text-mode line end.
inline std::string WithEol(const std::string& text) {
  std::string out;
  for (char c : text) {
    if (c == '\n')
      out += kEol;
    else
      out += c;
  }
  return out;
}

inline std::string ToAnsi(BSTR text) {
  std::string out;
  WideToAnsi(text, SysStringLen(text), out);
  return out;
}

// Hands out one existing object.
class FakeClassFactory : public FakeComObject<IClassFactory> {
 public:
  explicit FakeClassFactory(IUnknown* object) : object_(object) {}
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** ppv) override {
    if (outer) return CLASS_E_NOAGGREGATION;
    return object_->QueryInterface(riid, ppv);
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

 private:
  IUnknown* object_;
};

// Registers `object` as the host's class `clsid` for the scope.
class ScopedClass {
 public:
  ScopedClass(const CLSID& clsid, IUnknown* object) : factory_(object) {
    EXPECT_EQ(S_OK, CoRegisterClassObject(clsid, &factory_, CLSCTX_INPROC_SERVER,
                                          REGCLS_MULTIPLEUSE, &cookie_));
  }
  ~ScopedClass() { CoRevokeClassObject(cookie_); }
  ScopedClass(const ScopedClass&) = delete;
  ScopedClass& operator=(const ScopedClass&) = delete;

 private:
  FakeClassFactory factory_;
  DWORD cookie_ = 0;
};

class FakeFolderLocator : public FakeComObject<IFolderLocator> {
 public:
  HRESULT STDMETHODCALLTYPE GetFolder(LONG kind, BSTR* folder) override {
    kinds.push_back(kind);
    if (FAILED(result)) return result;
    *folder = MakeBstr(this->folder).Detach();
    return S_OK;
  }
  std::string folder;
  HRESULT result = S_OK;
  std::vector<LONG> kinds;
};

class FakeFolderService : public FakeComObject<IFolderService> {
 public:
  HRESULT STDMETHODCALLTYPE GetFolderLocator(IFolderLocator** out) override {
    locator.AddRef();
    *out = &locator;
    return S_OK;
  }
  FakeFolderLocator locator;
};

class FakeMessageBox : public FakeComObject<IMessageBoxService> {
 public:
  struct Shown {
    std::string text;
    std::string caption;
    LONG style;
    bool ownedByMainWindow;
  };
  HRESULT STDMETHODCALLTYPE ShowMessage(BSTR text, BSTR caption, LONG style,
                                        VARIANT_BOOL ownedByMainWindow) override {
    shown.push_back({ToAnsi(text), ToAnsi(caption), style, ownedByMainWindow == VARIANT_TRUE});
    return S_OK;
  }
  std::vector<Shown> shown;
};

// Maps the paths of its table, and every other path to itself.
class FakeFileRedirection : public FakeComObject<IFileRedirectionService> {
 public:
  HRESULT STDMETHODCALLTYPE MapPath(BSTR path, BSTR* mapped) override {
    if (FAILED(result)) return result;
    *mapped = MakeBstr(Map(ToAnsi(path))).Detach();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Rename(BSTR from, BSTR to) override {
    if (FAILED(result)) return result;
    return std::rename(Map(ToAnsi(from)).c_str(), Map(ToAnsi(to)).c_str()) == 0 ? S_OK : E_FAIL;
  }
  HRESULT STDMETHODCALLTYPE Remove(BSTR path) override {
    if (FAILED(result)) return result;
    return std::remove(Map(ToAnsi(path)).c_str()) == 0 ? S_OK : E_FAIL;
  }
  std::string Map(const std::string& path) const {
    const auto found = table.find(path);
    return found == table.end() ? path : found->second;
  }
  std::map<std::string, std::string> table;
  HRESULT result = S_OK;
};

// Each test starts with: COM initialised (Windows), the fake folder service naming the folder
// "logs" of a scratch folder, the fake message box service, the settings file "ZPSSettings.aov"
// of the scratch folder (absent until written), TEMP and TMP at its folder "temp", and a logger
// that looks for its folder again.
class DiagnosticsTest : public ::testing::Test {
 protected:
  void SetUp() override {
#ifdef _WIN32
    ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
#endif
    folders_.locator.folder = scratch_.File("logs");
    folderClass_.emplace(host::CLSID_FolderService, &folders_);
    messageBoxClass_.emplace(host::CLSID_MessageBoxService, &messageBoxes_);
    settingsVariable_.emplace(AmbitAccess::kPathVariable, SettingsPath().c_str());
    ASSERT_TRUE(CreateFolders(TempPath()));
    tempVariable_.emplace("TEMP", TempPath().c_str());
    tmpVariable_.emplace("TMP", TempPath().c_str());
    AmbitAccess::Reload();
    CNALogger::ResetForTesting();
  }

  void TearDown() override {
    CNALogger::ResetForTesting();
    redirectionClass_.reset();
    messageBoxClass_.reset();
    folderClass_.reset();
#ifdef _WIN32
    CoUninitialize();
#endif
  }

  std::string SettingsPath() const { return scratch_.File(AmbitAccess::kFileName); }
  // The temporary folder, with its separator.
  std::string TempPath() const { return scratch_.File("temp") + kPathSeparator; }
  std::string LogFolder() const { return scratch_.File("logs") + kPathSeparator; }
  std::string LogPath() const { return LogFolder() + "NALog.log"; }
  std::string OldLogPath() const { return LogFolder() + "NAOldLog.log"; }

  // Writes the settings file and has it read at once.
  void WriteSettings(const std::string& text) {
    WriteFile(SettingsPath(), text);
    AmbitAccess::Reload();
  }

  // Removes the host's folder service, as for a host that has none.
  void WithoutFolderService() { folderClass_.reset(); }
  void WithoutMessageBoxService() { messageBoxClass_.reset(); }
  void WithFileRedirection() {
    redirectionClass_.emplace(host::CLSID_FileRedirectionService, &redirection_);
  }

  // The log's failure entries: each is a time stamp line and a line with three spaces and the
  // entry. Returns the entry lines (without the three spaces and the line end), checking the
  // layout of each.
  std::vector<std::string> LogEntries() const {
    std::string text = ReadFile(LogPath());
    std::vector<std::string> entries;
    std::string eol = kEol;
    size_t at = 0;
    while (at < text.size()) {
      const size_t stampEnd = text.find(eol, at);
      const size_t entryEnd = stampEnd == std::string::npos ? stampEnd : text.find(eol, stampEnd + eol.size());
      if (entryEnd == std::string::npos) {
        ADD_FAILURE() << "unterminated log entry: " << text.substr(at);
        break;
      }
      EXPECT_TRUE(IsCtimeStamp(text.substr(at, stampEnd - at))) << text.substr(at, stampEnd - at);
      const std::string line = text.substr(stampEnd + eol.size(), entryEnd - stampEnd - eol.size());
      EXPECT_EQ("   ", line.substr(0, 3));
      entries.push_back(line.substr(3));
      at = entryEnd + eol.size();
    }
    return entries;
  }

  // "Sat Mar 07 14:02:11 2009"
  static bool IsCtimeStamp(const std::string& stamp);

  ScratchFolder scratch_;
  FakeFolderService folders_;
  FakeMessageBox messageBoxes_;
  FakeFileRedirection redirection_;

 private:
  std::optional<ScopedClass> folderClass_;
  std::optional<ScopedClass> messageBoxClass_;
  std::optional<ScopedClass> redirectionClass_;
  std::optional<ScopedEnv> settingsVariable_;
  std::optional<ScopedEnv> tempVariable_;
  std::optional<ScopedEnv> tmpVariable_;
};

inline bool DiagnosticsTest::IsCtimeStamp(const std::string& stamp) {
  static const std::regex ctime(
      "(Sun|Mon|Tue|Wed|Thu|Fri|Sat) (Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec) "
      "[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2} [0-9]{4}");
  return std::regex_match(stamp, ctime);
}

}  // namespace parcelon::test
