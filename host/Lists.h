// The host's lists as collections: count, record by index, record by record number, and the
// customer list's modification-date filter.
//
// Indexes run from 0 to count - 1 in the list's own order. GetItemByRecNum takes the record
// number as a VT_I4 VARIANT and fails with LX_E_NOTFOUND when the list has no such record.
#pragma once

#include "host/Attributes.h"
#include "host/ListRecords.h"
#include "platform/ComBase.h"
#include "platform/ComPtr.h"

struct IStyles;

// How a filter's modification-date criterion compares a record's modification time with the
// criterion's time.
enum LXDateComparison {
  dcEqual = 0,
  dcBefore = 1,
  // Strictly later: the records changed since the given time.
  dcAfter = 2,
};

struct ITerms : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetCount(LONG* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItem(LONG index, ITerm** term) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItemByRecNum(VARIANT recNum, ITerm** term) = 0;
};

// The customers of a customer list that pass a filter, in the list's order.
struct ICustomerFilter : IUnknown {
  // Keeps the customers whose modification time compares with modTime as the LXDateComparison
  // says. A filter without criterion passes every customer.
  virtual HRESULT STDMETHODCALLTYPE SetModDateCriterion(LONG modTime, LONG comparison) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetCount(LONG* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItem(LONG index, IName** customer) = 0;
};

// Customers and jobs.
struct ICustomers : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetCount(LONG* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItem(LONG index, IName** customer) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItemByRecNum(VARIANT recNum, IName** customer) = 0;
  // A new filter over this list, without criterion.
  virtual HRESULT STDMETHODCALLTYPE GetFilter(ICustomerFilter** filter) = 0;
};

// Every name of the company file: customers, jobs and the other names.
struct INames : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetCount(LONG* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItem(LONG index, IName** name) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItemByRecNum(VARIANT recNum, IName** name) = 0;
};

struct IItems : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetCount(LONG* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItem(LONG index, IItem** item) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItemByRecNum(VARIANT recNum, IItem** item) = 0;
};

struct IClasses : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetCount(LONG* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItem(LONG index, IClass** item) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItemByRecNum(VARIANT recNum, IClass** item) = 0;
};

struct ISalesReps : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetCount(LONG* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItem(LONG index, ISalesRep** item) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItemByRecNum(VARIANT recNum, ISalesRep** item) = 0;
};

struct IShipMethods : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetCount(LONG* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItem(LONG index, IShipMethod** item) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItemByRecNum(VARIANT recNum, IShipMethod** item) = 0;
};

struct ICustomerMessages : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetCount(LONG* count) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItem(LONG index, ICustomerMessage** item) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItemByRecNum(VARIANT recNum, ICustomerMessage** item) = 0;
};

// The lists of a company file.
struct ILists : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetTerms(ITerms** terms) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetCustomers(ICustomers** customers) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetNames(INames** names) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetItems(IItems** items) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetClasses(IClasses** classes) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetSalesReps(ISalesReps** salesReps) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetShipMethods(IShipMethods** shipMethods) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetCustomerMessages(ICustomerMessages** messages) = 0;
  // The form templates.
  virtual HRESULT STDMETHODCALLTYPE GetStyles(IStyles** styles) = 0;
};

PARCELON_DECLARE_IID(ITerms, "A898EC47-9FAC-4360-8868-25E83F896BB7")
PARCELON_DECLARE_IID(ICustomerFilter, "FCE5E834-1745-49F6-867C-7485A69A5A9B")
PARCELON_DECLARE_IID(ICustomers, "F4AE9CE4-52AC-4DB8-99EC-0086A25114FC")
PARCELON_DECLARE_IID(INames, "25D8B1DC-5F3E-4A0D-816B-9DAAFE45EF5A")
PARCELON_DECLARE_IID(IItems, "2B644397-D860-42F0-AF0A-401CEF4F7102")
PARCELON_DECLARE_IID(IClasses, "F25C8A41-CE88-4E84-84A2-236A0146B059")
PARCELON_DECLARE_IID(ISalesReps, "4BC5F168-3214-4EBF-A0D6-3464C5EAF25A")
PARCELON_DECLARE_IID(IShipMethods, "68BEB1E7-5C54-45A7-81A0-393B336921A3")
PARCELON_DECLARE_IID(ICustomerMessages, "6439FF45-7C5A-4D0B-847F-0A77389DA614")
PARCELON_DECLARE_IID(ILists, "0B936345-E843-4601-A829-9B088E3865EC")

using ITermsPtr = ComPtr<ITerms>;
using ICustomerFilterPtr = ComPtr<ICustomerFilter>;
using ICustomersPtr = ComPtr<ICustomers>;
using INamesPtr = ComPtr<INames>;
using IItemsPtr = ComPtr<IItems>;
using IClassesPtr = ComPtr<IClasses>;
using ISalesRepsPtr = ComPtr<ISalesReps>;
using IShipMethodsPtr = ComPtr<IShipMethods>;
using ICustomerMessagesPtr = ComPtr<ICustomerMessages>;
using IListsPtr = ComPtr<ILists>;
