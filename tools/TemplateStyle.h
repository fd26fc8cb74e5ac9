// The "StyleItem" of one template of the open company, for the parcelon tool's `style` command.
#pragma once

#include <string>

#include "host/HostModel.h"

namespace parcelon::tools {

// Writes the "StyleItem" of the template named `name` (its record number, else its full name)
// of `companyFile` into `text`, with the tax-flag column when `withTaxFlag` is set. A template
// that cannot be found gives LX_E_NOTFOUND and `error` says so; a failed build its HRESULT, with
// the text written up to the failure.
HRESULT WriteTemplateStyle(ICompanyFile* companyFile, const std::string& name, bool withTaxFlag,
                           std::string& text, std::string& error);

}  // namespace parcelon::tools
