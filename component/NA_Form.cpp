#include "component/NA_Form.h"

#include "diagnostics/LogIfFailed.h"
#include "forms/FormRequest.h"

namespace {

using OleString = std::basic_string<OLECHAR>;

constexpr OLECHAR kPathSeparator = PARCELON_OLESTR('\\');
constexpr OLECHAR kListSeparator = PARCELON_OLESTR('|');

// A BSTR of `text`; E_OUTOFMEMORY raised as ComError when it cannot allocate.
Bstr ToBstr(const OleString& text) {
  Bstr out(text.data(), UINT(text.size()));
  if (!out.Get()) throw ComError(E_OUTOFMEMORY);
  return out;
}

}  // namespace

void* CNA_Form::FindInterface(REFIID riid) {
  if (parcelon::IsOneOf<IUnknown, IDispatch, INA_Form, INA_Form2, INA_Form3, INA_Form4, INA_Form5,
                        INA_Form6, INA_Form7>(riid))
    return static_cast<INA_Form7*>(this);
  return nullptr;
}

HRESULT CNA_Form::BuildXML(short indentLevel, BSTR* pXML) {
  if (!pXML) return E_POINTER;
  *pXML = nullptr;
  // The request is written at its own fixed indentation, since the session inserts it under its
  // root; the level asked for does not change the text.
  (void)indentLevel;
  return parcelon::BuildFormRequest(this, pXML);
}

HRESULT CNA_Form::put_StatementTxnItemView(DATE date, BSTR txnDesc, BSTR amountStr,
                                           BSTR txnItemDesc, BSTR txnItemQty, BSTR txnRunningBal,
                                           BSTR txnItemRate) {
  return parcelon::Guarded([&] {
    statementLines_.push_back(StatementTxnItemView::FromHost(
        date, txnDesc, amountStr, txnItemDesc, txnItemQty, txnRunningBal, txnItemRate));
    return S_OK;
  });
}

bool CNA_Form::OwnAttachmentPath(OleString& path) {
  if (attachmentPath_.Empty() || attachmentFileName_.Empty()) return false;
  path.assign(attachmentPath_.Get(), attachmentPath_.Length());
  if (path.back() != kPathSeparator) {
    path += kPathSeparator;
    attachmentPath_ = ToBstr(path);
  }
  path.append(attachmentFileName_.Get(), attachmentFileName_.Length());
  return true;
}

HRESULT CNA_Form::get_AttachmentFileList(BSTR* pVal) {
  if (!pVal) return E_POINTER;
  *pVal = nullptr;
  return parcelon::Guarded([&] {
    OleString list;
    if (!OwnAttachmentPath(list)) {
      for (size_t i = 0; i < attachmentFiles_.size(); ++i) {
        if (i) list += kListSeparator;
        list.append(attachmentFiles_[i].Get(), attachmentFiles_[i].Length());
      }
    }
    *pVal = ToBstr(list).Detach();
    return S_OK;
  });
}

HRESULT CNA_Form::AddAttachmentFile(BSTR newValue) {
  return parcelon::Guarded([&] {
    attachmentFiles_.push_back(parcelon::CopyOf(newValue));
    return S_OK;
  });
}

HRESULT CNA_Form::ClearAttachmentFileList() {
  attachmentFiles_.clear();
  return S_OK;
}
