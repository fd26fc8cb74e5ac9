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

PARCELON_DECLARE_IID(IFolderLocator, 0xBC9AD26E, 0xB285, 0x4BC2, 0xB0, 0xAE, 0x5D, 0x8F, 0x50, 0xA5, 0xF3, 0x6F)
PARCELON_DECLARE_IID(IFolderService, 0x1188739A, 0x7DB8, 0x473E, 0x88, 0xFB, 0x13, 0xDB, 0x83, 0xA2, 0xAE, 0x33)
PARCELON_DECLARE_IID(IMessageBoxService, 0x00617CE1, 0x256E, 0x4689, 0x97, 0x11, 0xB8, 0x33, 0x79, 0x93, 0xD4, 0x7A)
PARCELON_DECLARE_IID(IFileRedirectionService, 0xD14CDC84, 0xDF41, 0x4B38, 0xBB, 0xD6, 0x33, 0x30, 0x21, 0xA7, 0x2D, 0xEE)

using IFolderLocatorPtr = ComPtr<IFolderLocator>;
using IFolderServicePtr = ComPtr<IFolderService>;
using IMessageBoxServicePtr = ComPtr<IMessageBoxService>;
using IFileRedirectionServicePtr = ComPtr<IFileRedirectionService>;

namespace parcelon::host {

// The classes the host registers, each created in process with CoCreateInstance.
inline constexpr CLSID CLSID_FolderService = {
    0xD0AD6423, 0x2DF8, 0x4D50, {0x9A, 0x1F, 0x80, 0x9E, 0xF7, 0xA8, 0xDC, 0x50}};
inline constexpr CLSID CLSID_MessageBoxService = {
    0x8DD2F611, 0x435E, 0x47EF, {0x95, 0xC5, 0x2D, 0x83, 0xA8, 0x97, 0x8C, 0x07}};
inline constexpr CLSID CLSID_FileRedirectionService = {
    0xB291F57E, 0xF141, 0x4503, {0xAE, 0x18, 0x98, 0x2A, 0x61, 0xDB, 0x49, 0x00}};

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
