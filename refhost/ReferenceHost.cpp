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

// Adapts a factory of interface I to one of IUnknown.
template <class I, class Factory>
ClassFactoryObject::Make MakeWith(Factory factory) {
  return [factory](IUnknown** out) {
    I* object = nullptr;
    const HRESULT hr = factory(&object);
    *out = object;
    return hr;
  };
}

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

HRESULT ReferenceHost::Register() {
  Revoke();
  const CompanyPtr& c = company_;
  const HostStatePtr& s = state_;
  const std::pair<const CLSID*, ClassFactoryObject::Make> classes[] = {
      {&host::CLSID_LXAddIn,
       MakeWith<ILXApplication>([c, s](ILXApplication** o) { return NewApplication(c, s, o); })},
      {&host::CLSID_NAAuthTool,
       MakeWith<INAAuthTool>([c](INAAuthTool** o) { return NewAuthTool(c, o); })},
      {&host::CLSID_LXInbox,
       MakeWith<ILXInbox>([c, s](ILXInbox** o) { return NewInbox(c, s, o); })},
      {&host::CLSID_Base64Coder,
       MakeWith<IBase64Coder>([c](IBase64Coder** o) { return NewBase64Coder(c, o); })},
      {&host::CLSID_AmbitAccess,
       MakeWith<IAmbitAccess>([c](IAmbitAccess** o) { return NewAmbitAccess(c, o); })},
      {&host::CLSID_FolderService,
       MakeWith<IFolderService>([c](IFolderService** o) { return NewFolderService(c, o); })},
      {&host::CLSID_MessageBoxService, MakeWith<IMessageBoxService>([c, s](IMessageBoxService** o) {
         return NewMessageBoxService(c, s, o);
       })},
      {&host::CLSID_FileRedirectionService,
       MakeWith<IFileRedirectionService>(
           [c](IFileRedirectionService** o) { return NewFileRedirectionService(c, o); })},
  };
  for (const auto& [clsid, make] : classes) {
    IClassFactory* factory = nullptr;
    HRESULT hr = CreateObject<ClassFactoryObject>(&factory, company_, make);
    DWORD cookie = 0;
    if (SUCCEEDED(hr)) {
      hr =
          CoRegisterClassObject(*clsid, factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie);
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
