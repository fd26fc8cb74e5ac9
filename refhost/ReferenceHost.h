// The reference host: a company loaded from a JSON fixture, the host's classes registered in the
// process's class table (the add-in application, authentication tool, inbox, base64 coder,
// feature settings, folder, message box and file redirection services), and what the services
// recorded for tests to read.
//
// Register() makes CoCreateInstance of the host's CLSIDs give this host's objects (on Windows
// through COM's own class table: the calling thread must have initialised COM); the destructor
// revokes them. Objects given out keep the company alive after the host is gone.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "refhost/ComObject.h"
#include "refhost/ServiceObjects.h"

namespace parcelon::refhost {

class ReferenceHost {
 public:
  // A host of `company`, which is linked already (a loaded fixture, or LinkCompany).
  explicit ReferenceHost(CompanyPtr company);
  ~ReferenceHost();
  ReferenceHost(const ReferenceHost&) = delete;
  ReferenceHost& operator=(const ReferenceHost&) = delete;

  // A host of the company in the fixture file at `path`; on failure null, with the status and
  // message of LoadFixtureFile.
  static std::unique_ptr<ReferenceHost> FromFixture(const std::string& path, HRESULT& hr,
                                                    std::string& error);

#if PARCELON_HAVE_SQLITE
  // Makes a company store at `storePath` from the fixture file at `fixturePath` (see
  // CompanyStore::Create); the status and message of the fixture or the store on failure.
  static HRESULT CreateStore(const std::string& fixturePath, const std::string& storePath,
                             std::string& error);
  // A host of the company in the store at `path`: the store's fixture with the record fields
  // and attributes written since, and the store keeping the host's changes. On failure null,
  // with the status and message of the store or the fixture.
  static std::unique_ptr<ReferenceHost> FromStore(const std::string& path, HRESULT& hr,
                                                  std::string& error);
#endif

  // Registers the host's classes; registering again first revokes the earlier registration.
  HRESULT Register();
  // Revokes what Register registered.
  void Revoke();
  // Whether `clsid` is one of the host's classes.
  static bool IsHostClass(REFCLSID clsid);
  // A class object of the host's class `clsid` as interface `riid`, making objects of this
  // host's company; CLASS_E_CLASSNOTAVAILABLE for any other class.
  HRESULT GetClassObject(REFCLSID clsid, REFIID riid, void** ppv) const;

  Company& GetCompany() const { return *company_; }
  const CompanyPtr& GetCompanyPtr() const { return company_; }
  Faults& GetFaults() const { return company_->faults; }

  // The company file, as IAddInGoodies gives it.
  HRESULT GetCompanyFile(ICompanyFile** out) const;
  // Whether the host has its company open (see HostState::companyOpen).
  void SetCompanyOpen(bool open) { state_->companyOpen = open; }
  // The folder the folder service gives for logs (UTF-8).
  void SetLogFolder(const std::string& folder);

  // What the inbox holds and which messages the message box service showed, oldest first.
  const std::vector<InboxRequest>& InboxRequests() const { return state_->inbox; }
  const std::vector<ShownMessage>& Messages() const { return state_->messages; }

 private:
  HRESULT NewClassObject(REFCLSID clsid, IClassFactory** factory) const;

  CompanyPtr company_;
  HostStatePtr state_;
  std::vector<DWORD> cookies_;
};

}  // namespace parcelon::refhost
