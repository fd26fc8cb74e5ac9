// The type library against the C++ declarations of the interfaces: on Windows every interface's
// functions in the library, in order, with their vtable offsets and parameter types, equal the
// C++ declarations' (taken from the member function pointers), and IDispatch calls the objects
// by name. Elsewhere IDispatch answers E_NOTIMPL.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "interfaces/ParcelonInterfaces.h"
#include "platform/Bstr.h"
#include "platform/CodePage.h"
#include "platform/ComPtr.h"
#include "ModuleLoader.h"

namespace {

// An object of the library's class `clsid` as IDispatch, from its class object.
ComPtr<IDispatch> Created(const CLSID& clsid) {
  ComPtr<IClassFactory> factory;
  ComPtr<IDispatch> object;
  const LoadedModule& module = LoadedModule::Get();
  if (!module.getClassObject ||
      FAILED(module.getClassObject(clsid, IidOf<IClassFactory>(), factory.ReleaseAndGetVoidAddress())))
    return object;
  factory->CreateInstance(nullptr, IidOf<IDispatch>(), object.ReleaseAndGetVoidAddress());
  return object;
}

#ifndef _WIN32

// Without type information there is no automation by name.
TEST(Dispatch, AnswersNotImplementedOffWindows) {
  for (const CLSID& clsid : {CLSID_NA_Forms, CLSID_NA_Form}) {
    const ComPtr<IDispatch> object = Created(clsid);
    ASSERT_TRUE(object);
    UINT count = 7;
    EXPECT_EQ(S_OK, object->GetTypeInfoCount(&count));
    EXPECT_EQ(0u, count);
    ITypeInfo* info = nullptr;
    EXPECT_EQ(E_NOTIMPL, object->GetTypeInfo(0, 0, &info));
    OLECHAR name[] = u"To";
    LPOLESTR names[] = {name};
    DISPID id = 0;
    EXPECT_EQ(E_NOTIMPL, object->GetIDsOfNames(GUID_NULL, names, 1, 0, &id));
    DISPPARAMS none{};
    EXPECT_EQ(E_NOTIMPL, object->Invoke(1, GUID_NULL, 0, DISPATCH_PROPERTYGET, &none, nullptr, nullptr, nullptr));
  }
}

#else  // _WIN32

// One function as a line: "name @offset (parameter types)".
std::string Line(const std::string& name, long offset, const std::vector<std::string>& params) {
  std::string line = name + " @" + std::to_string(offset) + " (";
  for (size_t i = 0; i < params.size(); ++i) line += (i ? ", " : "") + params[i];
  return line + ")";
}

// A C++ parameter type as the type library describes it: VARIANT_BOOL is a short and DATE a
// double to C++, so the library's VT_BOOL reads "short" and VT_DATE "double".
template <class T>
struct TypeText;
template <class T>
struct TypeText<T*> {
  static std::string Get() { return TypeText<T>::Get() + "*"; }
};
template <> struct TypeText<BSTR> { static std::string Get() { return "BSTR"; } };
template <> struct TypeText<LONG> { static std::string Get() { return "long"; } };
template <> struct TypeText<short> { static std::string Get() { return "short"; } };
template <> struct TypeText<double> { static std::string Get() { return "double"; } };
template <> struct TypeText<BYTE> { static std::string Get() { return "unsigned char"; } };
template <> struct TypeText<IUnknown> { static std::string Get() { return "IUnknown"; } };
template <> struct TypeText<INA_Form> { static std::string Get() { return "INA_Form"; } };
template <> struct TypeText<NATransactionType> { static std::string Get() { return "NATransactionType"; } };
template <> struct TypeText<NASendType> { static std::string Get() { return "NASendType"; } };
template <> struct TypeText<NAFormType> { static std::string Get() { return "NAFormType"; } };
template <> struct TypeText<NAUploadScope> { static std::string Get() { return "NAUploadScope"; } };
template <> struct TypeText<NALoginType> { static std::string Get() { return "NALoginType"; } };

// A virtual member function pointer holds one more than the function's vtable offset in bytes
// (the Itanium C++ ABI, which GCC follows on both targets).
template <class I, class... Params>
std::string Declared(const char* name, HRESULT (STDMETHODCALLTYPE I::*method)(Params...)) {
  struct {
    uintptr_t pointer;
    ptrdiff_t adjustment;
  } raw;
  static_assert(sizeof raw == sizeof method);
  std::memcpy(&raw, &method, sizeof raw);
  return Line(name, long(raw.pointer - 1), {TypeText<Params>::Get()...});
}
#define M(I, method) Declared<I>(#method, &I::method)

struct Declaration {
  const char* name;
  std::vector<std::string> functions;
};

// Every interface's own functions in declaration order.
std::vector<Declaration> Declarations() {
  return {
      {"INA_Form", {M(INA_Form, get_To), M(INA_Form, put_To), M(INA_Form, get_Cc), M(INA_Form, put_Cc), M(INA_Form, get_Bcc), M(INA_Form, put_Bcc), M(INA_Form, get_From), M(INA_Form, put_From), M(INA_Form, get_ReplyTo), M(INA_Form, put_ReplyTo), M(INA_Form, get_Subject), M(INA_Form, put_Subject), M(INA_Form, get_Text), M(INA_Form, put_Text), M(INA_Form, get_TransactionType), M(INA_Form, put_TransactionType), M(INA_Form, get_TransactionRecordNumber), M(INA_Form, put_TransactionRecordNumber), M(INA_Form, get_SendMethod), M(INA_Form, put_SendMethod), M(INA_Form, get_Pay), M(INA_Form, put_Pay), M(INA_Form, BuildXML), M(INA_Form, get_Post), M(INA_Form, put_Post), M(INA_Form, get_Fax_FromCompanyName), M(INA_Form, put_Fax_FromCompanyName), M(INA_Form, get_Fax_FromTelephoneNumber), M(INA_Form, put_Fax_FromTelephoneNumber), M(INA_Form, get_Fax_FromFaxNumber), M(INA_Form, put_Fax_FromFaxNumber), M(INA_Form, get_Fax_ToCompanyName), M(INA_Form, put_Fax_ToCompanyName), M(INA_Form, get_Fax_ToRecipientName), M(INA_Form, put_Fax_ToRecipientName), M(INA_Form, get_Fax_ToFaxNumber), M(INA_Form, put_Fax_ToFaxNumber)}},
      {"INA_Form2", {M(INA_Form2, put_StatementTxnItemView), M(INA_Form2, put_StatementStyleNumber), M(INA_Form2, put_StatementCustomerRecNum), M(INA_Form2, put_StatementAgedBalItem), M(INA_Form2, put_StatementDate), M(INA_Form2, put_StatementDueDate), M(INA_Form2, put_StatementAmountDue), M(INA_Form2, put_StatementID)}},
      {"INA_Form3", {M(INA_Form3, get_StatementStyleNumber), M(INA_Form3, get_StatementCustomerRecNum), M(INA_Form3, get_StatementDate), M(INA_Form3, get_StatementDueDate), M(INA_Form3, get_StatementAmountDue), M(INA_Form3, get_StatementID), M(INA_Form3, get_StatementFromDate), M(INA_Form3, put_StatementFromDate), M(INA_Form3, get_StatementToDate), M(INA_Form3, put_StatementToDate)}},
      {"INA_Form4", {M(INA_Form4, get_PDFFileName), M(INA_Form4, put_PDFFileName)}},
      {"INA_Form5", {M(INA_Form5, get_FormType), M(INA_Form5, put_FormType), M(INA_Form5, get_DocType), M(INA_Form5, put_DocType), M(INA_Form5, get_AttachmentPath), M(INA_Form5, put_AttachmentPath), M(INA_Form5, get_AttachmentFileName), M(INA_Form5, put_AttachmentFileName), M(INA_Form5, get_MessageID), M(INA_Form5, put_MessageID), M(INA_Form5, get_BatchSend), M(INA_Form5, put_BatchSend), M(INA_Form5, get_RemoveAfterSend), M(INA_Form5, put_RemoveAfterSend), M(INA_Form5, get_PaperMail_ToAttention), M(INA_Form5, put_PaperMail_ToAttention), M(INA_Form5, get_PaperMail_FromAttention), M(INA_Form5, put_PaperMail_FromAttention), M(INA_Form5, get_PaperMail_ToAddresseeName), M(INA_Form5, put_PaperMail_ToAddresseeName), M(INA_Form5, get_PaperMail_FromAddresseeName), M(INA_Form5, put_PaperMail_FromAddresseeName), M(INA_Form5, get_PaperMail_ToStreetAddress1), M(INA_Form5, put_PaperMail_ToStreetAddress1), M(INA_Form5, get_PaperMail_FromStreetAddress1), M(INA_Form5, put_PaperMail_FromStreetAddress1), M(INA_Form5, get_PaperMail_ToStreetAddress2), M(INA_Form5, put_PaperMail_ToStreetAddress2), M(INA_Form5, get_PaperMail_FromStreetAddress2), M(INA_Form5, put_PaperMail_FromStreetAddress2), M(INA_Form5, get_PaperMail_ToCity), M(INA_Form5, put_PaperMail_ToCity), M(INA_Form5, get_PaperMail_FromCity), M(INA_Form5, put_PaperMail_FromCity), M(INA_Form5, get_PaperMail_ToState), M(INA_Form5, put_PaperMail_ToState), M(INA_Form5, get_PaperMail_FromState), M(INA_Form5, put_PaperMail_FromState), M(INA_Form5, get_PaperMail_ToPostalCode), M(INA_Form5, put_PaperMail_ToPostalCode), M(INA_Form5, get_PaperMail_FromPostalCode), M(INA_Form5, put_PaperMail_FromPostalCode), M(INA_Form5, get_PaperMail_ToCountry), M(INA_Form5, put_PaperMail_ToCountry), M(INA_Form5, get_PaperMail_FromCountry), M(INA_Form5, put_PaperMail_FromCountry), M(INA_Form5, get_CoverLetter), M(INA_Form5, put_CoverLetter), M(INA_Form5, get_IsSample), M(INA_Form5, put_IsSample), M(INA_Form5, get_UseColor), M(INA_Form5, put_UseColor)}},
      {"INA_Form6", {M(INA_Form6, get_SynchMultiple), M(INA_Form6, put_SynchMultiple)}},
      {"INA_Form7", {M(INA_Form7, get_AttachmentFileList), M(INA_Form7, AddAttachmentFile), M(INA_Form7, ClearAttachmentFileList)}},
      {"INA_Forms", {M(INA_Forms, AddForm), M(INA_Forms, RemoveAllForms), M(INA_Forms, OnSynchCompleted), M(INA_Forms, get_ForceNewCompany), M(INA_Forms, put_ForceNewCompany), M(INA_Forms, get_DoAllCustomers), M(INA_Forms, put_DoAllCustomers)}},
      {"INA_Forms2", {M(INA_Forms2, get_UploadScope), M(INA_Forms2, put_UploadScope)}},
      {"INA_Base", {M(INA_Base, BuildXML), M(INA_Base, OnSynchCompleted), M(INA_Base, get_LoginType), M(INA_Base, IsSendMethod)}},
      {"INA_Base2", {M(INA_Base2, get_DTD_ID), M(INA_Base2, get_DTD_Version), M(INA_Base2, get_IsAnotherSynchNeeded), M(INA_Base2, get_ResponseTypesToParse), M(INA_Base2, ParseResponse), M(INA_Base2, get_ServiceID)}},
      {"INA_Base3", {M(INA_Base3, Initialize), M(INA_Base3, BuildData), M(INA_Base3, get_DataSize), M(INA_Base3, get_URL), M(INA_Base3, get_ContentType), M(INA_Base3, get_RequestHeaderParams), M(INA_Base3, get_NumResponseHeaderParams), M(INA_Base3, get_ResponseHeaderParamName), M(INA_Base3, SetResponseHeaderParamValue), M(INA_Base3, get_XMLDocType)}},
      {"INA_Base4", {M(INA_Base4, put_AuthParams)}},
      {"INA_Base5", {M(INA_Base5, get_TxEParams)}},
  };
}

std::string Narrow(const BSTR text) {
  std::string out;
  parcelon::WideToAnsi(text, SysStringLen(text), out);
  return out;
}

struct ComApartment {
  ComApartment() { CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED); }
  ~ComApartment() { CoUninitialize(); }
};

