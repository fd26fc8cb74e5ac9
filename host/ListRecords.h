// The records of the host's lists: terms, customers and jobs (names), items, classes, sales reps,
// ship methods and customer messages.
//
// A getter for a record that another record refers to gives an empty record (record number 0,
// empty names) when the reference is not set, except the parent and root getters, which give
// null at the top of a tree. Times are seconds since 1970, as the host keeps them.
#pragma once

#include "host/Attributes.h"
#include "host/HostValues.h"
#include "platform/ComBase.h"
#include "platform/ComPtr.h"

// Item types of the host.
enum LXItemType {
  itSERVICE = 0,
  itINVENTORY = 1,
  itPART = 2,
  itCHARGES = 3,
  itSUBTOTAL = 4,
  itGROUP = 5,
  itDISCOUNT = 6,
  itPAYMENT = 7,
  itTAXCOMP = 8,
  itTAXGROUP = 9,
};

// Term types of the host.
enum LXTermType {
  ttStandard = 0,
  ttDateDriven = 1,
};

// Job status of a customer or job.
enum LXJobStatus {
  jsNone = 0,
  jsPending = 1,
  jsAwarded = 2,
  jsInProgress = 3,
  jsClosed = 4,
  jsNotAwarded = 5,
};

// What every list record has. An attribute value is written between LockForEdit and Save; an
// attribute can be removed outside them, and the removal is kept at once.
struct IListElement : IUnknown {
  // The host's record number, the record's identity in the upload.
  virtual HRESULT STDMETHODCALLTYPE GetRecNum(LONG* recNum) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetName(BSTR* name) = 0;
  // The name with the names of its parents, such as "Customer:Job".
  virtual HRESULT STDMETHODCALLTYPE GetFullName(BSTR* fullName) = 0;
  // The record's inactive flag.
  virtual HRESULT STDMETHODCALLTYPE GetIsHidden(VARIANT_BOOL* hidden) = 0;
  // Time of the record's last change; 0 when the host has none.
  virtual HRESULT STDMETHODCALLTYPE GetModTime(LONG* modTime) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetAttributes(IAttributeContainer** attributes) = 0;
  // Takes the record's edit lock; fails when someone else holds it.
  virtual HRESULT STDMETHODCALLTYPE LockForEdit() = 0;
  // Writes the record back and releases the edit lock.
  virtual HRESULT STDMETHODCALLTYPE Save() = 0;
};

// Payment terms.
struct ITerm : IListElement {
  // An LXTermType.
  virtual HRESULT STDMETHODCALLTYPE GetType(LONG* type) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetStdDueDays(LONG* days) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetStdDiscountDays(LONG* days) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDayOfMonthDue(LONG* day) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDiscountDayOfMonth(LONG* day) = 0;
  // Empty when the terms offer no early-payment discount.
  virtual HRESULT STDMETHODCALLTYPE GetDiscountPct(IPercent** percent) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetMinDays(LONG* days) = 0;
};

// Second version of the terms.
struct ITerm2 : ITerm {
  // True when the terms suggest no early-payment discount on a transaction.
  virtual HRESULT STDMETHODCALLTYPE GetIsDiscountEmpty(VARIANT_BOOL* empty) = 0;
};

// The job side of a customer or job.
struct IJobInfo : IUnknown {
  // An LXJobStatus.
  virtual HRESULT STDMETHODCALLTYPE GetJobStatus(LONG* status) = 0;
};

struct ISalesRep;

