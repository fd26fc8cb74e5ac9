// Fault injection of the reference host, and the names of the host interfaces.
#include "refhost/Faults.h"

#include <algorithm>
#include <iterator>

#include "host/HostModel.h"
#include "host/HostServices.h"

namespace parcelon::refhost {

namespace {

struct NamedInterface {
  std::string_view name;
  IID iid;
};

#define PARCELON_NAMED(I) \
  NamedInterface { #I, IidOf < I>() }
const NamedInterface kHostInterfaces[] = {
    PARCELON_NAMED(IAmount),
    PARCELON_NAMED(IAmount2),
    PARCELON_NAMED(IPercent),
    PARCELON_NAMED(IQuantity),
    PARCELON_NAMED(IAddress),
    PARCELON_NAMED(ICompanyInfo),
    PARCELON_NAMED(ICompanyInfo2),
    PARCELON_NAMED(IServiceSubscriptionStatus),
    PARCELON_NAMED(ICompanyProfile),
    PARCELON_NAMED(ICompanyFile),
    PARCELON_NAMED(ICompanyFile2),
    PARCELON_NAMED(ICompanyFile3),
    PARCELON_NAMED(IAttribute),
    PARCELON_NAMED(ILongAttribute),
    PARCELON_NAMED(IAttributeContainer),
    PARCELON_NAMED(IListElement),
    PARCELON_NAMED(ITerm),
    PARCELON_NAMED(ITerm2),
    PARCELON_NAMED(IJobInfo),
    PARCELON_NAMED(IName),
    PARCELON_NAMED(IItem),
    PARCELON_NAMED(IClass),
    PARCELON_NAMED(ISalesRep),
    PARCELON_NAMED(IShipMethod),
    PARCELON_NAMED(ICustomerMessage),
    PARCELON_NAMED(ITerms),
    PARCELON_NAMED(ICustomerFilter),
    PARCELON_NAMED(ICustomers),
    PARCELON_NAMED(INames),
    PARCELON_NAMED(IItems),
    PARCELON_NAMED(IClasses),
    PARCELON_NAMED(ISalesReps),
    PARCELON_NAMED(IShipMethods),
    PARCELON_NAMED(ICustomerMessages),
    PARCELON_NAMED(ILists),
    PARCELON_NAMED(ILineItem),
    PARCELON_NAMED(IInvoiceItemLineItem),
    PARCELON_NAMED(IInvoiceItemLineItem2),
    PARCELON_NAMED(IEstimateItemLineItem),
    PARCELON_NAMED(IEstimateItemLineItem2),
    PARCELON_NAMED(IInvoiceItemLineItems),
    PARCELON_NAMED(IEstimateItemLineItems),
    PARCELON_NAMED(ISalesTransaction),
    PARCELON_NAMED(IInvoice),
    PARCELON_NAMED(IInvoice2),
    PARCELON_NAMED(IEstimate),
    PARCELON_NAMED(IInvoices),
    PARCELON_NAMED(IEstimates),
    PARCELON_NAMED(ITransactions),
    PARCELON_NAMED(IStyleFont),
    PARCELON_NAMED(IStyleTextArea),
    PARCELON_NAMED(IStyleDataArea),
    PARCELON_NAMED(IStyleFieldLabel),
    PARCELON_NAMED(IStyleFieldData),
    PARCELON_NAMED(IStyleField),
    PARCELON_NAMED(IStyleFields),
    PARCELON_NAMED(IStyleColumnLabel),
    PARCELON_NAMED(IStyleColumnData),
    PARCELON_NAMED(IStyleColumn),
    PARCELON_NAMED(IStyleColumns),
    PARCELON_NAMED(IStyleTable),
    PARCELON_NAMED(IStyleTable2),
    PARCELON_NAMED(IStyle),
    PARCELON_NAMED(IStyles),
    PARCELON_NAMED(IDataFilePropertyBag),
    PARCELON_NAMED(IDataFileRecord),
    PARCELON_NAMED(IDataFileRecords),
    PARCELON_NAMED(IAddInGoodies),
    PARCELON_NAMED(ILXApplication),
    PARCELON_NAMED(INAAuthTool),
    PARCELON_NAMED(ILXInbox),
    PARCELON_NAMED(IBase64Coder),
    PARCELON_NAMED(IAmbitAccess),
    PARCELON_NAMED(IFolderLocator),
    PARCELON_NAMED(IFolderService),
    PARCELON_NAMED(IMessageBoxService),
    PARCELON_NAMED(IFileRedirectionService),
};
#undef PARCELON_NAMED

}  // namespace

std::optional<IID> HostInterfaceByName(std::string_view name) {
  for (const NamedInterface& entry : kHostInterfaces)
    if (entry.name == name) return entry.iid;
  return std::nullopt;
}

namespace {

// Whether `operation` names a method of a host interface ("IAddress::GetCity").
bool IsHostOperation(std::string_view operation) {
  const size_t separator = operation.find("::");
  return separator != std::string_view::npos && separator + 2 != operation.size() &&
         HostInterfaceByName(operation.substr(0, separator));
}

}  // namespace

bool Faults::Fail(std::string_view operation, HRESULT hr, std::optional<LONG> record) {
  if (!IsHostOperation(operation) || SUCCEEDED(hr)) return false;
  auto found = operations_.find(operation);
  if (found == operations_.end()) found = operations_.emplace(operation, OperationFaults{}).first;
  if (record)
    found->second.byRecord[*record] = hr;
  else
    found->second.everyRecord = hr;
  any_ = true;
  return true;
}

bool Faults::Trap(std::string_view operation, int call, std::function<void()> action) {
  if (!IsHostOperation(operation) || call < 1 || !action) return false;
  auto found = operations_.find(operation);
  if (found == operations_.end()) found = operations_.emplace(operation, OperationFaults{}).first;
  found->second.trap = std::move(action);
  found->second.trapCall = call;
  any_ = true;
  return true;
}

bool Faults::MakeUnavailable(std::string_view interfaceName) {
  const std::optional<IID> iid = HostInterfaceByName(interfaceName);
  if (!iid) return false;
  unavailable_.push_back(*iid);
  any_ = true;
  return true;
}

void Faults::MakeAbsent(ListKind list, LONG recNum) {
  absent_.emplace(list, recNum);
  any_ = true;
}

void Faults::HoldLock(std::u16string_view dataFileRecordName) {
  heldLocks_.emplace(dataFileRecordName);
  any_ = true;
}

void Faults::Clear() { *this = Faults(); }

int Faults::Triggered(std::string_view operation) const {
  const auto found = operations_.find(operation);
  return found == operations_.end() ? 0 : found->second.triggered;
}

std::string_view HostInterfaceName(REFIID iid) {
  for (const NamedInterface& entry : kHostInterfaces)
    if (IsEqualGUID(entry.iid, iid)) return entry.name;
  return "?";
}

std::string OperationName::Join(bool also) const {
  if (!interface_) return std::string(whole_);
  std::string joined(also ? also_ : HostInterfaceName(*interface_));
  joined += "::";
  joined += whole_;
  return joined;
}

HRESULT Faults::Find(const OperationName& operation, LONG record) const {
  const HRESULT hr = FindOne(operation.Join(), record);
  if (FAILED(hr) || !operation.HasAlso()) return hr;
  return FindOne(operation.Join(true), record);
}

HRESULT Faults::FindOne(std::string_view operation, LONG record) const {
  const auto found = operations_.find(operation);
  if (found == operations_.end()) return S_OK;
  OperationFaults& faults = found->second;
  if (faults.trap && ++faults.calls == faults.trapCall) faults.trap();
  const auto forRecord = faults.byRecord.find(record);
  const HRESULT hr =
      forRecord != faults.byRecord.end() ? forRecord->second : faults.everyRecord.value_or(S_OK);
  if (FAILED(hr)) ++faults.triggered;
  return hr;
}

bool Faults::FindUnavailable(REFIID iid) const {
  return std::any_of(unavailable_.begin(), unavailable_.end(),
                     [&](const IID& other) { return IsEqualGUID(other, iid); });
}

}  // namespace parcelon::refhost
