#include "diagnostics/Dumps.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "diagnostics/FeatureSettings.h"
#include "diagnostics/LogIfFailed.h"
#include "platform/Paths.h"

#ifdef _WIN32
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#else
#include <stdlib.h>
#include <unistd.h>
#endif

namespace parcelon {

namespace {

constexpr const char* kAttachmentPrefix = "Parcelon:CNA_Forms::DumpAttachment";
constexpr const char* kCookiePrefix =
    "NetworkAdapterManager:CNetworkAdapter::DumpResponseHeaderCookie";

bool IsOn(const char* key) { return AmbitAccess::GetFeatureParamAsBool("ZPSSettings", key, nullptr); }

const char* FormTypeName(long formType) {
  switch (formType) {
    case 1: return "Invoice";
    case 2: return "Estimate";
    case 3: return "Statement";
    default: return "Attachment";
  }
}

// Creates a new, empty file in the temporary folder named `prefix`, six characters and `suffix`,
// so that no other dump can take the name; its path, or empty when none could be created.
std::string CreateUniqueFile(const char* prefix, const std::string& suffix) {
  std::string path = TempFolder() + prefix + "XXXXXX" + suffix;
#ifdef _WIN32
  // The C runtime has no mkstemps: the same, with the process, a counter and the clock.
  static std::atomic<uint64_t> counter{0};
  static constexpr char kDigits[] = "0123456789abcdefghijklmnopqrstuvwxyz";
  const size_t at = path.size() - suffix.size() - 6;
  for (int attempt = 0; attempt < 100; ++attempt) {
    uint64_t seed = (GetTickCount64() ^ uint64_t(GetCurrentProcessId()) << 32) +
                    counter.fetch_add(1) * 0x9E3779B97F4A7C15ull;
    for (size_t i = 0; i < 6; ++i, seed /= 36) path[at + i] = kDigits[seed % 36];
    const int file = _open(path.c_str(), _O_CREAT | _O_EXCL | _O_WRONLY, _S_IREAD | _S_IWRITE);
    if (file >= 0) {
      _close(file);
      return path;
    }
    if (errno != EEXIST) break;
  }
  return {};
#else
  const int file = mkstemps(path.data(), static_cast<int>(suffix.size()));
  if (file < 0) return {};
  close(file);
  return path;
#endif
}

// Writes `count` bytes to `path` in text mode through the host's file redirection. A file whose
// bytes did not all reach it, at the write or at the close, counts as a short write.
HRESULT WriteDump(const char* prefix, const std::string& path, const void* bytes, size_t count,
                  const char* cannotOpen, const char* shortWrite) {
  std::FILE* file = path.empty() ? nullptr : OpenRedirectedFile(path.c_str(), "w");
  if (!file) RETURN_HR_LOG(E_FAIL, prefix, cannotOpen);
  const size_t written = count && bytes ? std::fwrite(bytes, 1, count, file) : 0;
  const bool closed = std::fclose(file) == 0;
  if (written < count || !closed) RETURN_HR_LOG(E_FAIL, prefix, shortWrite);
  return S_OK;
}

}  // namespace

HRESULT DumpAttachment(const void* bytes, size_t count, long formType, const char* extension) {
  if (!IsOn("NetworkAdapter.DumpAttachment")) return S_OK;
  const std::string name = std::string(FormTypeName(formType)) + "." +
                           (extension && *extension ? extension : "pdf");
  const std::string path = IsOn("NetworkAdapter.DoNotOverwriteDump")
                               ? CreateUniqueFile("NARequest", "_" + name)
                               : TempFolder() + "na2003_" + name;
  return WriteDump(kAttachmentPrefix, path, bytes, count, "Unable to open attachment dump file",
                   "Unable to dump full lenght of attachment file");
}

HRESULT DumpResponseHeaderCookie(const char* cookie) {
  if (!IsOn("NetworkAdapter.DumpResponseHeaderCookie")) return S_OK;
  if (!cookie) cookie = "";
  const std::string path = IsOn("NetworkAdapter.DoNotOverwriteDump")
                               ? CreateUniqueFile("NAResponseHeaderCookie", ".txt")
                               : TempFolder() + "responseHeaderCookie.txt";
  return WriteDump(kCookiePrefix, path, cookie, std::strlen(cookie),
                   "Unable to open response header cookie dump file",
                   "Unable to dump full length of response header cookie file");
}

}  // namespace parcelon