// A name of the company file; customers and jobs are names, a job's parent is its customer or
// the job above it.
struct IName : IListElement {
  virtual HRESULT STDMETHODCALLTYPE GetIsJob(VARIANT_BOOL* isJob) = 0;
  // The customer or job directly above; null for a top-level customer.
  virtual HRESULT STDMETHODCALLTYPE GetParent(IName** parent) = 0;
  // The top-level customer above; null for a top-level customer.
  virtual HRESULT STDMETHODCALLTYPE GetParentRoot(IName** root) = 0;
  // The top-level customer of a job; the name itself for a top-level customer.
  virtual HRESULT STDMETHODCALLTYPE GetRoot(IName** root) = 0;
  // Depth in the customer and job tree: 0 for a top-level customer.
  virtual HRESULT STDMETHODCALLTYPE GetSubLevel(LONG* level) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetJobInfo(IJobInfo** jobInfo) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetCompanyName(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetSalutation(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetFirstName(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetMiddleInitial(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetLastName(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetContactName1(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetContactName2(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTelephoneNumber1(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTelephoneNumber2(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetFaxNumber(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetEmail(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetAccountNumber(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetNote(BSTR* text) = 0;
  // The name's own address.
  virtual HRESULT STDMETHODCALLTYPE GetAddress(IAddress** address) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetBillingAddress(IAddress** address) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetShippingAddress(IAddress** address) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetSalesRep(ISalesRep** salesRep) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTerms(ITerm** terms) = 0;
};

// An item of the item list; an item may have a parent item and, for the group types
// (itGROUP, itTAXGROUP), group members.
struct IItem : IListElement {
  // An LXItemType.
  virtual HRESULT STDMETHODCALLTYPE GetType(LONG* type) = 0;
  // null for a top-level item.
  virtual HRESULT STDMETHODCALLTYPE GetParent(IItem** parent) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetLongDescription(BSTR* text) = 0;
  // Number of group members; 0 for an item that is not a group.
  virtual HRESULT STDMETHODCALLTYPE GetGroupCount(LONG* count) = 0;
  // The group member at index 1 to GetGroupCount.
  virtual HRESULT STDMETHODCALLTYPE GetGroupItem(LONG index, IItem** member) = 0;
};

// A class (a tree of classes, like customers and jobs).
struct IClass : IListElement {
  // null for a top-level class.
  virtual HRESULT STDMETHODCALLTYPE GetParent(IClass** parent) = 0;
  // The top-level class above; null for a top-level class.
  virtual HRESULT STDMETHODCALLTYPE GetParentRoot(IClass** root) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetSubLevel(LONG* level) = 0;
};

// A sales rep, who is one of the company file's names.
struct ISalesRep : IListElement {
  virtual HRESULT STDMETHODCALLTYPE GetAssociatedName(IName** name) = 0;
};

struct IShipMethod : IListElement {};

// A message printed on a customer's forms.
struct ICustomerMessage : IListElement {};

PARCELON_DECLARE_IID(IListElement, "B83CC892-AD29-4D2C-A2C2-07620540AE22")
PARCELON_DECLARE_IID(ITerm, "C3B61881-E97D-4860-A4CE-F35590B9747D")
PARCELON_DECLARE_IID(ITerm2, "7CE082B0-2488-48D1-9E3E-5C496CCA49AC")
PARCELON_DECLARE_IID(IJobInfo, "63A3EB4F-C7DD-4D72-A492-133FB57BB4B9")
PARCELON_DECLARE_IID(IName, "767994D6-8584-4165-8D76-B16E567E2B3A")
PARCELON_DECLARE_IID(IItem, "9A4D96B9-A77B-489F-8979-C4322DA4E5B8")
PARCELON_DECLARE_IID(IClass, "4C42EF0F-60A3-4FEF-B3C2-20B39015D61A")
PARCELON_DECLARE_IID(ISalesRep, "3BECDAE0-BE05-44CB-801F-B1A4A5914106")
PARCELON_DECLARE_IID(IShipMethod, "C99834B7-B193-4AC0-8F08-862A9FAF989C")
PARCELON_DECLARE_IID(ICustomerMessage, "FD552C13-92EA-46E2-AFEB-401EDEB920F4")

using IListElementPtr = ComPtr<IListElement>;
using ITermPtr = ComPtr<ITerm>;
using ITerm2Ptr = ComPtr<ITerm2>;
using IJobInfoPtr = ComPtr<IJobInfo>;
using INamePtr = ComPtr<IName>;
using IItemPtr = ComPtr<IItem>;
using IClassPtr = ComPtr<IClass>;
using ISalesRepPtr = ComPtr<ISalesRep>;
using IShipMethodPtr = ComPtr<IShipMethod>;
using ICustomerMessagePtr = ComPtr<ICustomerMessage>;
