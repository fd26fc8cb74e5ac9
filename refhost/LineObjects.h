// The line collections of the reference host's invoices and estimates.
//
// Line objects belong to their transaction's record for fault selection. Their ILineItem methods
// are named after the line's own interface and also answer to "ILineItem", so that
// "IInvoiceItemLineItem::GetAmount" picks invoice lines and "ILineItem::GetAmount" every line.
// The lines' second versions (IInvoiceItemLineItem2, IEstimateItemLineItem2) answer
// QueryInterface unless a fault makes them unavailable.
#pragma once

#include "refhost/ComObject.h"

namespace parcelon::refhost {

HRESULT NewLineItems(const CompanyPtr& company, const Invoice& invoice,
                     IInvoiceItemLineItems** out);
HRESULT NewLineItems(const CompanyPtr& company, const Estimate& estimate,
                     IEstimateItemLineItems** out);

}  // namespace parcelon::refhost
