#include "upload/UploadAttributes.h"

HRESULT CUploadAttributeWriter::UpdateUploadTimeAttributes() { return E_NOTIMPL; }

HRESULT CUploadAttributeKiller::RemoveAttributes() { return E_NOTIMPL; }