DISPID IdOf(IDispatch* object, const wchar_t* member) {
  LPOLESTR names[] = {const_cast<LPOLESTR>(member)};
  DISPID id = DISPID_UNKNOWN;
  EXPECT_EQ(S_OK, object->GetIDsOfNames(IID_NULL, names, 1, 0, &id)) << Narrow(Bstr(member).Get());
  return id;
}

HRESULT Put(IDispatch* object, const wchar_t* property, VARIANT value) {
  DISPID named = DISPID_PROPERTYPUT;
  DISPPARAMS params{&value, &named, 1, 1};
  return object->Invoke(IdOf(object, property), IID_NULL, 0, DISPATCH_PROPERTYPUT, &params, nullptr,
                        nullptr, nullptr);
}

HRESULT Get(IDispatch* object, const wchar_t* member, VARIANT& result, WORD flags = DISPATCH_PROPERTYGET) {
  DISPPARAMS none{};
  VariantInit(&result);
  return object->Invoke(IdOf(object, member), IID_NULL, 0, flags, &none, &result, nullptr, nullptr);
}

// Properties and methods of both classes by name, with the automation conversions and their
// refusals.
TEST(Dispatch, CallsBothClassesByName) {
  ComApartment apartment;
  const ComPtr<IDispatch> form = Created(CLSID_NA_Form);
  ASSERT_TRUE(form);
  UINT count = 0;
  EXPECT_EQ(S_OK, form->GetTypeInfoCount(&count));
  EXPECT_EQ(1u, count);

  VARIANT value;
  value.vt = VT_BSTR;
  value.bstrVal = SysAllocString(L"siobhan@obrien.example");
  EXPECT_EQ(S_OK, Put(form.Get(), L"To", value));
  VariantClear(&value);
  VARIANT result;
  ASSERT_EQ(S_OK, Get(form.Get(), L"To", result));
  ASSERT_EQ(VT_BSTR, result.vt);
  EXPECT_EQ("siobhan@obrien.example", Narrow(result.bstrVal));
  VariantClear(&result);

  value.vt = VT_BSTR;
  value.bstrVal = SysAllocString(L"1001");
  EXPECT_EQ(S_OK, Put(form.Get(), L"TransactionRecordNumber", value)) << "text that reads as a number";
  VariantClear(&value);
  ASSERT_EQ(S_OK, Get(form.Get(), L"TransactionRecordNumber", result));
  EXPECT_EQ(VT_I4, result.vt);
  EXPECT_EQ(1001, result.lVal);
  value.vt = VT_BSTR;
  value.bstrVal = SysAllocString(L"not a number");
  EXPECT_EQ(DISP_E_TYPEMISMATCH, Put(form.Get(), L"TransactionRecordNumber", value));
  VariantClear(&value);

  OLECHAR unknownName[] = L"NoSuchMember";
  LPOLESTR names[] = {unknownName};
  DISPID id = 0;
  EXPECT_EQ(DISP_E_UNKNOWNNAME, form->GetIDsOfNames(IID_NULL, names, 1, 0, &id));

  const ComPtr<IDispatch> session = Created(CLSID_NA_Forms);
  ASSERT_TRUE(session);
  ASSERT_EQ(S_OK, Get(session.Get(), L"UploadScope", result));
  EXPECT_EQ(VT_I4, result.vt);
  EXPECT_EQ(2, result.lVal);
  ASSERT_EQ(S_OK, Get(session.Get(), L"AddForm", result, DISPATCH_METHOD));
  ASSERT_EQ(VT_DISPATCH, result.vt);
  ComPtr<INA_Form7> added;
  EXPECT_EQ(S_OK, result.pdispVal->QueryInterface(IidOf<INA_Form7>(), added.ReleaseAndGetVoidAddress()));
  VariantClear(&result);
}

