#include "diagnostics/Logger.h"

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <exception>
#include <iterator>
#include <mutex>
#include <string>
#include <sys/stat.h>

#include "diagnostics/FeatureSettings.h"
#include "diagnostics/HostMessageBox.h"
#include "diagnostics/RedirectedFiles.h"
#include "host/HostServices.h"
#include "platform/Bstr.h"
#include "platform/CodePage.h"
#include "platform/ComError.h"
#include "platform/Paths.h"

namespace {

constexpr const char* kLogName = "NALog.log";
constexpr const char* kOldLogName = "NAOldLog.log";

struct LogPaths {
  std::string log;
  std::string oldLog;
};

struct LogState {
  std::mutex mutex;
  LogPaths paths;
};

LogState& State() {
  static LogState state;
  return state;
}

// The host's folder for logs; empty when the host has no folder service or gives no folder.
std::string HostLogFolder() {
  const IFolderServicePtr service =
      parcelon::host::CreateHostService<IFolderService>(parcelon::host::CLSID_FolderService);
  if (!service) return {};
  std::string folder;
  try {
    IFolderLocatorPtr locator;
    ThrowIfFailed(service->GetFolderLocator(locator.ReleaseAndGetAddressOf()),
                  &IidOf<IFolderService>());
    if (!locator) return {};
    Bstr wide;
    ThrowIfFailed(locator->GetFolder(parcelon::host::kFolderKindLogs, wide.Out()),
                  &IidOf<IFolderLocator>());
    if (!parcelon::WideToAnsi(wide.Get(), wide.Length(), folder)) folder.clear();
  } catch (const ComError&) {
    // A failing host service counts as none.
    folder.clear();
  }
  return folder;
}

// The host's folder for logs, else the per-user state folder, created where missing; else the
// current directory.
LogPaths SetUpPaths() {
  std::string folder = HostLogFolder();
  if (folder.empty()) folder = parcelon::UserStateFolder();
  if (folder.empty()) return {kLogName, kOldLogName};
  parcelon::AppendSeparator(folder);
  parcelon::CreateFolders(folder);
  return {folder + kLogName, folder + kOldLogName};
}

LogPaths CurrentPaths() {
  LogState& state = State();
  std::lock_guard guard(state.mutex);
  if (state.paths.log.empty()) state.paths = SetUpPaths();
  return state.paths;
}

// The size of the file at `path`; -1 when it cannot be looked at.
long long FileSize(const std::string& path) {
#ifdef _WIN32
  struct _stat64 status;
  if (_stat64(path.c_str(), &status) != 0) return -1;
#else
  struct stat status;
  if (stat(path.c_str(), &status) != 0) return -1;
#endif
  return static_cast<long long>(status.st_size);
}

// Keeps one generation: a log beyond the rotation size becomes the old log. Failures are
// ignored; the entry then goes to the current log.
void Rotate(const parcelon::RedirectedFiles& files, const LogPaths& paths) {
  std::string mapped;
  if (!files.Map(paths.log.c_str(), mapped)) return;
  if (FileSize(mapped) > CNALogger::kRotationSize) {
    files.Remove(paths.oldLog.c_str());
    files.Rename(paths.log.c_str(), paths.oldLog.c_str());
  }
}

// Shows "Could not open the log file \"%s\"!\nIntended log entry: %s" with the log path and
// the entry, titled "Network Adapter".
void ReportUnwritableLog(const std::string& logPath, const char* entry) {
  const std::string text =
      "Could not open the log file \"" + logPath + "\"!\nIntended log entry: " + entry;
  parcelon::ShowMessageBox(text.c_str(), "Network Adapter", parcelon::host::kMessageBoxOk, true);
}

// Appends `first` and `second` by `format` to the log, each entry opening and closing the file.
// `entry` is what the user is shown when the log cannot be opened.
// Logging never raises to its caller: without memory for the paths the entry is lost.
void Append(const char* format, const char* first, const char* second, const char* entry) {
  try {
    const parcelon::RedirectedFiles files;
    const LogPaths paths = CurrentPaths();
    Rotate(files, paths);
    std::FILE* file = files.Open(paths.log.c_str(), "a");
    if (!file) {
      ReportUnwritableLog(paths.log, entry);
      return;
    }
    std::fprintf(file, format, first, second);
    std::fclose(file);
  } catch (const std::exception&) {
  }
}

std::tm LocalTime(std::time_t now) {
  std::tm local{};
#ifdef _WIN32
  localtime_s(&local, &now);
#else
  localtime_r(&now, &local);
#endif
  return local;
}

// The C runtime's ctime form, "Sat Mar 07 14:02:11 2009" and a line feed: English names and a
// two-digit day whatever the locale.
void FormatCtime(const std::tm& time, char (&out)[64]) {
  static constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  static constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                            "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const bool valid = time.tm_wday >= 0 && time.tm_wday < 7 && time.tm_mon >= 0 && time.tm_mon < 12;
  std::snprintf(out, sizeof out, "%s %s %02d %02d:%02d:%02d %d\n",
                valid ? kDays[time.tm_wday] : "???", valid ? kMonths[time.tm_mon] : "???",
                time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec, time.tm_year + 1900);
}

// Cuts a formatted entry that did not fit the buffer; it still ends in its line feed.
void BoundEntry(int length, char (&entry)[CNALogger::kEntrySize]) {
  if (length < 0) {
    std::snprintf(entry, sizeof entry, "\n");
  } else if (size_t(length) >= sizeof entry) {
    entry[sizeof entry - 2] = '\n';
    entry[sizeof entry - 1] = '\0';
  }
}

constexpr const char* kStatusNames[] = {
    "OENETSTATUS_OK",
    "OENETSTATUS_CANT_INIT",
    "OENETSTATUS_CANT_CONNECT",
    "OENETSTATUS_BAD_URL",
    "OENETSTATUS_CANT_SEND",
    "OENETSTATUS_CANT_GET_SIZE",
    "OENETSTATUS_READ_ERROR",
    "OENETSTATUS_CLOSE_ERROR",
    "OENETSTATUS_CANT_BUILD_REQUEST",
    "OENETSTATUS_CANT_STAGE_REQUEST",
    "OENETSTATUS_CANT_INIT_REQUEST (Perhaps you haven't completed the Internet Connection Setup "
    "in Ledgerine)",
    "OENETSTATUS_BUFFER_TOO_SHORT",
    "OENETSTATUS_BUFFER_ERROR",
    "OENETSTATUS_CANT_MAKE_TEMP_FILE",
    "OENETSTATUS_HTTP_400",
    "OENETSTATUS_HTTP_500",
    "OENETSTATUS_CANT_ADD_TRUSTED_ROOT",
    "OENETSTATUS_CANT_SET_SSL_INFO",
    "OENETSTATUS_SSL_GENERAL_ERROR",
    "OENETSTATUS_SSL_CONFIG_ERROR",
    "OENETSTATUS_SSL_INTERNAL_ERROR",
    "OENETSTATUS_SSL_CALLBACK_ERROR",
    "OENETSTATUS_SSL_NAME_MISMATCH",
    "OENETSTATUS_SSL_CERTID_MISMATCH",
    "OENETSTATUS_UNSUPPORTED",
    "OENETSTATUS_CANT_ABORT",
    "OENETSTATUS_USER_CANCELLED",
    "OENETSTATUS_TIMEOUT",
    "OENETSTATUS_SERVER_CONFIG",
    "OENETSTATUS_UNKNOWN_ERROR",
};
constexpr uint32_t kFirstStatus = 0x80049000;

}  // namespace

