// The company file of the reference host, its company information, profile and service
// subscription status.
#include <new>

#include "refhost/HostObjects.h"
#if PARCELON_HAVE_SQLITE
#include "refhost/CompanyStore.h"
#endif

namespace parcelon::refhost {

namespace {

class CompanyInfoObject final : public ComObject<ICompanyInfo2, ICompanyInfo> {
 public:
  explicit CompanyInfoObject(CompanyPtr company) : ComObject(std::move(company), 0) {}

  HRESULT STDMETHODCALLTYPE GetCompanyName(BSTR* out) override {
    return Give("ICompanyInfo::GetCompanyName", out, info().companyName);
  }
  HRESULT STDMETHODCALLTYPE GetAddress(IAddress** out) override {
    return Give("ICompanyInfo::GetAddress", out, info().address);
  }
  HRESULT STDMETHODCALLTYPE GetLegalCompanyName(BSTR* out) override {
    return Give("ICompanyInfo::GetLegalCompanyName", out, info().legalCompanyName);
  }
  HRESULT STDMETHODCALLTYPE GetLegalAddress1(BSTR* out) override {
    return Give("ICompanyInfo::GetLegalAddress1", out, info().legalAddress.lines[0]);
  }
  HRESULT STDMETHODCALLTYPE GetLegalAddress2(BSTR* out) override {
    return Give("ICompanyInfo::GetLegalAddress2", out, info().legalAddress.lines[1]);
  }
  HRESULT STDMETHODCALLTYPE GetLegalCity(BSTR* out) override {
    return Give("ICompanyInfo::GetLegalCity", out, info().legalAddress.city);
  }
  HRESULT STDMETHODCALLTYPE GetLegalState(BSTR* out) override {
    return Give("ICompanyInfo::GetLegalState", out, info().legalAddress.state);
  }
  HRESULT STDMETHODCALLTYPE GetLegalZip(BSTR* out) override {
    return Give("ICompanyInfo::GetLegalZip", out, info().legalAddress.postalCode);
  }
  HRESULT STDMETHODCALLTYPE GetLegalCountry(BSTR* out) override {
    return Give("ICompanyInfo::GetLegalCountry", out, info().legalAddress.country);
  }
  HRESULT STDMETHODCALLTYPE GetEmail(BSTR* out) override {
    return Give("ICompanyInfo2::GetEmail", out, info().email);
  }
  HRESULT STDMETHODCALLTYPE GetPhone(BSTR* out) override {
    return Give("ICompanyInfo2::GetPhone", out, info().phone);
  }

 private:
  const CompanyInfo& info() const { return company().info; }
};

class SubscriptionStatusObject final : public ComObject<IServiceSubscriptionStatus> {
 public:
  explicit SubscriptionStatusObject(CompanyPtr company) : ComObject(std::move(company), 0) {}

  // 0 for a service the company has no status for.
  HRESULT STDMETHODCALLTYPE GetStatus(BSTR serviceName, LONG* out) override {
    const auto& statuses = company().serviceStatuses;
    const auto found = statuses.find(FromBstr(serviceName));
    return Give("IServiceSubscriptionStatus::GetStatus", out,
                found == statuses.end() ? LONG(0) : found->second);
  }
};

class CompanyProfileObject final : public ComObject<ICompanyProfile> {
 public:
  explicit CompanyProfileObject(CompanyPtr company) : ComObject(std::move(company), 0) {}

  HRESULT STDMETHODCALLTYPE
  GetServiceSubscriptionStatus(IServiceSubscriptionStatus** out) override {
    return GiveNew<SubscriptionStatusObject>("ICompanyProfile::GetServiceSubscriptionStatus", out,
                                             companyPtr());
  }
};

// Groups the store's writes (an in-memory company has nothing to group): begins them, or ends
// them with a commit or a rollback.
enum class Writes { kBegin, kCommit, kRollBack };
HRESULT GroupStoreWrites(Company& company, Writes step) {
#if PARCELON_HAVE_SQLITE
  if (!company.store) return S_OK;
  try {
    const bool done = step == Writes::kBegin ? company.store->BeginWrites()
                                             : company.store->EndWrites(step == Writes::kCommit);
    return done ? S_OK : E_UNEXPECTED;
  } catch (const StoreError& e) {
    return e.Code();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  }
#else
  (void)company, (void)step;
  return S_OK;
#endif
}

class CompanyFileObject final : public ComObject<ICompanyFile3, ICompanyFile2, ICompanyFile> {
 public:
  explicit CompanyFileObject(CompanyPtr company) : ComObject(std::move(company), 0) {}

  HRESULT STDMETHODCALLTYPE GetCompanyInfo(ICompanyInfo** out) override {
    return GiveNew<CompanyInfoObject>("ICompanyFile::GetCompanyInfo", out, companyPtr());
  }
  HRESULT STDMETHODCALLTYPE GetLists(ILists** out) override {
    return GiveFrom("ICompanyFile::GetLists", out, NewLists);
  }
  HRESULT STDMETHODCALLTYPE GetTransactions(ITransactions** out) override {
    return GiveFrom("ICompanyFile::GetTransactions", out, NewTransactions);
  }
  HRESULT STDMETHODCALLTYPE GetDataFileRecords(IDataFileRecords** out) override {
    return GiveFrom("ICompanyFile::GetDataFileRecords", out, NewDataFileRecords);
  }
  HRESULT STDMETHODCALLTYPE GetCompanyProfile(ICompanyProfile** out) override {
    return GiveNew<CompanyProfileObject>("ICompanyFile2::GetCompanyProfile", out, companyPtr());
  }
  HRESULT STDMETHODCALLTYPE BeginWrites() override {
    RETURN_IF_FAILED(Check("ICompanyFile3::BeginWrites"));
    return GroupStoreWrites(company(), Writes::kBegin);
  }
  // A failure set for it is a commit that failed: the writes are rolled back.
  HRESULT STDMETHODCALLTYPE EndWrites() override {
    const HRESULT fault = Check("ICompanyFile3::EndWrites");
    const HRESULT ended = GroupStoreWrites(company(), FAILED(fault) ? Writes::kRollBack : Writes::kCommit);
    return FAILED(fault) ? fault : ended;
  }
};

}  // namespace

HRESULT NewCompanyFile(const CompanyPtr& company, ICompanyFile** out) {
  return CreateObject<CompanyFileObject>(out, company);
}

}  // namespace parcelon::refhost
