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
    if (const HRESULT hr = make_(&object); FAILED(hr)) return hr;
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

// Puts the record fields that saves left in the store over the records of the fixture document.
void ApplyRecordFields(nlohmann::json& document, const std::vector<StoredRecordField>& fields,
                       const std::string& store) {
  if (fields.empty()) return;
  std::map<std::pair<ListKind, RecNum>, nlohmann::json*> records;
  for (const char* section :
       {"terms", "customers", "otherNames", "items", "classes", "salesReps", "shipMethods",
        "customerMessages", "invoices", "estimates", "styles"}) {
    const auto found = document.find(section);
    if (found == document.end() || !found->is_array()) continue;
    const ListKind list =
        *ListFromName(std::string_view(section) == "otherNames" ? "names" : section);
    for (nlohmann::json& record : *found)
      if (record.is_object() && record.contains("recNum") && record["recNum"].is_number_integer())
        records[{list, record["recNum"].get<RecNum>()}] = &record;
  }
  for (const StoredRecordField& stored : fields) {
    const auto found = records.find({stored.list, stored.recNum});
    const nlohmann::json value = nlohmann::json::parse(stored.field.json, nullptr, false);
    if (found == records.end() || value.is_discarded())
      throw FixtureError(store + ": the saved field " + stored.field.name + " of " +
                         std::string(ListName(stored.list)) + " record " +
                         std::to_string(stored.recNum) + " fits no record of the fixture");
    (*found->second)[stored.field.name] = value;
  }
}

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
    nlohmann::json document = ParseFixture(store->FixtureJson(), source);
    ApplyRecordFields(document, store->RecordFields(), path);
    auto company = std::make_shared<Company>();
    LoadFixture(document, source, *company);
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