void CNALogger::Log(const char* prefix, const char* message, HRESULT hr) {
  if (!prefix) prefix = "";
  if (!message) message = "";
  const unsigned long code = static_cast<uint32_t>(hr);
  char entry[kEntrySize];
  const int length =
      AmbitAccess::GetFeatureParamAsBool("ZPSSettings", "NetworkAdapter.EnableLogContext", nullptr)
          ? std::snprintf(entry, sizeof entry, "%s: %s  HRESULT=%#lx\n", prefix, message, code)
          : std::snprintf(entry, sizeof entry, "%s  HRESULT=%#lx\n", message, code);
  BoundEntry(length, entry);
  char stamp[64];
  FormatCtime(LocalTime(std::time(nullptr)), stamp);
  Append("%s   %s", stamp, entry, entry);
}

void CNALogger::LogText(const char* text) {
  char entry[kEntrySize];
  std::snprintf(entry, sizeof entry, "%s", text ? text : "");
  const std::tm now = LocalTime(std::time(nullptr));
  char stamp[128];
  if (std::strftime(stamp, sizeof stamp, "%c", &now) == 0) stamp[0] = '\0';
  Append("%s  %s\n", entry, stamp, entry);
}

const char* CNALogger::StatusName(HRESULT hr) {
  const uint32_t index = static_cast<uint32_t>(hr) - kFirstStatus;
  return index < std::size(kStatusNames) ? kStatusNames[index] : "";
}

void CNALogger::ResetForTesting() {
  LogState& state = State();
  std::lock_guard guard(state.mutex);
  state.paths = {};
}
