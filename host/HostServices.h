// The host's small services (folders, message boxes, file redirection) and the CLSIDs under which
// the host registers them; CreateHostService finds one, or nothing when the host has none.
#pragma once

#include "platform/ComBase.h"
#include "platform/ComPtr.h"

// The folders the host keeps for the component.
struct IFolderLocator : IUnknown {
  // The folder of `kind` (kFolderKindLogs for logs). An empty or null string when the host has
  // none; the folder may or may not end in a separator.
  virtual HRESULT STDMETHODCALLTYPE GetFolder(LONG kind, BSTR* folder) = 0;
};

// The host's folder service: the getter of its folder locator.
struct IFolderService : IUnknown {
  virtual HRESULT STDMETHODCALLTYPE GetFolderLocator(IFolderLocator** locator) = 0;
};

// The host's message boxes: modal, OK button only; returns when the user has closed the box.
struct IMessageBoxService : IUnknown {
  // `style` holds the icon flags of a Windows message box (kMessageBoxIconStop or 0);
  // `ownedByMainWindow` asks for the host's main window as the owner instead of none.
  virtual HRESULT STDMETHODCALLTYPE ShowMessage(BSTR text, BSTR caption, LONG style,
                                                VARIANT_BOOL ownedByMainWindow) = 0;
};

// The host's file redirection: the host may keep the component's files elsewhere than named.
struct IFileRedirectionService : IUnknown {
  // The path to use for `path`.
  virtual HRESULT STDMETHODCALLTYPE MapPath(BSTR path, BSTR* mapped) = 0;
  // Renames `from` to `to`, both mapped by the host.
  virtual HRESULT STDMETHODCALLTYPE Rename(BSTR from, BSTR to) = 0;
  // Deletes the file at `path`, mapped by the host.
  virtual HRESULT STDMETHODCALLTYPE Remove(BSTR path) = 0;
};

PARCELON_DECLARE_IID(IFolderLocator, "BC9AD26E-B285-4BC2-B0AE-5D8F50A5F36F")
PARCELON_DECLARE_IID(IFolderService, "1188739A-7DB8-473E-88FB-13DB83A2AE33")
PARCELON_DECLARE_IID(IMessageBoxService, "00617CE1-256E-4689-9711-B8337993D47A")
PARCELON_DECLARE_IID(IFileRedirectionService, "D14CDC84-DF41-4B38-BBD6-333021A72DEE")

using IFolderLocatorPtr = ComPtr<IFolderLocator>;
using IFolderServicePtr = ComPtr<IFolderService>;
using IMessageBoxServicePtr = ComPtr<IMessageBoxService>;
using IFileRedirectionServicePtr = ComPtr<IFileRedirectionService>;

namespace parcelon::host {

// The classes the host registers, each created in process with CoCreateInstance.
inline constexpr CLSID CLSID_FolderService = parcelon::GuidFromText("D0AD6423-2DF8-4D50-9A1F-809EF7A8DC50");
inline constexpr CLSID CLSID_MessageBoxService = parcelon::GuidFromText("8DD2F611-435E-47EF-95C5-2D83A8978C07");
inline constexpr CLSID CLSID_FileRedirectionService = parcelon::GuidFromText("B291F57E-F141-4503-AE18-982A61DB4900");

// Folder kinds of IFolderLocator::GetFolder.
inline constexpr LONG kFolderKindLogs = 2;

// Message box styles, with the values of the Windows flags.
inline constexpr LONG kMessageBoxOk = 0x00;
inline constexpr LONG kMessageBoxIconStop = 0x10;

// The host's service of class `clsid` as interface T; null when the host registered none (or
// COM is not initialised on this thread).
template <class T>
ComPtr<T> CreateHostService(const CLSID& clsid) {
  void* service = nullptr;
  if (FAILED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IidOf<T>(), &service)))
    return {};
  return ComPtr<T>::Attach(static_cast<T*>(service));
}

}  // namespace parcelon::host
