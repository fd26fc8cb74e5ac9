// CreateDomDocument on Windows: MSXML 6, found by its ProgID.
#ifdef _WIN32

#include "platform/XmlDom.h"

namespace parcelon {

HRESULT CreateDomDocument(IXMLDOMDocument** document) {
  if (!document) return E_POINTER;
  *document = nullptr;
  CLSID clsid;
  const HRESULT hr = CLSIDFromProgID(kDomDocument60ProgId, &clsid);
  if (FAILED(hr)) return hr;
  return CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IidOf<IXMLDOMDocument>(),
                          reinterpret_cast<void**>(document));
}

}  // namespace parcelon

#endif  // _WIN32
