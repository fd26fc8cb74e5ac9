// The reference host's services: application, authentication tool, inbox, base64 coder, feature
// settings, folders, message boxes and file redirection.
#include "refhost/ServiceObjects.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>

#include "diagnostics/FeatureSettings.h"
#include "platform/CodePage.h"
#include "refhost/HostObjects.h"

namespace parcelon::refhost {

namespace {

// The ANSI form of a BSTR, as the feature settings take their section and key names.
std::string Ansi(BSTR text) {
  std::string out;
  WideToAnsi(text, SysStringLen(text), out);
  return out;
}

// A company-wide service object: it belongs to record 0 for faults.
template <class Most, class... Also>
class ServiceObject : public ComObject<Most, Also...> {
 public:
  explicit ServiceObject(CompanyPtr company) : ComObject<Most, Also...>(std::move(company), 0) {}
};

// A service object that also keeps the host's state.
template <class Most>
class StatefulServiceObject : public ServiceObject<Most> {
 public:
  StatefulServiceObject(CompanyPtr company, HostStatePtr state)
      : ServiceObject<Most>(std::move(company)), state_(std::move(state)) {}

 protected:
  HostState& state() const { return *state_; }
  const HostStatePtr& statePtr() const { return state_; }

 private:
  HostStatePtr state_;
};

class AddInGoodiesObject final : public StatefulServiceObject<IAddInGoodies> {
 public:
  using StatefulServiceObject::StatefulServiceObject;

  // E_FAIL when the host has no company open.
  HRESULT STDMETHODCALLTYPE GetCurrentCompanyFile(ICompanyFile** out) override {
    RETURN_IF_FAILED(Ready("IAddInGoodies::GetCurrentCompanyFile", out));
    *out = nullptr;
    if (!state().companyOpen) return E_FAIL;
    return NewCompanyFile(companyPtr(), out);
  }
};

class ApplicationObject final : public StatefulServiceObject<ILXApplication> {
 public:
  using StatefulServiceObject::StatefulServiceObject;

  HRESULT STDMETHODCALLTYPE GetAddInGoodies(IAddInGoodies** out) override {
    return GiveNew<AddInGoodiesObject>("ILXApplication::GetAddInGoodies", out, companyPtr(),
                                       statePtr());
  }
};

class AuthToolObject final : public ServiceObject<INAAuthTool> {
 public:
  using ServiceObject::ServiceObject;

  HRESULT STDMETHODCALLTYPE GetCompanyUID(BSTR* out) override {
    return Give("INAAuthTool::GetCompanyUID", out, company().companyUID);
  }
  HRESULT STDMETHODCALLTYPE GetCompanyAuthID(BSTR* out) override {
    return Give("INAAuthTool::GetCompanyAuthID", out, company().authID);
  }
};

class InboxObject final : public StatefulServiceObject<ILXInbox> {
 public:
  using StatefulServiceObject::StatefulServiceObject;

  HRESULT STDMETHODCALLTYPE StoreRequest(BSTR xml, BSTR name) override {
    RETURN_IF_FAILED(Check("ILXInbox::StoreRequest"));
    const LONG id = state().nextRequestId++;
    state().inbox.push_back({AsciiText(std::to_string(id)), FromBstr(name), FromBstr(xml)});
    return S_OK;
  }
  // LX_E_NOTFOUND for an identifier the inbox does not hold.
  HRESULT STDMETHODCALLTYPE GetRequest(BSTR requestID, BSTR* xml) override {
    RETURN_IF_FAILED(Ready("ILXInbox::GetRequest", xml));
    const auto found = Find(requestID);
    if (found == state().inbox.end()) return LX_E_NOTFOUND;
    return Put(xml, found->xml);
  }
  HRESULT STDMETHODCALLTYPE DeleteRequest(BSTR requestID) override {
    RETURN_IF_FAILED(Check("ILXInbox::DeleteRequest"));
    const auto found = Find(requestID);
    if (found == state().inbox.end()) return LX_E_NOTFOUND;
    state().inbox.erase(found);
    return S_OK;
  }

 private:
  std::vector<InboxRequest>::iterator Find(BSTR requestID) {
    const Text id = FromBstr(requestID);
    return std::find_if(state().inbox.begin(), state().inbox.end(),
                        [&](const InboxRequest& request) { return request.id == id; });
  }
};

class Base64CoderObject final : public ServiceObject<IBase64Coder> {
 public:
  using ServiceObject::ServiceObject;

