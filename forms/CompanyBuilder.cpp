#include "forms/CompanyBuilder.h"

#include "diagnostics/LogIfFailed.h"
#include "forms/FormParts.h"
#include "platform/Bstr.h"

namespace {
// Written without the builder argument, as the log has always shown it.
constexpr char kPrefix[] = "Parcelon:CCompanyBuilder::BuildXML()";
}  // namespace

HRESULT CCompanyBuilder::BuildXML(XMLBuilder& builder) {
  ICompanyInfoPtr info;
  RETURN_IF_FAILED_LOG(parcelon::forms::Required(companyFile_)->GetCompanyInfo(info.ReleaseAndGetAddressOf()),
                       kPrefix, "Failed to get company info from company file in LX.");
  ICompanyInfo* const company = parcelon::forms::Required(info);
  // E-mail and phone come from the second version of the company information; without it both
  // are skipped with their own message.
  ICompanyInfo2Ptr info2;
  const HRESULT info2Result = info.As(info2);

  builder.OpenAggregate("Company");

  Bstr name;
  RETURN_IF_FAILED_LOG(company->GetCompanyName(name.Out()), kPrefix,
                       "Failed to get company name from company info in LX.");
  builder.AddElement("CompanyName", name.Get());

  Bstr email;
  if (SUCCEEDED(LOG_IF_FAILED(SUCCEEDED(info2Result) ? info2->GetEmail(email.Out()) : info2Result,
                              kPrefix,
                              "Failed to get email address from company info (2) in LX.  Skipping "
                              "this optional element.")))
    builder.AddElement("CompanyEmail", email.Get());

  RETURN_IF_FAILED_LOG(parcelon::CatchComError([&] {
                         IAddressPtr address;
                         ThrowIfFailed(company->GetAddress(address.ReleaseAndGetAddressOf()),
                                       &IidOf<ICompanyInfo>());
                         builder.AddAddressElement("Address", address.Get());
                       }),
                       kPrefix, "Failed to get address lines from company info in LX.");

  Bstr phone;
  if (SUCCEEDED(LOG_IF_FAILED(SUCCEEDED(info2Result) ? info2->GetPhone(phone.Out()) : info2Result,
                              kPrefix,
                              "Failed to get phone number from company info (2) in LX.  Skipping "
                              "this optional element.")))
    builder.AddElement("CompanyPhone", phone.Get());

  builder.CloseAggregate("Company");
  return S_OK;
}
