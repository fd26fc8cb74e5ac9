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

PARCELON_DECLARE_IID(IAddInGoodies, 0xE14CC647, 0x0688, 0x4482, 0xAA, 0x93, 0x0B, 0x31, 0xE1, 0xF1, 0xB8, 0x4E)
PARCELON_DECLARE_IID(ILXApplication, 0x7688E00D, 0xADC9, 0x483C, 0x84, 0xAB, 0x35, 0x1A, 0xF2, 0x29, 0x4F, 0x50)
PARCELON_DECLARE_IID(INAAuthTool, 0x4DA1EB7A, 0x2254, 0x4667, 0xA5, 0x0A, 0xDC, 0xCC, 0xD9, 0x2E, 0xC5, 0x82)
PARCELON_DECLARE_IID(ILXInbox, 0x4C751BFC, 0x5AA3, 0x49F8, 0xB3, 0x9D, 0x8D, 0x6A, 0x05, 0xA1, 0x95, 0x5D)
PARCELON_DECLARE_IID(IBase64Coder, 0x2650E30E, 0x277A, 0x49E0, 0x9B, 0x28, 0xE1, 0x2B, 0x16, 0xCA, 0xEC, 0xD5)
PARCELON_DECLARE_IID(IAmbitAccess, 0x2BA1CC92, 0xC4A7, 0x49E2, 0xB8, 0xF7, 0xDA, 0x20, 0x3B, 0x93, 0x3B, 0x36)

using IAddInGoodiesPtr = ComPtr<IAddInGoodies>;
using ILXApplicationPtr = ComPtr<ILXApplication>;
using INAAuthToolPtr = ComPtr<INAAuthTool>;
using ILXInboxPtr = ComPtr<ILXInbox>;
using IBase64CoderPtr = ComPtr<IBase64Coder>;
using IAmbitAccessPtr = ComPtr<IAmbitAccess>;

namespace parcelon::host {

// The host's add-in class: its objects are the host application (ILXApplication).
inline constexpr CLSID CLSID_LXAddIn = {
    0x6915CD3B, 0xC996, 0x4A07, {0xB8, 0xDF, 0x5C, 0xEC, 0xB6, 0x8D, 0xCB, 0xAA}};
// The authentication tool (INAAuthTool).
inline constexpr CLSID CLSID_NAAuthTool = {
    0x550E1AB5, 0x5162, 0x498D, {0x82, 0xE3, 0x41, 0x9B, 0x69, 0xD2, 0xE3, 0x1E}};
// The inbox store (ILXInbox).
inline constexpr CLSID CLSID_LXInbox = {
    0x4844F3F7, 0x2161, 0x4AC4, {0xB2, 0x19, 0xB3, 0xB4, 0x31, 0x17, 0x82, 0xAA}};
// The base64 coder (IBase64Coder).
inline constexpr CLSID CLSID_Base64Coder = {
    0x6623996E, 0xB972, 0x4D72, {0x8E, 0xAB, 0xD3, 0xB3, 0xB1, 0xF7, 0xB4, 0xDA}};
// The feature settings (IAmbitAccess).
inline constexpr CLSID CLSID_AmbitAccess = {
    0x371050FB, 0x6A0F, 0x472B, {0xA7, 0xDF, 0xE4, 0x2A, 0x45, 0x1C, 0xC3, 0xFD}};

}  // namespace parcelon::host
