// VARIANT conversions of data file record values, and the records kept in memory.
#include "refhost/DataFileStore.h"

#include <new>
#include <utility>

#include "host/Attributes.h"

namespace parcelon::refhost {

HRESULT PropertyValueFromVariant(const VARIANT& value, PropertyValue& out) {
  PropertyValue result;
  result.type = value.vt;
  switch (value.vt) {
    case VT_EMPTY: break;
    case VT_I4: result.integer = value.lVal; break;
    case VT_I8: result.integer = value.llVal; break;
    case VT_BOOL: result.integer = value.boolVal ? VARIANT_TRUE : VARIANT_FALSE; break;
    case VT_R8: result.real = value.dblVal; break;
    case VT_DATE: result.real = value.date; break;
    case VT_BSTR:
      if (SysStringByteLen(value.bstrVal) > kMaxPropertyBytes) return E_INVALIDARG;
      try {
        result.text = FromBstr(value.bstrVal);
      } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
      }
      break;
    default: return DISP_E_BADVARTYPE;
  }
  out = std::move(result);
  return S_OK;
}

HRESULT PropertyValueToVariant(const PropertyValue& value, VARIANT* out) {
  if (!out) return E_POINTER;
  VariantInit(out);
  switch (value.type) {
    case VT_EMPTY: break;
    case VT_I4: out->lVal = LONG(value.integer); break;
    case VT_I8: out->llVal = value.integer; break;
    case VT_BOOL: out->boolVal = value.integer ? VARIANT_TRUE : VARIANT_FALSE; break;
    case VT_R8: out->dblVal = value.real; break;
    case VT_DATE: out->date = value.real; break;
    case VT_BSTR:
      out->bstrVal = ToBstr(value.text);
      if (!out->bstrVal) return E_OUTOFMEMORY;
      break;
    default: return DISP_E_BADVARTYPE;
  }
  out->vt = value.type;
  return S_OK;
}

DataFileRecord& MemoryDataFileStore::Find(const Text& record) {
  const auto found = records_.find(record);
  if (found == records_.end()) throw StoreError(LX_E_NOTFOUND, "no such data file record");
  return found->second;
}

bool MemoryDataFileStore::Exists(const Text& record) { return records_.count(record) != 0; }

void MemoryDataFileStore::Add(const Text& record) {
  DataFileRecord added;
  added.name = record;
  if (!records_.try_emplace(record, std::move(added)).second)
    throw StoreError(kAlreadyExists, "a data file record of that name exists");
}

LONG MemoryDataFileStore::DataVersion(const Text& record) { return Find(record).dataVersion; }

PropertyValue MemoryDataFileStore::Read(const Text& record, const Text& property) {
  const DataFileRecord& found = Find(record);
  const auto value = found.properties.find(property);
  return value == found.properties.end() ? PropertyValue{} : value->second;
}

void MemoryDataFileStore::Save(const Text& record, const DataFileSave& save) {
  // Built aside and swapped in, so that running out of memory leaves the record as it was.
  const auto existing = records_.find(record);
  DataFileRecord updated = existing != records_.end() ? existing->second : DataFileRecord{};
  updated.name = record;
  if (save.version) updated.dataVersion = *save.version;
  for (const auto& [name, value] : save.properties) {
    if (value.type == VT_EMPTY)
      updated.properties.erase(name);
    else
      updated.properties[name] = value;
  }
  std::swap(records_[record], updated);
}

void MemoryDataFileStore::Delete(const Text& record) {
  if (records_.erase(record) == 0) throw StoreError(LX_E_NOTFOUND, "no such data file record");
}

bool MemoryDataFileStore::TryLock(const Text& record, const void* holder) {
  const auto [slot, inserted] = holders_.try_emplace(record, holder);
  return inserted || slot->second == holder;
}

bool MemoryDataFileStore::Unlock(const Text& record, const void* holder) {
  const auto found = holders_.find(record);
  if (found == holders_.end() || found->second != holder) return false;
  holders_.erase(found);
  return true;
}

}  // namespace parcelon::refhost
