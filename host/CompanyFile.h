// The host's open company file and its company information, profile and service subscription
// status.
#pragma once

#include "host/HostValues.h"
#include "platform/ComBase.h"
#include "platform/ComPtr.h"

struct ILists;
struct ITransactions;
struct IDataFileRecords;

// The company's own data.
struct ICompanyInfo : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetCompanyName(BSTR* name) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetAddress(IAddress** address) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetLegalCompanyName(BSTR* name) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetLegalAddress1(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetLegalAddress2(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetLegalCity(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetLegalState(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetLegalZip(BSTR* text) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetLegalCountry(BSTR* text) = 0;
};

// Second version of the company information: how to reach the company.
struct ICompanyInfo2 : ICompanyInfo {
  virtual HRESULT STDMETHODCALLTYPE GetEmail(BSTR* address) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetPhone(BSTR* number) = 0;
};

// The company's subscriptions to the maker's online services.
struct IServiceSubscriptionStatus : IUnknown {
  // The status of the service of that name (such as "lxob1.lxn"), as the host reports it.
  virtual HRESULT STDMETHODCALLTYPE GetStatus(BSTR serviceName, LONG* status) = 0;
};

// The company's profile with the maker's online services.
struct ICompanyProfile : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetServiceSubscriptionStatus(
      IServiceSubscriptionStatus** status) = 0;
};

// The company file that the host has open.
struct ICompanyFile : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetCompanyInfo(ICompanyInfo** info) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetLists(ILists** lists) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetTransactions(ITransactions** transactions) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetDataFileRecords(IDataFileRecords** records) = 0;
};

// Second version of the company file.
struct ICompanyFile2 : ICompanyFile {
  virtual HRESULT STDMETHODCALLTYPE GetCompanyProfile(ICompanyProfile** profile) = 0;
};

// Third version of the company file: the writes of many records as one. The saves and removals
// made between BeginWrites and EndWrites reach the company file together at EndWrites, or none
// of them when the host stops before it. They cannot be nested.
struct ICompanyFile3 : ICompanyFile2 {
  virtual HRESULT STDMETHODCALLTYPE BeginWrites() = 0;
  virtual HRESULT STDMETHODCALLTYPE EndWrites() = 0;
};

PARCELON_DECLARE_IID(ICompanyInfo, 0x5A1FA489, 0x74F2, 0x41D2, 0xAB, 0xA6, 0x9C, 0x2A, 0x91, 0xF6, 0xB1, 0xDA)
PARCELON_DECLARE_IID(ICompanyInfo2, 0xA6EA620A, 0x8C3B, 0x4DA5, 0xA5, 0xF0, 0xD5, 0x1C, 0x27, 0xCB, 0x14, 0x45)
PARCELON_DECLARE_IID(IServiceSubscriptionStatus, 0x40C513FB, 0xD431, 0x4DBF, 0xBB, 0xF9, 0x5B, 0xAB, 0x74, 0xD9, 0xFA, 0x97)
PARCELON_DECLARE_IID(ICompanyProfile, 0x67D45A27, 0x27C1, 0x4C10, 0xB3, 0x9E, 0x1A, 0xFE, 0x13, 0x50, 0x4C, 0x5C)
PARCELON_DECLARE_IID(ICompanyFile, 0xC9206689, 0xB4CD, 0x4A95, 0xB3, 0x11, 0x88, 0x40, 0x84, 0x4C, 0xF3, 0xC9)
PARCELON_DECLARE_IID(ICompanyFile2, 0xB7D981B7, 0x1940, 0x4595, 0x8C, 0xEE, 0xAB, 0x05, 0xC3, 0x37, 0x98, 0xB7)
PARCELON_DECLARE_IID(ICompanyFile3, 0x3E0B6C52, 0x9A41, 0x4F7D, 0x8B, 0x26, 0x51, 0xD4, 0x0A, 0x7E, 0x93, 0xC8)

using ICompanyInfoPtr = ComPtr<ICompanyInfo>;
using ICompanyInfo2Ptr = ComPtr<ICompanyInfo2>;
using IServiceSubscriptionStatusPtr = ComPtr<IServiceSubscriptionStatus>;
using ICompanyProfilePtr = ComPtr<ICompanyProfile>;
using ICompanyFilePtr = ComPtr<ICompanyFile>;
using ICompanyFile2Ptr = ComPtr<ICompanyFile2>;
using ICompanyFile3Ptr = ComPtr<ICompanyFile3>;