// The session's INA_Base chain, which has no dispatch part of its own, by name through the
// session's IDispatch: its members' DISPIDs are apart from INA_Forms2's, its calls convert and
// refuse arguments as the type library says, and an unknown member of it is not found.
TEST(Dispatch, ReachesTheSessionsSecondChainByName) {
  ComApartment apartment;
  const ComPtr<IDispatch> session = Created(CLSID_NA_Forms);
  ASSERT_TRUE(session);
  const DISPID initialize = IdOf(session.Get(), L"Initialize");
  EXPECT_NE(0, initialize & 0x08000000) << initialize;
  EXPECT_EQ(0, IdOf(session.Get(), L"UploadScope") & 0x08000000);

  VARIANT result;
  ASSERT_EQ(S_OK, Get(session.Get(), L"LoginType", result));
  EXPECT_EQ(VT_I4, result.vt);

  VARIANT index;
  index.vt = VT_BSTR;
  index.bstrVal = SysAllocString(L"not a number");
  DISPPARAMS oneArgument{&index, nullptr, 1, 0};
  VariantInit(&result);
  EXPECT_EQ(DISP_E_TYPEMISMATCH,
            session->Invoke(IdOf(session.Get(), L"ResponseHeaderParamName"), IID_NULL, 0,
                            DISPATCH_PROPERTYGET, &oneArgument, &result, nullptr, nullptr));
  VariantClear(&index);

  DISPPARAMS none{};
  EXPECT_EQ(DISP_E_MEMBERNOTFOUND, session->Invoke(initialize | 0x7F00, IID_NULL, 0, DISPATCH_METHOD,
                                                   &none, nullptr, nullptr, nullptr));
}

