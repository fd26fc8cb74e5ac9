// The reference host's IDataFileRecords, IDataFileRecord and IDataFilePropertyBag objects.
//
// A record object keeps the values written through its property bag and its data version until
// Save, which writes them in one step; reads see those unsaved values first, then the records as
// they stand now. Save and Delete need the record's lock (E_ACCESSDENIED without it), and a
// record object that is released still holding the lock gives it up. Faults: every method answers
// to its "Interface::Method" name on record 0, and a lock that the faults hold for a record name
// is refused to TryLock.
#pragma once

#include <memory>

#include "host/DataFile.h"
#include "refhost/ComObject.h"
#include "refhost/DataFileStore.h"

namespace parcelon::refhost {

// The data file records of `company`: those of its store when it has one, else those it keeps
// in memory (seen by this process only).
HRESULT NewDataFileRecords(const CompanyPtr& company, IDataFileRecords** out);
// The data file records kept in `store`.
HRESULT NewDataFileRecords(const CompanyPtr& company, std::shared_ptr<DataFileStore> store,
                           IDataFileRecords** out);

}  // namespace parcelon::refhost
