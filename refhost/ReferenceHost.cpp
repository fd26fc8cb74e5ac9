// The reference host: its company, its class objects and their registration.
#include "refhost/ReferenceHost.h"

#include <functional>
#include <utility>

#include "refhost/Fixture.h"
#include "refhost/HostObjects.h"
#if PARCELON_HAVE_SQLITE
#include <map>

#include "refhost/CompanyStore.h"
#endif

namespace parcelon::refhost {

namespace {

// A class object that makes each instance with `make` and answers with the interface asked for.
class ClassFactoryObject final : public ComObject<IClassFactory> {
 public:
  using Make = std::function<HRESULT(IUnknown**)>;
  ClassFactoryObject(CompanyPtr company, Make make)
      : ComObject(std::move(company), 0), make_(std::move(make)) {}

  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID riid, void** ppv) override {
    if (!ppv) return E_POINTER;
    *ppv = nullptr;
    if (outer) return CLASS_E_NOAGGREGATION;
    IUnknown* object = nullptr;
    RETURN_IF_FAILED(make_(&object));
    const HRESULT hr = object->QueryInterface(riid, ppv);
    object->Release();
    return hr;
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

 private:
  Make make_;
};

// Makes an object of one host class for a company and the host's state.
using MakeObject = HRESULT (*)(const CompanyPtr&, const HostStatePtr&, IUnknown**);

// Adapts a maker of interface I to one of IUnknown.
template <class I, HRESULT (*make)(const CompanyPtr&, const HostStatePtr&, I**)>
HRESULT Make(const CompanyPtr& company, const HostStatePtr& state, IUnknown** out) {
  I* object = nullptr;
  const HRESULT hr = make(company, state, &object);
  *out = object;
  return hr;
}

// The makers for the services that need only the company.
template <class I, HRESULT (*make)(const CompanyPtr&, I**)>
HRESULT WithCompany(const CompanyPtr& company, const HostStatePtr&, I** out) {
  return make(company, out);
}

struct HostClass {
  const CLSID& clsid;
  MakeObject make;
};

// The host's classes, each with the maker of its objects.
constexpr HostClass kHostClasses[] = {
    {host::CLSID_LXAddIn, Make<ILXApplication, NewApplication>},
    {host::CLSID_NAAuthTool, Make<INAAuthTool, WithCompany<INAAuthTool, NewAuthTool>>},
    {host::CLSID_LXInbox, Make<ILXInbox, NewInbox>},
    {host::CLSID_Base64Coder, Make<IBase64Coder, WithCompany<IBase64Coder, NewBase64Coder>>},
    {host::CLSID_AmbitAccess, Make<IAmbitAccess, WithCompany<IAmbitAccess, NewAmbitAccess>>},
    {host::CLSID_FolderService,
     Make<IFolderService, WithCompany<IFolderService, NewFolderService>>},
    {host::CLSID_MessageBoxService, Make<IMessageBoxService, NewMessageBoxService>},
    {host::CLSID_FileRedirectionService,
     Make<IFileRedirectionService, WithCompany<IFileRedirectionService, NewFileRedirectionService>>},
};

}  // namespace

ReferenceHost::ReferenceHost(CompanyPtr company)
    : company_(std::move(company)), state_(std::make_shared<HostState>()) {}

ReferenceHost::~ReferenceHost() { Revoke(); }

std::unique_ptr<ReferenceHost> ReferenceHost::FromFixture(const std::string& path, HRESULT& hr,
                                                          std::string& error) {
  auto company = std::make_shared<Company>();
  hr = LoadFixtureFile(path, *company, error);
  if (FAILED(hr)) return nullptr;
  return std::make_unique<ReferenceHost>(std::move(company));
}

#if PARCELON_HAVE_SQLITE
namespace {

// Lays the record fields that saves left in the store over the records of the fixture as the
// loader reads them.
class SavedFields {
 public:
  SavedFields(const std::vector<StoredRecordField>& fields, const std::string& store)
      : store_(store) {
    for (const StoredRecordField& stored : fields) {
      nlohmann::json value = nlohmann::json::parse(stored.field.json, nullptr, false);
      if (value.is_discarded()) Unfit(stored.list, stored.recNum, stored.field.name);
      byRecord_[{stored.list, stored.recNum}].emplace_back(stored.field.name, std::move(value));
    }
  }

  void Apply(ListKind list, nlohmann::json& record) {
    if (byRecord_.empty() || !record.is_object()) return;
    const auto recNum = record.find("recNum");
    if (recNum == record.end() || !recNum->is_number_integer() ||
        recNum->get<int64_t>() != static_cast<RecNum>(recNum->get<int64_t>()))
      return;
    const auto found = byRecord_.find({list, recNum->get<RecNum>()});
    if (found == byRecord_.end()) return;
    for (auto& [name, value] : found->second) record[name] = std::move(value);
    byRecord_.erase(found);
  }