// Calls a client may get wrong end in an HRESULT, through the dual interface and through the
// session's second chain alike: missing or short argument arrays, named arguments, a put
// without DISPID_PROPERTYPUT, wrong counts.
TEST(Dispatch, MalformedCallsEndInAnHResult) {
  ComApartment apartment;
  const ComPtr<IDispatch> form = Created(CLSID_NA_Form);
  const ComPtr<IDispatch> session = Created(CLSID_NA_Forms);
  ASSERT_TRUE(form && session);
  VARIANT arguments[2];
  for (VARIANT& argument : arguments) {
    VariantInit(&argument);
    argument.vt = VT_BSTR;
    argument.bstrVal = SysAllocString(L"x");
  }
  // SetResponseHeaderParamValue's value and name, both named: they reach the method, which has
  // no form to give the message identifier to (and so logs nothing).
  VARIANT header[2];
  for (VARIANT& argument : header) VariantInit(&argument);
  header[0].vt = header[1].vt = VT_BSTR;
  header[0].bstrVal = SysAllocString(L"messageid=ATT000001 ; Path=/");
  header[1].bstrVal = SysAllocString(L"Set-Cookie");
  DISPID valueThenName[] = {1, 0};
  DISPID putId = DISPID_PROPERTYPUT;
  DISPID firstParameter = 0;
  struct Case {
    const char* what;
    IDispatch* object;
    const wchar_t* member;
    WORD flags;
    DISPPARAMS params;
    bool nullParams;
    HRESULT expected;
  };
  const Case cases[] = {
      {"no parameters, dual", form.Get(), L"To", DISPATCH_PROPERTYGET, {}, true, E_INVALIDARG},
      {"no parameters, chain", session.Get(), L"Initialize", DISPATCH_METHOD, {}, true,
       E_INVALIDARG},
      {"no argument array, dual", form.Get(), L"To", DISPATCH_PROPERTYPUT,
       {nullptr, &putId, 1, 1}, false, E_INVALIDARG},
      {"no argument array, chain", session.Get(), L"SetResponseHeaderParamValue",
       DISPATCH_METHOD, {nullptr, nullptr, 2, 0}, false, E_INVALIDARG},
      {"no named array, dual", form.Get(), L"To", DISPATCH_PROPERTYPUT,
       {arguments, nullptr, 1, 1}, false, E_INVALIDARG},
      {"no named array, chain", session.Get(), L"AuthParams", DISPATCH_PROPERTYPUT,
       {arguments, nullptr, 2, 1}, false, E_INVALIDARG},
      {"more named than arguments, dual", form.Get(), L"To", DISPATCH_PROPERTYPUT,
       {arguments, &putId, 0, 1}, false, E_INVALIDARG},
      {"more named than arguments, chain", session.Get(), L"AuthParams", DISPATCH_PROPERTYPUT,
       {arguments, &putId, 0, 1}, false, E_INVALIDARG},
      {"too few arguments, dual", form.Get(), L"AddAttachmentFile", DISPATCH_METHOD, {}, false,
       DISP_E_BADPARAMCOUNT},
      {"too few arguments, chain", session.Get(), L"SetResponseHeaderParamValue",
       DISPATCH_METHOD, {arguments, nullptr, 1, 0}, false, DISP_E_BADPARAMCOUNT},
      {"named argument, dual", form.Get(), L"AddAttachmentFile", DISPATCH_METHOD,
       {arguments, &firstParameter, 1, 1}, false, S_OK},
      {"named arguments, chain", session.Get(), L"SetResponseHeaderParamValue", DISPATCH_METHOD,
       {header, valueThenName, 2, 2}, false, DISP_E_EXCEPTION},
      {"put without its name, dual", form.Get(), L"To", DISPATCH_PROPERTYPUT,
       {arguments, nullptr, 1, 0}, false, DISP_E_PARAMNOTFOUND},
      {"put without its name, chain", session.Get(), L"AuthParams", DISPATCH_PROPERTYPUT,
       {arguments, nullptr, 2, 0}, false, DISP_E_PARAMNOTFOUND},
  };

  for (const Case& test : cases) {
    SCOPED_TRACE(test.what);
    DISPPARAMS params = test.params;
    VARIANT result;
    VariantInit(&result);
    EXCEPINFO exception{};
    EXPECT_EQ(test.expected,
              test.object->Invoke(IdOf(test.object, test.member), IID_NULL, 0, test.flags,
                                  test.nullParams ? nullptr : &params, &result, &exception,
                                  nullptr));
    if (test.expected == DISP_E_EXCEPTION) {
      EXPECT_EQ(E_UNEXPECTED, exception.scode);
    }
    VariantClear(&result);
  }
  for (VARIANT& argument : arguments) VariantClear(&argument);
  for (VARIANT& argument : header) VariantClear(&argument);
}

