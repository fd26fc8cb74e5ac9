// Invoice and estimate lines of the reference host, and their collections.
#include "refhost/LineObjects.h"

#include "refhost/PartCollection.h"

namespace parcelon::refhost {

namespace {

// What every line object has: the methods of ILineItem and the grouping, printing and quantity
// of the second versions. Operations are named after the line's interface Element; those of
// ILineItem also answer to "ILineItem".
template <class Line, class Element, class Most, class... Also>
class LineObject : public ComObject<Most, Also..., ILineItem> {
  using Base = ComObject<Most, Also..., ILineItem>;

 public:
  // `transaction` is the record number of the line's invoice or estimate.
  LineObject(CompanyPtr company, LONG transaction, const Line& line)
      : Base(std::move(company), transaction), line_(line) {}

  HRESULT STDMETHODCALLTYPE GetItem(IItem** out) override {
    return this->GiveRecord(Op("GetItem"), out, line_.item);
  }
  HRESULT STDMETHODCALLTYPE GetDescription(BSTR* out) override {
    return this->Give(Op("GetDescription"), out, line_.description);
  }
  HRESULT STDMETHODCALLTYPE GetUnitPrice(IAmount** out) override {
    return this->Give(Op("GetUnitPrice"), out, line_.unitPrice);
  }
  HRESULT STDMETHODCALLTYPE GetAmount(IAmount** out) override {
    return this->Give(Op("GetAmount"), out, line_.amount);
  }
  // An empty amount is zero too.
  HRESULT STDMETHODCALLTYPE GetIsAmountZero(VARIANT_BOOL* out) override {
    return this->Give(Op("GetIsAmountZero"), out, line_.amount.cents == 0);
  }
  HRESULT STDMETHODCALLTYPE GetIsQuantityBlank(VARIANT_BOOL* out) override {
    return this->Give(Op("GetIsQuantityBlank"), out, line_.quantity.empty);
  }
  HRESULT STDMETHODCALLTYPE GetClass(IClass** out) override {
    return this->GiveRecord(Op("GetClass"), out, line_.lineClass);
  }
  HRESULT STDMETHODCALLTYPE GetOther1(BSTR* out) override {
    return this->Give(Op("GetOther1"), out, line_.other1);
  }
  HRESULT STDMETHODCALLTYPE GetOther2(BSTR* out) override {
    return this->Give(Op("GetOther2"), out, line_.other2);
  }
  HRESULT STDMETHODCALLTYPE GetIsTaxable(VARIANT_BOOL* out) override {
    return this->Give(Op("GetIsTaxable"), out, line_.taxable);
  }
  HRESULT STDMETHODCALLTYPE GetPaid(VARIANT_BOOL* out) override {
    return this->Give(Op("GetPaid"), out, line_.paid);
  }
  HRESULT STDMETHODCALLTYPE GetOpenBalance(IAmount** out) override {
    return this->Give(Op("GetOpenBalance"), out, line_.openBalance);
  }
  HRESULT STDMETHODCALLTYPE GetClearedState(LONG* out) override {
    return this->Give(Op("GetClearedState"), out, line_.clearedState);
  }
  HRESULT STDMETHODCALLTYPE GetCustomFieldCount(LONG* out) override {
    return this->Give(Op("GetCustomFieldCount"), out, LONG(line_.customFields.size()));
  }
  // E_INVALIDARG for an index out of range.
  HRESULT STDMETHODCALLTYPE GetCustomField(LONG index, BSTR* out) override {
    RETURN_IF_FAILED(this->Check(Op("GetCustomField")));
    if (index < 0 || size_t(index) >= line_.customFields.size()) return E_INVALIDARG;
    return this->Give(Op("GetCustomField"), out, line_.customFields[size_t(index)]);
  }
  HRESULT STDMETHODCALLTYPE GetIsEndOfGroup(VARIANT_BOOL* out) override {
    return this->Give(Op2("GetIsEndOfGroup"), out, line_.endOfGroup);
  }
  HRESULT STDMETHODCALLTYPE GetIsPrintable(VARIANT_BOOL* out) override {
    return this->Give(Op2("GetIsPrintable"), out, line_.printable);
  }
  HRESULT STDMETHODCALLTYPE GetQuantity(IAmount** out) override {
    return this->Give(Op2("GetQuantity"), out, line_.quantity);
  }

