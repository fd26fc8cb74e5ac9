// The reference host as a registered in-process server (refhost.dll): the four entry points.
// Its classes are served by one host per process, of the company in the fixture file that the
// environment variable PARCELON_COMPANY names, loaded when a class object is first asked for.
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "diagnostics/LogIfFailed.h"
#include "platform/Paths.h"
#include "platform/RegistryScript.h"
#include "refhost/ReferenceHost.h"

namespace {

using parcelon::LogIfFailed;
using parcelon::refhost::ReferenceHost;

constexpr int kRegistryScript = 101;
constexpr const char* kCompanyVariable = "PARCELON_COMPANY";

HMODULE ThisModule() { return parcelon::ModuleOf(reinterpret_cast<const void*>(&ThisModule)); }

// The process's host, loaded on first use; a failed load is logged and tried again on the next
// request. The logger asks the host's folder service for its folder, which comes back here: while
// a failure is being logged, this thread's requests fail without a word.
HRESULT Host(const ReferenceHost*& out) {
  static std::mutex lock;
  static std::unique_ptr<ReferenceHost> host;
  static thread_local bool logging = false;
  if (logging) return CLASS_E_CLASSNOTAVAILABLE;
  HRESULT hr = S_OK;
  std::string failure;
  {
    const std::lock_guard<std::mutex> held(lock);
    if (!host) {
      const std::string path = parcelon::GetEnv(kCompanyVariable);
      std::string error;
      if (path.empty()) {
        hr = HRESULT_FROM_WIN32(ERROR_ENVVAR_NOT_FOUND);
        failure = "PARCELON_COMPANY names no company fixture.";
      } else if (!(host = ReferenceHost::FromFixture(path, hr, error))) {
        failure = "Failed to load the company: " + error;
      }
    }
    out = host.get();
  }
  if (FAILED(hr)) {
    logging = true;
    LogIfFailed(hr, "Parcelon:RefHost:DllGetClassObject", failure.c_str());
    logging = false;
  }
  return hr;
}

}  // namespace

STDAPI DllGetClassObject(REFCLSID clsid, REFIID riid, void** ppv) {
  if (!ppv) return E_POINTER;
  *ppv = nullptr;
  if (!ReferenceHost::IsHostClass(clsid)) return CLASS_E_CLASSNOTAVAILABLE;
  const ReferenceHost* host = nullptr;
  RETURN_IF_FAILED(Host(host));
  return host->GetClassObject(clsid, riid, ppv);
}

// The company stays loaded for the life of the process: objects given out share it.
STDAPI DllCanUnloadNow() { return S_FALSE; }

STDAPI DllRegisterServer() {
  std::vector<parcelon::RegistryKey> keys;
  HRESULT hr = LogIfFailed(parcelon::ModuleScriptKeys(ThisModule(), kRegistryScript, keys),
                           "Parcelon:RefHost:DllRegisterServer", "Failed to read the registry script.");
  std::vector<std::wstring> created;
  if (SUCCEEDED(hr))
    hr = LogIfFailed(parcelon::WriteRegistryKeys(keys, created), "Parcelon:RefHost:DllRegisterServer",
                     "Failed to write the registry script's keys.");
  return hr;
}

STDAPI DllUnregisterServer() {
  std::vector<parcelon::RegistryKey> keys;
  HRESULT hr = parcelon::ModuleScriptKeys(ThisModule(), kRegistryScript, keys);
  if (SUCCEEDED(hr)) hr = parcelon::DeleteRegistryKeys(keys);
  return LogIfFailed(hr, "Parcelon:RefHost:DllUnregisterServer",
                     "Failed to remove the registry script's keys.");
}