// Names a client may get wrong: missing arrays, a null name, no names at all, a name neither
// chain knows.
TEST(Dispatch, MalformedNamesEndInAnHResult) {
  ComApartment apartment;
  for (const CLSID& clsid : {CLSID_NA_Form, CLSID_NA_Forms}) {
    const ComPtr<IDispatch> object = Created(clsid);
    ASSERT_TRUE(object);
    OLECHAR unknown[] = L"NoSuchMember";
    LPOLESTR unknownNames[] = {unknown};
    LPOLESTR nullNames[] = {nullptr};
    DISPID id = 7;
    EXPECT_EQ(DISP_E_UNKNOWNNAME, object->GetIDsOfNames(IID_NULL, unknownNames, 1, 0, &id));
    EXPECT_EQ(DISPID_UNKNOWN, id);
    id = 7;
    EXPECT_EQ(DISP_E_UNKNOWNNAME, object->GetIDsOfNames(IID_NULL, nullNames, 1, 0, &id));
    EXPECT_EQ(DISPID_UNKNOWN, id);
    EXPECT_EQ(E_INVALIDARG, object->GetIDsOfNames(IID_NULL, nullptr, 1, 0, &id));
    EXPECT_EQ(E_INVALIDARG, object->GetIDsOfNames(IID_NULL, unknownNames, 1, 0, nullptr));
    EXPECT_EQ(S_OK, object->GetIDsOfNames(IID_NULL, nullptr, 0, 0, nullptr));
  }
}

