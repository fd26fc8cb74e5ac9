#include "diagnostics/HostMessageBox.h"

#include <cstdio>
#include <cstring>

#include "host/HostServices.h"
#include "platform/Bstr.h"
#include "platform/CodePage.h"

namespace parcelon {

namespace {
bool ShowThroughHost(const char* text, const char* caption, LONG style, bool ownedByMainWindow) {
  const IMessageBoxServicePtr service =
      host::CreateHostService<IMessageBoxService>(host::CLSID_MessageBoxService);
  if (!service) return false;
  Bstr wideText;
  Bstr wideCaption;
  if (FAILED(AnsiToBstr(text, std::strlen(text), wideText.Out())) ||
      FAILED(AnsiToBstr(caption, std::strlen(caption), wideCaption.Out())))
    return false;
  return SUCCEEDED(service->ShowMessage(wideText.Get(), wideCaption.Get(), style,
                                        ownedByMainWindow ? VARIANT_TRUE : VARIANT_FALSE));
}
}  // namespace

void ShowMessageBox(const char* text, const char* caption, LONG style, bool ownedByMainWindow) {
  if (!text) text = "";
  if (!caption) caption = "";
  if (ShowThroughHost(text, caption, style, ownedByMainWindow)) return;
#ifdef _WIN32
  HWND owner = ownedByMainWindow ? FindWindowA("TamberFrame", nullptr) : nullptr;
  MessageBoxA(owner, text, caption, MB_OK | static_cast<UINT>(style));
#else
  std::fprintf(stderr, "%s: %s\n", caption, text);
#endif
}

}  // namespace parcelon
