// Factories of the reference host's top-level objects, each defined by the module that implements
// the object: the company file and lists here (CompanyObjects.cpp), the transactions and styles
// with the transaction objects, the data file records with the data file store.
#pragma once

#include "host/HostModel.h"
#include "refhost/ComObject.h"

namespace parcelon::refhost {

HRESULT NewCompanyFile(const CompanyPtr& company, ICompanyFile** out);
HRESULT NewLists(const CompanyPtr& company, ILists** out);
HRESULT NewTransactions(const CompanyPtr& company, ITransactions** out);
HRESULT NewStyles(const CompanyPtr& company, IStyles** out);
HRESULT NewDataFileRecords(const CompanyPtr& company, IDataFileRecords** out);

}  // namespace parcelon::refhost
