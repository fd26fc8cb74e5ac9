// The host's value objects that the XML toolkit reads: amounts, percentages, quantities, addresses.
// Declarations only (they depend on nothing but the COM base types), so the toolkit may read them.
#pragma once

#include "platform/ComBase.h"
#include "platform/ComPtr.h"

// A money amount of the host: two decimals, kept as a whole part and hundredths with a sign.
struct IAmount : IUnknown {
  // Prepares the value for reading; the component always passes -1.
  virtual HRESULT STDMETHODCALLTYPE Prepare(LONG mode) = 0;
  // The amount as the host formats it, with two decimals and the locale's decimal separator.
  virtual HRESULT STDMETHODCALLTYPE GetText(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE IsEmpty(VARIANT_BOOL* empty) = 0;
  virtual HRESULT STDMETHODCALLTYPE IsValid(VARIANT_BOOL* valid) = 0;
  // Magnitude of the whole part.
  virtual HRESULT STDMETHODCALLTYPE GetWhole(LONGLONG* whole) = 0;
  // Magnitude of the hundredths, 0 to 99.
  virtual HRESULT STDMETHODCALLTYPE GetHundredths(LONG* hundredths) = 0;
  virtual HRESULT STDMETHODCALLTYPE IsNegative(VARIANT_BOOL* negative) = 0;
};

// A percentage of the host.
struct IPercent : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE IsEmpty(VARIANT_BOOL* empty) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetValue(double* value) = 0;
};

// A quantity of the host: a scaled integer (value / 10^decimals) with a sign.
struct IQuantity : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE IsEmpty(VARIANT_BOOL* empty) = 0;
  virtual HRESULT STDMETHODCALLTYPE IsValid(VARIANT_BOOL* valid) = 0;
  // Magnitude of the scaled integer.
  virtual HRESULT STDMETHODCALLTYPE GetInteger(LONGLONG* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDecimals(SHORT* decimals) = 0;
  virtual HRESULT STDMETHODCALLTYPE IsNegative(VARIANT_BOOL* negative) = 0;
};

// A postal address of the host: four lines (index 0 to 3) and its fields.
struct IAddress : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetLine(LONG index, BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetCity(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetState(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetPostalCode(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetCountry(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetNote(BSTR* text) = 0;
};

PARCELON_DECLARE_IID(IAmount, "20C3D586-DA03-4A12-BF3B-ACF771B57E14")
PARCELON_DECLARE_IID(IPercent, "C2939741-26A9-4537-B21F-1CF75224CAA2")
PARCELON_DECLARE_IID(IQuantity, "566F873E-FB04-4EDA-83E8-665DF105C761")
PARCELON_DECLARE_IID(IAddress, "5227D49A-ED53-40FF-A977-D657B8D659B1")

using IAmountPtr = ComPtr<IAmount>;
using IPercentPtr = ComPtr<IPercent>;
using IQuantityPtr = ComPtr<IQuantity>;
using IAddressPtr = ComPtr<IAddress>;