// A member with a parameter name it does not have: the member's DISPID is given all the same,
// from either chain of the session, and the unknown name's is DISPID_UNKNOWN.
TEST(Dispatch, AnUnknownParameterNameLeavesTheMembersId) {
  ComApartment apartment;
  const ComPtr<IDispatch> session = Created(CLSID_NA_Forms);
  ASSERT_TRUE(session);
  for (const wchar_t* member : {L"RemoveAllForms", L"SetResponseHeaderParamValue"}) {
    SCOPED_TRACE(Narrow(Bstr(member).Get()));
    LPOLESTR names[] = {const_cast<LPOLESTR>(member), const_cast<LPOLESTR>(L"noSuchParameter")};
    DISPID ids[2] = {7, 7};
    EXPECT_EQ(DISP_E_UNKNOWNNAME, session->GetIDsOfNames(IID_NULL, names, 2, 0, ids));
    EXPECT_EQ(IdOf(session.Get(), member), ids[0]);
    EXPECT_EQ(DISPID_UNKNOWN, ids[1]);
  }
}

// One function as a line

// A type of the library as text, in the C++ terms of TypeText.
std::string Describe(ITypeInfo* info, const TYPEDESC& type) {
  switch (type.vt) {
    case VT_PTR: return Describe(info, *type.lptdesc) + "*";
    case VT_BSTR: return "BSTR";
    case VT_I4: return "long";
    case VT_I2: case VT_BOOL: return "short";
    case VT_R8: case VT_DATE: return "double";
    case VT_UI1: return "unsigned char";
    case VT_UNKNOWN: return "IUnknown*";
    case VT_USERDEFINED: {
      ComPtr<ITypeInfo> referenced;
      if (FAILED(info->GetRefTypeInfo(type.hreftype, referenced.ReleaseAndGetAddressOf()))) return "?";
      BSTR name = nullptr;
      referenced->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr);
      const Bstr owned = Bstr::Attach(name);
      return Narrow(owned.Get());
    }
    default: return "vt " + std::to_string(type.vt);
  }
}

