// What the invoice, estimate and statement form aggregates share: the lookup of a transaction by
// record number, the header elements of invoices and estimates, their line writer and their
// sales-tax line rule, and the small value writers under them.
//
// Failures follow one rule: a required value that cannot be read is logged with the caller's
// prefix and its HRESULT is returned at once, leaving opened elements open; an optional one is
// logged ("... Skipping this optional element.") and left out. A null host object where one is
// required throws ComError(E_POINTER), as a failed conversion of a host value throws its code.
#pragma once

#include <cstdint>

#include "clienttools/OLAString.h"
#include "clienttools/XMLBuilder.h"
#include "diagnostics/LogIfFailed.h"
#include "host/HostModel.h"
#include "platform/Bstr.h"
#include "platform/ComError.h"
#include "platform/ComPtr.h"

namespace parcelon::forms {

// `object`, or ComError(E_POINTER) when it is null.
template <class T>
T* Required(T* object) {
  if (!object) throw ComError(E_POINTER);
  return object;
}
template <class T>
T* Required(const ComPtr<T>& object) {
  return Required(object.Get());
}

// A record number as the key that GetItemByRecNum of the host's lists takes (VT_I4).
VARIANT RecNumKey(LONG recNum);

// The status of an element operation of XMLBuilder: a failed host call comes back as its
// HRESULT, a builder without buffer as E_OUTOFMEMORY, everything else (written, or left out as
// empty) as S_OK.
HRESULT ElementStatus(uint32_t code);

// Writes `amount` through AddHostAmountElement without giving up the caller's reference.
HRESULT AddAmount(XMLBuilder& builder, XmlName name, const IAmountPtr& amount, bool omitIfEmpty);

// The value of `amount` as a double, through the amount's second version.
HRESULT ReadDouble(const IAmountPtr& amount, double& value);

// Writes a host date with the local time zone; a date of 0 (not set) writes nothing.
void AddHostDate(XMLBuilder& builder, XmlName name, DATE date);

// Writes `address` as an address aggregate; a failed read of one of its fields comes back as
// its HRESULT, with nothing written.
HRESULT AddAddress(XMLBuilder& builder, XmlName name, const IAddressPtr& address);

// Writes the text `text` unless it is empty.
void AddTextIfNotEmpty(XMLBuilder& builder, XmlName name, BSTR text);

// The invoice or estimate `recNum` of the company file: its transactions, the list, the entry.
// Each step that fails is logged with `prefix` and returned.
HRESULT LookUpInvoice(ICompanyFile* companyFile, LONG recNum, const char* prefix,
                      IInvoicePtr& invoice);
HRESULT LookUpEstimate(ICompanyFile* companyFile, LONG recNum, const char* prefix,
                       IEstimatePtr& estimate);

// The messages of "SuggestedDiscountData", worded for the builder that writes it.
struct SuggestedDiscountWording {
  const char* prefix;
  const char* termsRecNum;  // required: ends the build
  const char* terms2;       // optional: the block is left out
  const char* amount2;      // optional: the block is left out
};

// "SuggestedDiscountData" ("DiscountAmt", "DiscountDate"): the early-payment discount that the
// invoice's terms suggest. Nothing is written for an invoice without terms (null or record number
// 0) or for terms that suggest no discount; the discount values themselves are read through the
// host interface wrapper (a failure throws).
HRESULT AddSuggestedDiscount(XMLBuilder& builder, const IInvoicePtr& invoice, const ITermPtr& terms,
                             const SuggestedDiscountWording& wording);

// The messages of the header elements that invoices and estimates share, worded for one of them.
struct SalesHeaderWording {
  const char* transactionNumber;
  const char* date;
  const char* amount;
  const char* amountDouble;
  const char* createTimeStamp;
  const char* customer;
  const char* customerRecNum;
  const char* billingAddress;
};

// "TranID", "TranNum", "TranDate", "TotalAmount" and "TMCreateStamp" of `transaction`; `total`
// receives the total amount as a double.
HRESULT AddTransactionHead(XMLBuilder& builder, ISalesTransaction* transaction, LONG recNum,
                           const SalesHeaderWording& wording, const char* prefix, double& total);

// "CustomerJobID", "CustomerJobName" and "BillAddress" of `transaction`.
HRESULT AddCustomerJob(XMLBuilder& builder, ISalesTransaction* transaction,
                       const SalesHeaderWording& wording, const char* prefix);

// The messages of the line writer, worded for invoice or estimate lines.
struct LineWording {
  // Read before the elements.
  const char* item;
  const char* itemType;
  const char* endOfGroup;
  const char* printable;
  const char* quantity;
  const char* secondVersion;
  const char* itemMissingForName;
  const char* itemName;
  // The elements.
  const char* description;
  const char* unitPrice;
  const char* amount;
  const char* lineClass;
  const char* className;
  const char* other1;
  const char* other2;
  const char* taxable;
  const char* paid;
  const char* openBalance;
  const char* customFieldCount;
  const char* customField;
};

// What the invoice and estimate line writers share: the values read before the elements and
// the elements both write. A derived writer lists its elements in order with these.
class CSalesLineItemBuilder {
 public:
  // The item type read for the line (an LXItemType), -1 when it could not be read.
  LONG ItemType() const { return itemType_; }

