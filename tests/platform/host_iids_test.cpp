// The host's interface and class identifiers: none zero, none shared.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "host/HostModel.h"

namespace {

using NamedGuid = std::pair<const char*, GUID>;

#define HOST_IID(Interface) NamedGuid(#Interface, IidOf<Interface>())
#define HOST_CLSID(Class) NamedGuid(#Class, parcelon::host::Class)

std::string Text(const GUID& guid) {
  char text[39];
  parcelon::FormatGuid(guid, text);
  return text;
}

}  // namespace

// A GUID copied from one declaration to the next would let QueryInterface hand out the wrong
// interface, or CoCreateInstance the wrong class.
TEST(HostIids, AllDistinctAndNotZero) {
  const std::vector<NamedGuid> guids = {
      HOST_IID(IUnknown), HOST_IID(IClassFactory), HOST_IID(IAmount), HOST_IID(IPercent),
      HOST_IID(IQuantity), HOST_IID(IAddress), HOST_IID(IAttribute), HOST_IID(ILongAttribute),
      HOST_IID(IAttributeContainer), HOST_IID(ICompanyInfo), HOST_IID(ICompanyInfo2),
      HOST_IID(IServiceSubscriptionStatus), HOST_IID(ICompanyProfile), HOST_IID(ICompanyFile),
      HOST_IID(ICompanyFile2), HOST_IID(ICompanyFile3), HOST_IID(IDataFilePropertyBag), HOST_IID(IDataFileRecord),
      HOST_IID(IDataFileRecords), HOST_IID(IListElement), HOST_IID(ITerm), HOST_IID(ITerm2),
      HOST_IID(IJobInfo), HOST_IID(IName), HOST_IID(IItem), HOST_IID(IClass), HOST_IID(ISalesRep),
      HOST_IID(IShipMethod), HOST_IID(ICustomerMessage), HOST_IID(ITerms), HOST_IID(ICustomerFilter),
      HOST_IID(ICustomers), HOST_IID(INames), HOST_IID(IItems), HOST_IID(IClasses),
      HOST_IID(ISalesReps), HOST_IID(IShipMethods), HOST_IID(ICustomerMessages), HOST_IID(ILists),
      HOST_IID(ILineItem), HOST_IID(IInvoiceItemLineItem), HOST_IID(IInvoiceItemLineItem2),
      HOST_IID(IEstimateItemLineItem), HOST_IID(IEstimateItemLineItem2),
      HOST_IID(IInvoiceItemLineItems), HOST_IID(IEstimateItemLineItems), HOST_IID(IAmount2),
      HOST_IID(ISalesTransaction), HOST_IID(IInvoice), HOST_IID(IInvoice2), HOST_IID(IEstimate),
      HOST_IID(IInvoices), HOST_IID(IEstimates), HOST_IID(ITransactions), HOST_IID(IStyleFont),
      HOST_IID(IStyleTextArea), HOST_IID(IStyleDataArea), HOST_IID(IStyleFieldLabel),
      HOST_IID(IStyleFieldData), HOST_IID(IStyleField), HOST_IID(IStyleFields),
      HOST_IID(IStyleColumnLabel), HOST_IID(IStyleColumnData), HOST_IID(IStyleColumn),
      HOST_IID(IStyleColumns), HOST_IID(IStyleTable), HOST_IID(IStyle), HOST_IID(IStyles),
      HOST_IID(IAddInGoodies), HOST_IID(ILXApplication), HOST_IID(INAAuthTool), HOST_IID(ILXInbox),
      HOST_IID(IBase64Coder), HOST_IID(IAmbitAccess), HOST_CLSID(CLSID_LXAddIn),
      HOST_CLSID(CLSID_NAAuthTool), HOST_CLSID(CLSID_LXInbox), HOST_CLSID(CLSID_Base64Coder),
      HOST_CLSID(CLSID_AmbitAccess),
  };
  const GUID zero{};
  for (size_t i = 0; i < guids.size(); ++i) {
    EXPECT_FALSE(IsEqualGUID(guids[i].second, zero)) << guids[i].first << " is zero";
    for (size_t j = i + 1; j < guids.size(); ++j) {
      EXPECT_FALSE(IsEqualGUID(guids[i].second, guids[j].second))
          << guids[i].first << " and " << guids[j].first << " share " << Text(guids[i].second);
    }
  }
}