 protected:
  const Line& line() const { return line_; }
  // A method of the first version of the line's interface.
  static OperationName Op(std::string_view method) {
    return {IidOf<Element>(), method, "ILineItem"};
  }
  // A method of the second version.
  static OperationName Op2(std::string_view method) { return {IidOf<Most>(), method}; }

 private:
  const Line& line_;
};

class InvoiceLineObject final
    : public LineObject<InvoiceLine, IInvoiceItemLineItem, IInvoiceItemLineItem2,
                        IInvoiceItemLineItem> {
 public:
  using LineObject::LineObject;

  HRESULT STDMETHODCALLTYPE GetServiceDate(DATE* out) override {
    return Give("IInvoiceItemLineItem::GetServiceDate", out, line().serviceDate);
  }
  HRESULT STDMETHODCALLTYPE GetCurrentPercentage(IAmount** out) override {
    return Give("IInvoiceItemLineItem2::GetCurrentPercentage", out, line().currentPercentage);
  }
  HRESULT STDMETHODCALLTYPE GetEstimateAmount(IAmount** out) override {
    return Give("IInvoiceItemLineItem2::GetEstimateAmount", out, line().estimateAmount);
  }
  HRESULT STDMETHODCALLTYPE GetEstimateQuantity(IAmount** out) override {
    return Give("IInvoiceItemLineItem2::GetEstimateQuantity", out, line().estimateQuantity);
  }
  HRESULT STDMETHODCALLTYPE GetEstimateRate(IAmount** out) override {
    return Give("IInvoiceItemLineItem2::GetEstimateRate", out, line().estimateRate);
  }
  HRESULT STDMETHODCALLTYPE GetPriorAmount(IAmount** out) override {
    return Give("IInvoiceItemLineItem2::GetPriorAmount", out, line().priorAmount);
  }
  HRESULT STDMETHODCALLTYPE GetPriorPercentage(IAmount** out) override {
    return Give("IInvoiceItemLineItem2::GetPriorPercentage", out, line().priorPercentage);
  }
  HRESULT STDMETHODCALLTYPE GetPriorQuantity(IAmount** out) override {
    return Give("IInvoiceItemLineItem2::GetPriorQuantity", out, line().priorQuantity);
  }
  HRESULT STDMETHODCALLTYPE GetPriorRate(IAmount** out) override {
    return Give("IInvoiceItemLineItem2::GetPriorRate", out, line().priorRate);
  }
  HRESULT STDMETHODCALLTYPE GetTotalPercentage(IAmount** out) override {
    return Give("IInvoiceItemLineItem2::GetTotalPercentage", out, line().totalPercentage);
  }
};

class EstimateLineObject final
    : public LineObject<EstimateLine, IEstimateItemLineItem, IEstimateItemLineItem2,
                        IEstimateItemLineItem> {
 public:
  using LineObject::LineObject;

  HRESULT STDMETHODCALLTYPE GetMarkup(IAmount** out) override {
    return Give("IEstimateItemLineItem::GetMarkup", out, line().markup);
  }
  HRESULT STDMETHODCALLTYPE GetNominalTotal(IAmount** out) override {
    return Give("IEstimateItemLineItem::GetNominalTotal", out, line().nominalTotal);
  }
};

}  // namespace

HRESULT NewLineItems(const CompanyPtr& company, const Invoice& invoice,
                     IInvoiceItemLineItems** out) {
  return CreateObject<PartCollectionObject<IInvoiceItemLineItems, IInvoiceItemLineItem,
                                           InvoiceLineObject, InvoiceLine>>(
      out, company, invoice.recNum, invoice.lines);
}

HRESULT NewLineItems(const CompanyPtr& company, const Estimate& estimate,
                     IEstimateItemLineItems** out) {
  return CreateObject<PartCollectionObject<IEstimateItemLineItems, IEstimateItemLineItem,
                                           EstimateLineObject, EstimateLine>>(
      out, company, estimate.recNum, estimate.lines);
}

}  // namespace parcelon::refhost
