// The host's data file records: named records that an add-in keeps in the company file, each
// with a lock, a data version and a property bag of named values.
#pragma once

#include "host/Attributes.h"
#include "platform/ComBase.h"
#include "platform/ComPtr.h"

// The named values of one data file record.
struct IDataFilePropertyBag : IUnknown {
  // A property that was never written, or was written empty, reads as VT_EMPTY. The caller
  // clears the VARIANT.
  virtual HRESULT STDMETHODCALLTYPE Read(BSTR name, VARIANT* value) = 0;
  // Keeps a copy of value; the record keeps it once saved.
  virtual HRESULT STDMETHODCALLTYPE Write(BSTR name, VARIANT value) = 0;
};

// One data file record. Writers hold its lock, which is shared by every process that has the
// company file open, from before the first write until after Save or Delete.
struct IDataFileRecord : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetName(BSTR* name) = 0;
  // Takes the lock when nobody holds it; *locked tells whether it was granted. Does not wait.
  virtual HRESULT STDMETHODCALLTYPE TryLock(VARIANT_BOOL* locked) = 0;
  virtual HRESULT STDMETHODCALLTYPE Unlock() = 0;
  virtual HRESULT STDMETHODCALLTYPE GetPropertyBag(IDataFilePropertyBag** bag) = 0;
  // The version of the layout of the record's values, chosen by the add-in.
  virtual HRESULT STDMETHODCALLTYPE GetDataVersion(LONG* version) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetDataVersion(LONG version) = 0;
  // Writes the record's values to the company file.
  virtual HRESULT STDMETHODCALLTYPE Save() = 0;
  // Removes the record from the company file.
  virtual HRESULT STDMETHODCALLTYPE Delete() = 0;
};

// The data file records of a company file, by name.
struct IDataFileRecords : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Exists(BSTR name, VARIANT_BOOL* exists) = 0;
  // Fails with LX_E_NOTFOUND when no record has that name.
  virtual HRESULT STDMETHODCALLTYPE GetItem(BSTR name, IDataFileRecord** record) = 0;
  // A new, empty record of that name (data version 0). Fails when one exists.
  virtual HRESULT STDMETHODCALLTYPE Add(BSTR name, IDataFileRecord** record) = 0;
};

PARCELON_DECLARE_IID(IDataFilePropertyBag, "1073200F-5965-4BE7-AF6E-2EA7D1359C21")
PARCELON_DECLARE_IID(IDataFileRecord, "13F29CEB-FAD0-42C5-956B-F4FD3C2F3F0B")
PARCELON_DECLARE_IID(IDataFileRecords, "F16436BE-C644-445E-9573-341BC4579B28")

using IDataFilePropertyBagPtr = ComPtr<IDataFilePropertyBag>;
using IDataFileRecordPtr = ComPtr<IDataFileRecord>;
using IDataFileRecordsPtr = ComPtr<IDataFileRecords>;
