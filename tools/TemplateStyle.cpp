#include "tools/TemplateStyle.h"

#include <cstdlib>

#include "diagnostics/LogIfFailed.h"
#include "forms/FormParts.h"
#include "forms/StyleItem.h"
#include "platform/Bstr.h"
#include "tools/SendDriver.h"

namespace parcelon::tools {

namespace {

// The template whose record number is `name` when it is all digits, else whose full name it is.
HRESULT FindTemplate(ICompanyFile* companyFile, const std::string& name, IStylePtr& style) {
  IListsPtr lists;
  RETURN_IF_FAILED(companyFile->GetLists(lists.ReleaseAndGetAddressOf()));
  IStylesPtr styles;
  RETURN_IF_FAILED(lists->GetStyles(styles.ReleaseAndGetAddressOf()));
  if (!name.empty() && name.size() <= 9 && name.find_first_not_of("0123456789") == std::string::npos) {
    return styles->GetItemByRecNum(forms::RecNumKey(std::atol(name.c_str())), style.ReleaseAndGetAddressOf());
  }
  const Bstr wanted = ToBstr(name);
  LONG count = 0;
  RETURN_IF_FAILED(styles->GetCount(&count));
  for (LONG index = 0; index < count; ++index) {
    RETURN_IF_FAILED(styles->GetItem(index, style.ReleaseAndGetAddressOf()));
    Bstr fullName;
    RETURN_IF_FAILED(style->GetFullName(fullName.Out()));
    if (fullName.Length() == wanted.Length() &&
        std::char_traits<OLECHAR>::compare(fullName.Get(), wanted.Get(), wanted.Length()) == 0)
      return S_OK;
  }
  style.Reset();
  return LX_E_NOTFOUND;
}

}  // namespace

HRESULT WriteTemplateStyle(ICompanyFile* companyFile, const std::string& name, bool withTaxFlag,
                           std::string& text, std::string& error) {
  IStylePtr style;
  HRESULT hr = FindTemplate(companyFile, name, style);
  if (FAILED(hr) || !style) {
    error = "no template \"" + name + "\" in the company";
    return FAILED(hr) ? hr : LX_E_NOTFOUND;
  }
  XMLBuilder builder;
  hr = Guarded([&] { return CStyleItemBuilder(style.Get()).BuildXML(builder, withTaxFlag ? VARIANT_TRUE : VARIANT_FALSE); });
  if (SUCCEEDED(hr)) hr = builder.Status();
  if (FAILED(hr)) error = "building the template's style failed (see the log)";
  if (const OLABuffer* buffer = builder.Buffer()) text.assign(buffer->GetData(), buffer->GetLength());
  return hr;
}

}  // namespace parcelon::tools
