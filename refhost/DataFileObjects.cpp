// The data file record objects over a DataFileStore.
#include "refhost/DataFileObjects.h"

#include <new>
#include <utility>

#if PARCELON_HAVE_SQLITE
#include "refhost/CompanyStore.h"
#endif

namespace parcelon::refhost {

namespace {

using StorePtr = std::shared_ptr<DataFileStore>;

// Runs `body`, turning what it throws into the HRESULT a host method answers with.
template <class Body>
HRESULT Guarded(Body&& body) noexcept {
  try {
    return body();
  } catch (const StoreError& error) {
    return error.Code();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_FAIL;
  }
}

// Whether the records accept `name`: not longer than kMaxPropertyBytes.
bool NameFits(BSTR name) { return SysStringByteLen(name) <= kMaxPropertyBytes; }

class DataFileRecordObject final : public ComObject<IDataFileRecord> {
 public:
  DataFileRecordObject(CompanyPtr company, StorePtr store, Text name)
      : ComObject(std::move(company), 0), store_(std::move(store)), name_(std::move(name)) {}

  ~DataFileRecordObject() override {
    if (!locked_) return;
    try {
      store_->Unlock(name_, this);
    } catch (...) {
      // The lock goes with the store's lock file in the end.
    }
  }

  HRESULT STDMETHODCALLTYPE GetName(BSTR* name) override {
    return Give("IDataFileRecord::GetName", name, name_);
  }

