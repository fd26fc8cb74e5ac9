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

PARCELON_DECLARE_IID(ICompanyInfo, "5A1FA489-74F2-41D2-ABA6-9C2A91F6B1DA")
PARCELON_DECLARE_IID(ICompanyInfo2, "A6EA620A-8C3B-4DA5-A5F0-D51C27CB1445")
PARCELON_DECLARE_IID(IServiceSubscriptionStatus, "40C513FB-D431-4DBF-BBF9-5BAB74D9FA97")
PARCELON_DECLARE_IID(ICompanyProfile, "67D45A27-27C1-4C10-B39E-1AFE13504C5C")
PARCELON_DECLARE_IID(ICompanyFile, "C9206689-B4CD-4A95-B311-8840844CF3C9")
PARCELON_DECLARE_IID(ICompanyFile2, "B7D981B7-1940-4595-8CEE-AB05C33798B7")
PARCELON_DECLARE_IID(ICompanyFile3, "3E0B6C52-9A41-4F7D-8B26-51D40A7E93C8")

using ICompanyInfoPtr = ComPtr<ICompanyInfo>;
using ICompanyInfo2Ptr = ComPtr<ICompanyInfo2>;
using IServiceSubscriptionStatusPtr = ComPtr<IServiceSubscriptionStatus>;
using ICompanyProfilePtr = ComPtr<ICompanyProfile>;
using ICompanyFilePtr = ComPtr<ICompanyFile>;
using ICompanyFile2Ptr = ComPtr<ICompanyFile2>;
using ICompanyFile3Ptr = ComPtr<ICompanyFile3>;