  HRESULT STDMETHODCALLTYPE Encode(const BYTE* data, LONG length) override {
    RETURN_IF_FAILED(Check("IBase64Coder::Encode"));
    if (length < 0) return E_INVALIDARG;
    if (!data && length > 0) return E_POINTER;
    static constexpr char kAlphabet[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((size_t(length) + 2) / 3 * 4);
    for (LONG i = 0; i < length; i += 3) {
      const LONG left = length - i;
      const uint32_t group = uint32_t(data[i]) << 16 | (left > 1 ? uint32_t(data[i + 1]) << 8 : 0) |
                             (left > 2 ? uint32_t(data[i + 2]) : 0);
      text += kAlphabet[group >> 18 & 63];
      text += kAlphabet[group >> 12 & 63];
      text += left > 1 ? kAlphabet[group >> 6 & 63] : '=';
      text += left > 2 ? kAlphabet[group & 63] : '=';
    }
    encoded_ = std::move(text);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE EncodedMessage(const char** text) override {
    RETURN_IF_FAILED(Ready("IBase64Coder::EncodedMessage", text));
    *text = encoded_.c_str();
    return S_OK;
  }

 private:
  std::string encoded_;
};

class AmbitAccessObject final : public ServiceObject<IAmbitAccess> {
 public:
  using ServiceObject::ServiceObject;

  HRESULT STDMETHODCALLTYPE GetFeatureParamAsBool(BSTR section, BSTR key, void* reserved,
                                                  VARIANT_BOOL* value) override {
    return Give(
        "IAmbitAccess::GetFeatureParamAsBool", value,
        AmbitAccess::GetFeatureParamAsBool(Ansi(section).c_str(), Ansi(key).c_str(), reserved));
  }
  HRESULT STDMETHODCALLTYPE GetFeatureParamAsInt(BSTR section, BSTR key, void* reserved,
                                                 LONG* value) override {
    return Give("IAmbitAccess::GetFeatureParamAsInt", value,
                LONG(AmbitAccess::GetFeatureParamAsInt(Ansi(section).c_str(), Ansi(key).c_str(),
                                                       reserved)));
  }
  // An empty address for a key the settings do not have.
  HRESULT STDMETHODCALLTYPE GetURLAddress(BSTR key, BSTR* url) override {
    RETURN_IF_FAILED(Ready("IAmbitAccess::GetURLAddress", url));
    const std::string address = AmbitAccess::GetURLAddress(Ansi(key).c_str());
    if (address.empty()) return Put(url, Text());
    return AnsiToBstr(address.data(), address.size(), url);
  }
};

class FolderLocatorObject final : public ServiceObject<IFolderLocator> {
 public:
  using ServiceObject::ServiceObject;

  HRESULT STDMETHODCALLTYPE GetFolder(LONG kind, BSTR* folder) override {
    return Give("IFolderLocator::GetFolder", folder,
                kind == host::kFolderKindLogs ? company().host.logFolder : Text());
  }
};

class FolderServiceObject final : public ServiceObject<IFolderService> {
 public:
  using ServiceObject::ServiceObject;

  HRESULT STDMETHODCALLTYPE GetFolderLocator(IFolderLocator** out) override {
    return GiveNew<FolderLocatorObject>("IFolderService::GetFolderLocator", out, companyPtr());
  }
};

class MessageBoxServiceObject final : public StatefulServiceObject<IMessageBoxService> {
 public:
  using StatefulServiceObject::StatefulServiceObject;

  HRESULT STDMETHODCALLTYPE ShowMessage(BSTR text, BSTR caption, LONG style,
                                        VARIANT_BOOL ownedByMainWindow) override {
    RETURN_IF_FAILED(Check("IMessageBoxService::ShowMessage"));
    state().messages.push_back(
        {FromBstr(text), FromBstr(caption), style, ownedByMainWindow != VARIANT_FALSE});
    return S_OK;
  }
};

// The status of a failed rename or remove, from errno.
HRESULT FileResult(int error) {
  switch (error) {
    case ENOENT:
      return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
    case EACCES:
    case EPERM:
      return E_ACCESSDENIED;
    default:
      return E_FAIL;
  }
}

class FileRedirectionObject final : public ServiceObject<IFileRedirectionService> {
 public:
  using ServiceObject::ServiceObject;

  HRESULT STDMETHODCALLTYPE MapPath(BSTR path, BSTR* mapped) override {
    return Give("IFileRedirectionService::MapPath", mapped, FromBstr(path));
  }
  HRESULT STDMETHODCALLTYPE Rename(BSTR from, BSTR to) override {
    RETURN_IF_FAILED(Check("IFileRedirectionService::Rename"));
#ifdef _WIN32
    const int result = _wrename(Wide(from), Wide(to));
#else
    const int result =
        std::rename(TextToUtf8(FromBstr(from)).c_str(), TextToUtf8(FromBstr(to)).c_str());
#endif
    return result == 0 ? S_OK : FileResult(errno);
  }
  HRESULT STDMETHODCALLTYPE Remove(BSTR path) override {
    RETURN_IF_FAILED(Check("IFileRedirectionService::Remove"));
#ifdef _WIN32
    const int result = _wremove(Wide(path));
#else
    const int result = std::remove(TextToUtf8(FromBstr(path)).c_str());
#endif
    return result == 0 ? S_OK : FileResult(errno);
  }

 private:
#ifdef _WIN32
  static const wchar_t* Wide(BSTR path) { return path ? path : L""; }
#endif
};

}  // namespace

HRESULT NewApplication(const CompanyPtr& company, const HostStatePtr& state, ILXApplication** out) {
  return CreateObject<ApplicationObject>(out, company, state);
}
HRESULT NewAuthTool(const CompanyPtr& company, INAAuthTool** out) {
  return CreateObject<AuthToolObject>(out, company);
}
HRESULT NewInbox(const CompanyPtr& company, const HostStatePtr& state, ILXInbox** out) {
  return CreateObject<InboxObject>(out, company, state);
}
HRESULT NewBase64Coder(const CompanyPtr& company, IBase64Coder** out) {
  return CreateObject<Base64CoderObject>(out, company);
}
HRESULT NewAmbitAccess(const CompanyPtr& company, IAmbitAccess** out) {
  return CreateObject<AmbitAccessObject>(out, company);
}
HRESULT NewFolderService(const CompanyPtr& company, IFolderService** out) {
  return CreateObject<FolderServiceObject>(out, company);
}
HRESULT NewMessageBoxService(const CompanyPtr& company, const HostStatePtr& state,
                             IMessageBoxService** out) {
  return CreateObject<MessageBoxServiceObject>(out, company, state);
}
HRESULT NewFileRedirectionService(const CompanyPtr& company, IFileRedirectionService** out) {
  return CreateObject<FileRedirectionObject>(out, company);
}

}  // namespace parcelon::refhost
