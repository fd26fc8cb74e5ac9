// The data upload request: "LXDataMsgsRq" with one "DataUploadRq" that carries the company, its
// terms and customers/jobs, the invoices and estimates the forms concern and the removal notices
// of deleted ones. CDataUploadRequest writes the request from the session's state;
// CDataUploadHelper writes its sections and decides per record whether it is sent.
#pragma once

#include <vector>

#include "clienttools/XMLBuilder.h"
#include "host/HostModel.h"
#include "interfaces/ParcelonInterfaces.h"
#include "upload/RecNumMap.h"

// The upload-time attribute that says when a list record was last uploaded.
inline constexpr char kUploadTimeAttributeName[] = "ParcelonUploadTime";
inline constexpr char kUploadTimeAttributeOwner[] = "{54901C71-3408-44fb-9031-7B4BB81D871C}";

// Whether this pass writes the data message set: always with DoAllCustomers, else when the
// current form (none: no) has Post set.
HRESULT IsOkayToBuildLXDataMsgsRq(bool doAllCustomers, INA_Form7* currentForm, bool* ok);

class CDataUploadHelper {
 public:
  CDataUploadHelper(ICompanyFilePtr company, LONG lastUploadTime, bool doAllCustomers)
      : company_(std::move(company)), lastUploadTime_(lastUploadTime), doAllCustomers_(doAllCustomers) {}
  virtual ~CDataUploadHelper() = default;
  void SetScope(LONG scope) { scope_ = scope; }

  // Each writes its section (nothing when it has no record) and moves the marks of what it wrote.
  HRESULT AddTermItems(CRecNumMap& map, XMLBuilder& builder);
  HRESULT AddCustomerJobItems(CRecNumMap& map, XMLBuilder& builder);
  HRESULT AddInvoices(CRecNumMap& map, XMLBuilder& builder);
  HRESULT AddDeletedInvoices(CRecNumMap& map, XMLBuilder& builder);
  HRESULT AddEstimates(CRecNumMap& map, XMLBuilder& builder);
  HRESULT AddDeletedEstimates(CRecNumMap& map, XMLBuilder& builder);
  // Kept beside them; the request build does not call them.
  HRESULT AddClassItems(CRecNumMap& map, XMLBuilder& builder);
  HRESULT AddCustMessageItems(CRecNumMap& map, XMLBuilder& builder);
  HRESULT AddSalesRepItems(CRecNumMap& map, XMLBuilder& builder);
  HRESULT AddShipMethodItems(CRecNumMap& map, XMLBuilder& builder);

  // The upload time of a record into *value: S_OK when it has one, S_FALSE when it has none. An
  // attribute that cannot be read or is of another type is logged and counts as none.
  HRESULT GetUploadTimeAttribute(IAttributeContainerPtr& attributes, LONG* value);

 private:
  // A list section: its records' kind and list, its element and its messages.
  template <class List>
  struct ListSection {
    RecordKind kind;
    HRESULT (STDMETHODCALLTYPE ILists::*getList)(List**);
    XmlName element;
    const char* prefix;
    const char* listMessage;
    const char* countMessage;
    const char* recNumMessage;
    const char* attributesMessage;
    const char* modTimeMessage;
    const char* buildMessage;
  };
  template <class List, class Record, class Builder>
  HRESULT AddListItems(CRecNumMap& map, XMLBuilder& builder, const ListSection<List>& section);

  // The customer/job `customer` with mark 2, and its parents not yet in the map with mark 1.
  HRESULT MarkChangedCustomer(CRecNumMap& map, const INamePtr& customer);
  // Whether `customer` counts as changed in the change scan: it has an upload time above 0.
  HRESULT IsChangedCustomer(const INamePtr& customer, bool& changed);

  ICompanyFilePtr company_;
  LONG lastUploadTime_;
  bool doAllCustomers_;
  LONG scope_ = 2;
};

// What the request reads of the session.
struct DataUploadSession {
  CRecNumMap& map;
  const std::vector<INA_Form7Ptr>& forms;
  bool forceNewCompany;
  bool doAllCustomers;
  LONG uploadScope;
};

class CDataUploadRequest {
 public:
  explicit CDataUploadRequest(const DataUploadSession& session) : session_(session) {}
  virtual ~CDataUploadRequest() = default;

  // Clears the map, selects the records, and writes "LXDataMsgsRq". A failure leaves the element
  // open: the whole request is abandoned.
  HRESULT BuildLXDataMsgsRq(XMLBuilder& builder);
  HRESULT BuildDataUploadRq(const ICompanyFilePtr& company, XMLBuilder& builder);
  HRESULT BuildCompanyAdd(const ICompanyFilePtr& company, XMLBuilder& builder);

 private:
  const DataUploadSession& session_;
};
