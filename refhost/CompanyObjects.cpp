// The company file of the reference host, its company information, profile and service
// subscription status.
#include "refhost/HostObjects.h"

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

class CompanyFileObject final : public ComObject<ICompanyFile2, ICompanyFile> {
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
};

}  // namespace

HRESULT NewCompanyFile(const CompanyPtr& company, ICompanyFile** out) {
  return CreateObject<CompanyFileObject>(out, company);
}

}  // namespace parcelon::refhost