  HRESULT STDMETHODCALLTYPE TryLock(VARIANT_BOOL* locked) override {
    RETURN_IF_FAILED(Check("IDataFileRecord::TryLock"));
    if (!locked) return E_POINTER;
    return Guarded([&] {
      if (!locked_ && !company().faults.IsLockHeld(name_)) locked_ = store_->TryLock(name_, this);
      *locked = locked_ ? VARIANT_TRUE : VARIANT_FALSE;
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE Unlock() override {
    RETURN_IF_FAILED(Check("IDataFileRecord::Unlock"));
    if (!locked_) return S_FALSE;
    return Guarded([&] {
      store_->Unlock(name_, this);
      locked_ = false;
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE GetPropertyBag(IDataFilePropertyBag** bag) override;

  HRESULT STDMETHODCALLTYPE GetDataVersion(LONG* version) override {
    RETURN_IF_FAILED(Check("IDataFileRecord::GetDataVersion"));
    if (!version) return E_POINTER;
    return Guarded([&] {
      *version = unsaved_.version ? *unsaved_.version : store_->DataVersion(name_);
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE SetDataVersion(LONG version) override {
    RETURN_IF_FAILED(Check("IDataFileRecord::SetDataVersion"));
    unsaved_.version = version;
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE Save() override {
    RETURN_IF_FAILED(Check("IDataFileRecord::Save"));
    if (!locked_) return E_ACCESSDENIED;
    return Guarded([&] {
      store_->Save(name_, unsaved_);
      unsaved_ = DataFileSave();
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE Delete() override {
    RETURN_IF_FAILED(Check("IDataFileRecord::Delete"));
    if (!locked_) return E_ACCESSDENIED;
    return Guarded([&] {
      store_->Delete(name_);
      unsaved_ = DataFileSave();
      return S_OK;
    });
  }

  // For the property bag: a value written since the last Save, else the stored one.
  HRESULT ReadProperty(BSTR name, VARIANT* value) {
    if (!value) return E_POINTER;
    return Guarded([&] {
      const Text property = FromBstr(name);
      const auto unsaved = unsaved_.properties.find(property);
      if (unsaved != unsaved_.properties.end())
        return PropertyValueToVariant(unsaved->second, value);
      return PropertyValueToVariant(store_->Read(name_, property), value);
    });
  }

  HRESULT WriteProperty(BSTR name, const VARIANT& value) {
    if (!NameFits(name)) return E_INVALIDARG;
    return Guarded([&] {
      PropertyValue copy;
      RETURN_IF_FAILED(PropertyValueFromVariant(value, copy));
      unsaved_.properties.insert_or_assign(FromBstr(name), std::move(copy));
      return S_OK;
    });
  }

 private:
  StorePtr store_;
  Text name_;
  // Whether this object holds the record's lock.
  bool locked_ = false;
  // The data version and values written since the record was taken or last saved.
  DataFileSave unsaved_;
};

// The bag keeps its record alive; the record does not keep its bags.
class PropertyBagObject final : public ComObject<IDataFilePropertyBag> {
 public:
  PropertyBagObject(CompanyPtr company, DataFileRecordObject* record)
      : ComObject(std::move(company), 0), record_(record) {}

  HRESULT STDMETHODCALLTYPE Read(BSTR name, VARIANT* value) override {
    RETURN_IF_FAILED(Check("IDataFilePropertyBag::Read"));
    return record_->ReadProperty(name, value);
  }

  HRESULT STDMETHODCALLTYPE Write(BSTR name, VARIANT value) override {
    RETURN_IF_FAILED(Check("IDataFilePropertyBag::Write"));
    return record_->WriteProperty(name, value);
  }

 private:
  ComPtr<DataFileRecordObject> record_;
};

HRESULT DataFileRecordObject::GetPropertyBag(IDataFilePropertyBag** bag) {
  return GiveNew<PropertyBagObject>("IDataFileRecord::GetPropertyBag", bag, companyPtr(), this);
}

class DataFileRecordsObject final : public ComObject<IDataFileRecords> {
 public:
  DataFileRecordsObject(CompanyPtr company, StorePtr store)
      : ComObject(std::move(company), 0), store_(std::move(store)) {}

  HRESULT STDMETHODCALLTYPE Exists(BSTR name, VARIANT_BOOL* exists) override {
    RETURN_IF_FAILED(Check("IDataFileRecords::Exists"));
    if (!exists) return E_POINTER;
    return Guarded([&] {
      *exists = store_->Exists(FromBstr(name)) ? VARIANT_TRUE : VARIANT_FALSE;
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE GetItem(BSTR name, IDataFileRecord** record) override {
    RETURN_IF_FAILED(Check("IDataFileRecords::GetItem"));
    if (!record) return E_POINTER;
    *record = nullptr;
    return Guarded([&] {
      Text text = FromBstr(name);
      if (!store_->Exists(text)) return LX_E_NOTFOUND;
      return CreateObject<DataFileRecordObject>(record, companyPtr(), store_, std::move(text));
    });
  }

  HRESULT STDMETHODCALLTYPE Add(BSTR name, IDataFileRecord** record) override {
    RETURN_IF_FAILED(Check("IDataFileRecords::Add"));
    if (!record) return E_POINTER;
    *record = nullptr;
    if (!NameFits(name)) return E_INVALIDARG;
    return Guarded([&] {
      Text text = FromBstr(name);
      // The object first, so that running out of memory adds nothing.
      ComPtr<IDataFileRecord> added;
      RETURN_IF_FAILED(CreateObject<DataFileRecordObject>(
           added.ReleaseAndGetAddressOf(), companyPtr(), store_, text));
      store_->Add(text);
      *record = added.Detach();
      return S_OK;
    });
  }

 private:
  StorePtr store_;
};

}  // namespace

HRESULT NewDataFileRecords(const CompanyPtr& company, std::shared_ptr<DataFileStore> store,
                           IDataFileRecords** out) {
  if (!out) return E_POINTER;
  return CreateObject<DataFileRecordsObject>(out, company, std::move(store));
}

HRESULT NewDataFileRecords(const CompanyPtr& company, IDataFileRecords** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  return Guarded([&] {
    StorePtr store;
#if PARCELON_HAVE_SQLITE
    store = company->store;
#endif
    if (!store) {
      if (!company->memoryDataFiles) company->memoryDataFiles = std::make_shared<MemoryDataFileStore>(*company);
      store = company->memoryDataFiles;
    }
    return NewDataFileRecords(company, std::move(store), out);
  });
}

}  // namespace parcelon::refhost