// The vtable part of an interface's type information (for a dual interface, the interface
// behind its dispatch part).
ComPtr<ITypeInfo> VtableInfo(ITypeLib* library, const std::string& name) {
  std::wstring wide(name.begin(), name.end());
  ComPtr<ITypeInfo> info;
  MEMBERID member = 0;
  USHORT found = 1;
  if (FAILED(library->FindName(wide.data(), 0, info.ReleaseAndGetAddressOf(), &member, &found)) || found == 0)
    return nullptr;
  TYPEATTR* attributes = nullptr;
  info->GetTypeAttr(&attributes);
  const bool dispatch = attributes->typekind == TKIND_DISPATCH;
  info->ReleaseTypeAttr(attributes);
  if (!dispatch) return info;
  HREFTYPE ref = 0;
  ComPtr<ITypeInfo> vtable;
  if (FAILED(info->GetRefTypeOfImplType(UINT(-1), &ref)) ||
      FAILED(info->GetRefTypeInfo(ref, vtable.ReleaseAndGetAddressOf())))
    return nullptr;
  return vtable;
}

std::vector<std::string> LibraryFunctions(ITypeInfo* info) {
  std::vector<std::string> lines;
  TYPEATTR* attributes = nullptr;
  info->GetTypeAttr(&attributes);
  const UINT count = attributes->cFuncs;
  info->ReleaseTypeAttr(attributes);
  for (UINT i = 0; i < count; ++i) {
    FUNCDESC* function = nullptr;
    info->GetFuncDesc(i, &function);
    BSTR name = nullptr;
    UINT names = 0;
    info->GetNames(function->memid, &name, 1, &names);
    const Bstr owned = Bstr::Attach(name);
    std::string text = Narrow(owned.Get());
    if (function->invkind == INVOKE_PROPERTYGET) text = "get_" + text;
    if (function->invkind == INVOKE_PROPERTYPUT) text = "put_" + text;
    std::vector<std::string> params;
    for (SHORT p = 0; p < function->cParams; ++p) params.push_back(Describe(info, function->lprgelemdescParam[p].tdesc));
    if (function->elemdescFunc.tdesc.vt != VT_HRESULT) text += " (returns no HRESULT)";
    lines.push_back(Line(text, function->oVft, params));
    info->ReleaseFuncDesc(function);
  }
  return lines;
}

TEST(TypeLibrary, EveryInterfaceMatchesItsCppDeclaration) {
  ComPtr<ITypeLib> library;
  std::wstring path(PARCELON_MODULE_PATH, PARCELON_MODULE_PATH + std::strlen(PARCELON_MODULE_PATH));
  ASSERT_EQ(S_OK, LoadTypeLibEx(path.c_str(), REGKIND_NONE, library.ReleaseAndGetAddressOf()));
  for (const Declaration& declaration : Declarations()) {
    SCOPED_TRACE(declaration.name);
    const ComPtr<ITypeInfo> info = VtableInfo(library.Get(), declaration.name);
    ASSERT_TRUE(info);
    EXPECT_EQ(declaration.functions, LibraryFunctions(info.Get()));
  }
}

#endif  // _WIN32

}  // namespace