 protected:
  CSalesLineItemBuilder(ILineItem* line, const LineWording& wording);

  // The line's item, its type and name; a failure to read them only leaves them unknown.
  void ReadItem(const char* prefix);
  // The line's second version, and from it "is end of group", "is printable" and the quantity.
  template <class Line2>
  HRESULT ReadSecondVersion(ComPtr<Line2>& line2, const char* prefix) {
    RETURN_IF_FAILED_LOG(line_.As(line2), prefix, wording_.secondVersion);
    Required(line2);
    RETURN_IF_FAILED_LOG(line2->GetIsEndOfGroup(&endOfGroup_), prefix, wording_.endOfGroup);
    RETURN_IF_FAILED_LOG(line2->GetIsPrintable(&printable_), prefix, wording_.printable);
    RETURN_IF_FAILED_LOG(line2->GetQuantity(quantity_.ReleaseAndGetAddressOf()), prefix,
                         wording_.quantity);
    return S_OK;
  }

  // Each writes one element (or a group of them) of the line, with `prefix` in its messages.
  void AddItemName(XMLBuilder& builder);
  void AddDescription(XMLBuilder& builder, const char* prefix);
  void AddQuantity(XMLBuilder& builder, const char* prefix);
  void AddRate(XMLBuilder& builder, const char* prefix);
  void AddLineAmount(XMLBuilder& builder, const char* prefix);
  void AddClassName(XMLBuilder& builder, const char* prefix);
  void AddOthers(XMLBuilder& builder, const char* prefix);
  // "IsPrintable", "IsTaxable", "IsEndOfGroup" and "Paid"; the taxable and paid flags are
  // required.
  HRESULT AddFlags(XMLBuilder& builder, const char* prefix);
  void AddOpenBalance(XMLBuilder& builder, const char* prefix);
  void AddCustomFields(XMLBuilder& builder, const char* prefix);
  void AddTaxableFlag(XMLBuilder& builder);

  // Hands the caller the item name and the amount of the line.
  void GiveNameAndAmount(OLAString& itemName, IAmountPtr& amount) const;

  ILineItemPtr line_;
  const LineWording& wording_;
  VARIANT_BOOL customerIsTaxable_ = VARIANT_TRUE;
  LONG itemType_ = -1;
  Bstr itemName_;
  VARIANT_BOOL endOfGroup_ = VARIANT_FALSE;
  VARIANT_BOOL printable_ = VARIANT_FALSE;
  VARIANT_BOOL lineIsTaxable_ = VARIANT_FALSE;
  IAmountPtr quantity_;
  IAmountPtr amount_;
};

// The messages of the sales-tax line rule, worded for invoices or estimates.
struct SalesTaxLineWording {
  const char* itemRecNum;
  const char* customStyle;
  const char* styleFields;
  const char* fieldCount;
  const char* fieldID;
  const char* fieldOnPrint;
  const char* itemName;
  const char* longDescription;
  const char* rate;
};

// The sales-tax line rule of invoices and estimates: when the customer is taxable, there is a
// sales tax item, and the template of `transaction` prints sales tax as a line item (it does not
// print its sales tax field), writes one `lineElement` for the tax: "ItemName", "ItemDesc",
// "Rate" (from `rate`), "Amount" (`total`, two decimals), "IsPrintable", "IsTaxable",
// "IsEndOfGroup", "Paid". S_FALSE when no line is due.
HRESULT AddSalesTaxLine(XMLBuilder& builder, XmlName lineElement, ISalesTransaction* transaction,
                        double total, IItem* salesTaxItem, const IAmountPtr& rate,
                        VARIANT_BOOL customerIsTaxable, const SalesTaxLineWording& wording,
                        const char* prefix);

}  // namespace parcelon::forms