  // Throws FixtureError for a saved field that fitted no record.
  void CheckAllApplied() const {
    if (!byRecord_.empty()) {
      const auto& [record, fields] = *byRecord_.begin();
      Unfit(record.first, record.second, fields.front().first);
    }
  }

 private:
  [[noreturn]] void Unfit(ListKind list, RecNum recNum, const std::string& field) const {
    throw FixtureError(store_ + ": the saved field " + field + " of " +
                       std::string(ListName(list)) + " record " + std::to_string(recNum) +
                       " fits no record of the fixture");
  }

  const std::string& store_;
  std::map<std::pair<ListKind, RecNum>, std::vector<std::pair<std::string, nlohmann::json>>>
      byRecord_;
};

}  // namespace

HRESULT ReferenceHost::CreateStore(const std::string& fixturePath, const std::string& storePath,
                                   std::string& error) {
  std::string text;
  HRESULT hr = ReadFixtureFile(fixturePath, text, error);
  Company company;
  if (SUCCEEDED(hr)) hr = LoadFixtureText(text, fixturePath, company, error);
  if (FAILED(hr)) return hr;
  try {
    CompanyStore::Create(storePath, text, fixturePath, company);
    return S_OK;
  } catch (const StoreError& e) {
    error = e.what();
    return e.Code();
  } catch (const std::bad_alloc&) {
    error = storePath + ": out of memory";
    return E_OUTOFMEMORY;
  }
}

std::unique_ptr<ReferenceHost> ReferenceHost::FromStore(const std::string& path, HRESULT& hr,
                                                        std::string& error) {
  try {
    std::shared_ptr<CompanyStore> store = CompanyStore::Open(path);
    const std::string source = store->FixtureSource().empty() ? path : store->FixtureSource();
    SavedFields saved(store->RecordFields(), path);
    auto company = std::make_shared<Company>();
    LoadFixture(store->FixtureJson(), source, *company,
                [&](ListKind list, nlohmann::json& record) { saved.Apply(list, record); });
    saved.CheckAllApplied();
    for (StoredAttributes& stored : store->Attributes())
      if (ListRecord* record = FindListRecord(*company, stored.list, stored.recNum))
        record->attributes = std::move(stored.attributes);
    company->store = std::move(store);
    hr = S_OK;
    return std::make_unique<ReferenceHost>(std::move(company));
  } catch (const StoreError& e) {
    hr = e.Code();
    error = e.what();
  } catch (const FixtureError& e) {
    hr = kInvalidFixture;
    error = e.what();
  } catch (const std::bad_alloc&) {
    hr = E_OUTOFMEMORY;
    error = path + ": out of memory";
  }
  return nullptr;
}
#endif

bool ReferenceHost::IsHostClass(REFCLSID clsid) {
  for (const HostClass& hostClass : kHostClasses)
    if (IsEqualGUID(hostClass.clsid, clsid)) return true;
  return false;
}

HRESULT ReferenceHost::NewClassObject(REFCLSID clsid, IClassFactory** factory) const {
  *factory = nullptr;
  for (const HostClass& hostClass : kHostClasses) {
    if (!IsEqualGUID(hostClass.clsid, clsid)) continue;
    return CreateObject<ClassFactoryObject>(
        factory, company_, [company = company_, state = state_, make = hostClass.make](IUnknown** out) {
          return make(company, state, out);
        });
  }
  return CLASS_E_CLASSNOTAVAILABLE;
}

HRESULT ReferenceHost::GetClassObject(REFCLSID clsid, REFIID riid, void** ppv) const {
  if (!ppv) return E_POINTER;
  *ppv = nullptr;
  IClassFactory* factory = nullptr;
  RETURN_IF_FAILED(NewClassObject(clsid, &factory));
  const HRESULT hr = factory->QueryInterface(riid, ppv);
  factory->Release();
  return hr;
}

HRESULT ReferenceHost::Register() {
  Revoke();
  for (const HostClass& hostClass : kHostClasses) {
    IClassFactory* factory = nullptr;
    HRESULT hr = NewClassObject(hostClass.clsid, &factory);
    DWORD cookie = 0;
    if (SUCCEEDED(hr)) {
      hr = CoRegisterClassObject(hostClass.clsid, factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE,
                                 &cookie);
      factory->Release();
    }
    if (FAILED(hr)) {
      Revoke();
      return hr;
    }
    cookies_.push_back(cookie);
  }
  return S_OK;
}

void ReferenceHost::Revoke() {
  for (DWORD cookie : cookies_) CoRevokeClassObject(cookie);
  cookies_.clear();
}

HRESULT ReferenceHost::GetCompanyFile(ICompanyFile** out) const {
  if (!out) return E_POINTER;
  return NewCompanyFile(company_, out);
}

void ReferenceHost::SetLogFolder(const std::string& folder) {
  Text text;
  if (Utf8ToText(folder, text)) company_->host.logFolder = std::move(text);
}

}  // namespace parcelon::refhost
