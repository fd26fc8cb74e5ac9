// The attribute containers of the reference host's list records, and the writing of a record's
// attributes to the company store.
//
// Attribute values and new attributes are written while the record holds its edit lock
// (LockForEdit until Save) and reach the store at Save; a removal is kept at once. Names and
// owners compare exactly.
#pragma once

#include "refhost/ComObject.h"

namespace parcelon::refhost {

// The attribute container of `record` of `list`.
HRESULT NewAttributeContainer(const CompanyPtr& company, ListKind list, ListRecord& record,
                              IAttributeContainer** out);

// Writes the attributes of `record` to the company's store, when it has one; S_OK without one.
HRESULT StoreAttributes(Company& company, ListKind list, const ListRecord& record);

}  // namespace parcelon::refhost
