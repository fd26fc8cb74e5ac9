// The host's attribute containers: named values that an add-in keeps on a list record.
#pragma once

#include "platform/ComBase.h"
#include "platform/ComPtr.h"

// The host's status for a record, attribute or data file record that does not exist. An
// attribute that was never written is found this way, and it is not an error to the caller.
inline constexpr HRESULT LX_E_NOTFOUND = static_cast<HRESULT>(0x80041A00);

// One attribute of a container, identified by its name and its owner (the GUID string of the
// add-in that wrote it). Its value is read through the interface of its type.
struct IAttribute : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetName(BSTR* name) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetOwner(BSTR* owner) = 0;
};

// An attribute holding a 32-bit integer. An attribute of another type does not answer for it.
struct ILongAttribute : IAttribute {
  virtual HRESULT STDMETHODCALLTYPE GetValue(LONG* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE SetValue(LONG value) = 0;
};

// The attributes of one list record.
struct IAttributeContainer : IUnknown {
  // Fails with LX_E_NOTFOUND when the record has no attribute of that name and owner.
  virtual HRESULT STDMETHODCALLTYPE FindAttribute(BSTR name, BSTR owner,
                                                  IAttribute** attribute) = 0;
  // Adds a long attribute with the value 0. Fails when one of that name and owner exists.
  virtual HRESULT STDMETHODCALLTYPE AddLongAttribute(BSTR name, BSTR owner,
                                                     ILongAttribute** attribute) = 0;
  // Removes an attribute that FindAttribute or AddLongAttribute gave out of this container.
  virtual HRESULT STDMETHODCALLTYPE RemoveAttribute(IAttribute* attribute) = 0;
};

PARCELON_DECLARE_IID(IAttribute, "D70CA1D3-BA9A-4D7A-ACF5-562C3C49EDE4")
PARCELON_DECLARE_IID(ILongAttribute, "396EA107-AEBB-4CBC-B3E7-29056C7909F1")
PARCELON_DECLARE_IID(IAttributeContainer, "4C8E9335-DF70-46D6-A2E7-B764E1336BDF")

using IAttributePtr = ComPtr<IAttribute>;
using ILongAttributePtr = ComPtr<ILongAttribute>;
using IAttributeContainerPtr = ComPtr<IAttributeContainer>;
