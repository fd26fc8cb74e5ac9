// The host's services to an add-in: the application object that leads to the open company file,
// the authentication tool, the inbox store, the base64 coder and the feature settings.
//
// Each service is a class of the host, created in process with CoCreateInstance by the CLSID
// given here. Declarations only, so that any layer may use them.
#pragma once

#include "platform/ComBase.h"
#include "platform/ComPtr.h"

struct ICompanyFile;

// The add-in services of the running host application.
struct IAddInGoodies : IUnknown {
  // Fails when the host has no company file open.
  virtual HRESULT STDMETHODCALLTYPE GetCurrentCompanyFile(ICompanyFile** companyFile) = 0;
};

// The host application as an add-in sees it.
struct ILXApplication : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetAddInGoodies(IAddInGoodies** goodies) = 0;
};

// The host's authentication tool: the identifiers under which the open company is known to the
// maker's online services.
struct INAAuthTool : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetCompanyUID(BSTR* uid) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetCompanyAuthID(BSTR* authID) = 0;
};

// The host's inbox: requests that the gateway leaves for the application, kept as XML text.
struct ILXInbox : IUnknown {
  // Keeps the XML text of a response aggregate under the aggregate's name as a new request.
  virtual HRESULT STDMETHODCALLTYPE StoreRequest(BSTR xml, BSTR name) = 0;
  virtual HRESULT STDMETHODCALLTYPE GetRequest(BSTR requestID, BSTR* xml) = 0;
  virtual HRESULT STDMETHODCALLTYPE DeleteRequest(BSTR requestID) = 0;
};

// The host's base64 coder (standard alphabet, with padding, no line breaks).
struct IBase64Coder : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE Encode(const BYTE* data, LONG length) = 0;
  // The text of the last Encode, zero-terminated. It belongs to the coder and stays valid
  // until the next Encode or the coder's release.
  virtual HRESULT STDMETHODCALLTYPE EncodedMessage(const char** text) = 0;
};

// The host's feature settings, by section and key, and its service addresses.
struct IAmbitAccess : IUnknown {
  // `reserved` is always null. Fails when the setting is absent or unreadable; callers then
  // take the setting as off.
  virtual HRESULT STDMETHODCALLTYPE GetFeatureParamAsBool(BSTR section, BSTR key, void* reserved,
                                                          VARIANT_BOOL* value) = 0;
  // As GetFeatureParamAsBool; callers take a failure as 0.
  virtual HRESULT STDMETHODCALLTYPE GetFeatureParamAsInt(BSTR section, BSTR key, void* reserved,
                                                         LONG* value) = 0;
  // The address that the host configures for a service key such as
  // "EmailService.FormGatewayURL".
  virtual HRESULT STDMETHODCALLTYPE GetURLAddress(BSTR key, BSTR* url) = 0;
};

PARCELON_DECLARE_IID(IAddInGoodies, "E14CC647-0688-4482-AA93-0B31E1F1B84E")
PARCELON_DECLARE_IID(ILXApplication, "7688E00D-ADC9-483C-84AB-351AF2294F50")
PARCELON_DECLARE_IID(INAAuthTool, "4DA1EB7A-2254-4667-A50A-DCCCD92EC582")
PARCELON_DECLARE_IID(ILXInbox, "4C751BFC-5AA3-49F8-B39D-8D6A05A1955D")
PARCELON_DECLARE_IID(IBase64Coder, "2650E30E-277A-49E0-9B28-E12B16CAECD5")
PARCELON_DECLARE_IID(IAmbitAccess, "2BA1CC92-C4A7-49E2-B8F7-DA203B933B36")

using IAddInGoodiesPtr = ComPtr<IAddInGoodies>;
using ILXApplicationPtr = ComPtr<ILXApplication>;
using INAAuthToolPtr = ComPtr<INAAuthTool>;
using ILXInboxPtr = ComPtr<ILXInbox>;
using IBase64CoderPtr = ComPtr<IBase64Coder>;
using IAmbitAccessPtr = ComPtr<IAmbitAccess>;

namespace parcelon::host {

// The host's add-in class: its objects are the host application (ILXApplication).
inline constexpr CLSID CLSID_LXAddIn = parcelon::GuidFromText("6915CD3B-C996-4A07-B8DF-5CECB68DCBAA");
// The authentication tool (INAAuthTool).
inline constexpr CLSID CLSID_NAAuthTool = parcelon::GuidFromText("550E1AB5-5162-498D-82E3-419B69D2E31E");
// The inbox store (ILXInbox).
inline constexpr CLSID CLSID_LXInbox = parcelon::GuidFromText("4844F3F7-2161-4AC4-B219-B3B4311782AA");
// The base64 coder (IBase64Coder).
inline constexpr CLSID CLSID_Base64Coder = parcelon::GuidFromText("6623996E-B972-4D72-8EAB-D3B3B1F7B4DA");
// The feature settings (IAmbitAccess).
inline constexpr CLSID CLSID_AmbitAccess = parcelon::GuidFromText("371050FB-6A0F-472B-A7DF-E42A451CC3FD");

}  // namespace parcelon::host
