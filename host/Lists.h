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

PARCELON_DECLARE_IID(ITerms, 0xA898EC47, 0x9FAC, 0x4360, 0x88, 0x68, 0x25, 0xE8, 0x3F, 0x89, 0x6B, 0xB7)
PARCELON_DECLARE_IID(ICustomerFilter, 0xFCE5E834, 0x1745, 0x49F6, 0x86, 0x7C, 0x74, 0x85, 0xA6, 0x9A, 0x5A, 0x9B)
PARCELON_DECLARE_IID(ICustomers, 0xF4AE9CE4, 0x52AC, 0x4DB8, 0x99, 0xEC, 0x00, 0x86, 0xA2, 0x51, 0x14, 0xFC)
PARCELON_DECLARE_IID(INames, 0x25D8B1DC, 0x5F3E, 0x4A0D, 0x81, 0x6B, 0x9D, 0xAA, 0xFE, 0x45, 0xEF, 0x5A)
PARCELON_DECLARE_IID(IItems, 0x2B644397, 0xD860, 0x42F0, 0xAF, 0x0A, 0x40, 0x1C, 0xEF, 0x4F, 0x71, 0x02)
PARCELON_DECLARE_IID(IClasses, 0xF25C8A41, 0xCE88, 0x4E84, 0x84, 0xA2, 0x23, 0x6A, 0x01, 0x46, 0xB0, 0x59)
PARCELON_DECLARE_IID(ISalesReps, 0x4BC5F168, 0x3214, 0x4EBF, 0xA0, 0xD6, 0x34, 0x64, 0xC5, 0xEA, 0xF2, 0x5A)
PARCELON_DECLARE_IID(IShipMethods, 0x68BEB1E7, 0x5C54, 0x45A7, 0x81, 0xA0, 0x39, 0x3B, 0x33, 0x69, 0x21, 0xA3)
PARCELON_DECLARE_IID(ICustomerMessages, 0x6439FF45, 0x7C5A, 0x4D0B, 0x84, 0x7F, 0x0A, 0x77, 0x38, 0x9D, 0xA6, 0x14)
PARCELON_DECLARE_IID(ILists, 0x0B936345, 0xE843, 0x4601, 0xA8, 0x29, 0x9B, 0x08, 0x8E, 0x38, 0x65, 0xEC)

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
