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

PARCELON_DECLARE_IID(IDataFilePropertyBag, 0x1073200F, 0x5965, 0x4BE7, 0xAF, 0x6E, 0x2E, 0xA7, 0xD1, 0x35, 0x9C, 0x21)
PARCELON_DECLARE_IID(IDataFileRecord, 0x13F29CEB, 0xFAD0, 0x42C5, 0x95, 0x6B, 0xF4, 0xFD, 0x3C, 0x2F, 0x3F, 0x0B)
PARCELON_DECLARE_IID(IDataFileRecords, 0xF16436BE, 0xC644, 0x445E, 0x95, 0x73, 0x34, 0x1B, 0xC4, 0x57, 0x9B, 0x28)

using IDataFilePropertyBagPtr = ComPtr<IDataFilePropertyBag>;
using IDataFileRecordPtr = ComPtr<IDataFileRecord>;
using IDataFileRecordsPtr = ComPtr<IDataFileRecords>;
