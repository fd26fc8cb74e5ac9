// The form object: its properties, the attachment list and the statement lines.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ComponentTest.h"
#include "component/NA_Form.h"

namespace parcelon::test {
namespace {

class FormTest : public ComponentTest {
 protected:
  void SetUp() override {
    ComponentTest::SetUp();
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_NA_Form, nullptr, CLSCTX_INPROC_SERVER,
                                     IidOf<INA_Form7>(), form_.ReleaseAndGetVoidAddress()));
  }
  void TearDown() override {
    form_.Reset();
    ComponentTest::TearDown();
  }

  std::optional<std::string> Get(HRESULT (STDMETHODCALLTYPE INA_Form7::*getter)(BSTR*)) {
    BSTR value = nullptr;
    EXPECT_EQ(S_OK, (form_.Get()->*getter)(&value));
    return TakeText(value);
  }
  void Put(HRESULT (STDMETHODCALLTYPE INA_Form7::*putter)(BSTR), const std::string& value) {
    EXPECT_EQ(S_OK, (form_.Get()->*putter)(MakeBstr(value).Get()));
  }
  std::string AttachmentFileList() { return Get(&INA_Form7::get_AttachmentFileList).value(); }

  ComPtr<INA_Form7> form_;
};

struct StringProperty {
  const char* name;
  HRESULT (STDMETHODCALLTYPE INA_Form7::*get)(BSTR*);
  HRESULT (STDMETHODCALLTYPE INA_Form7::*put)(BSTR);
};

#define STRING_PROPERTY(Name) \
  { #Name, &INA_Form7::get_##Name, &INA_Form7::put_##Name }
// clang-format off
const StringProperty kStringProperties[] = {
    STRING_PROPERTY(To), STRING_PROPERTY(Cc), STRING_PROPERTY(Bcc), STRING_PROPERTY(From),
    STRING_PROPERTY(ReplyTo), STRING_PROPERTY(Subject), STRING_PROPERTY(Text),
    STRING_PROPERTY(Fax_FromCompanyName), STRING_PROPERTY(Fax_FromTelephoneNumber),
    STRING_PROPERTY(Fax_FromFaxNumber), STRING_PROPERTY(Fax_ToCompanyName),
    STRING_PROPERTY(Fax_ToRecipientName), STRING_PROPERTY(Fax_ToFaxNumber),
    STRING_PROPERTY(PDFFileName), STRING_PROPERTY(DocType), STRING_PROPERTY(AttachmentPath),
    STRING_PROPERTY(AttachmentFileName), STRING_PROPERTY(MessageID),
    STRING_PROPERTY(PaperMail_ToAttention), STRING_PROPERTY(PaperMail_FromAttention),
    STRING_PROPERTY(PaperMail_ToAddresseeName), STRING_PROPERTY(PaperMail_FromAddresseeName),
    STRING_PROPERTY(PaperMail_ToStreetAddress1), STRING_PROPERTY(PaperMail_FromStreetAddress1),
    STRING_PROPERTY(PaperMail_ToStreetAddress2), STRING_PROPERTY(PaperMail_FromStreetAddress2),
    STRING_PROPERTY(PaperMail_ToCity), STRING_PROPERTY(PaperMail_FromCity),
    STRING_PROPERTY(PaperMail_ToState), STRING_PROPERTY(PaperMail_FromState),
    STRING_PROPERTY(PaperMail_ToPostalCode), STRING_PROPERTY(PaperMail_FromPostalCode),
    STRING_PROPERTY(PaperMail_ToCountry), STRING_PROPERTY(PaperMail_FromCountry),
    STRING_PROPERTY(CoverLetter),
};
// clang-format on
#undef STRING_PROPERTY

// Each text property keeps its own value: a put reaches no other property.
TEST_F(FormTest, EachTextPropertyKeepsItsOwnValue) {
  for (const StringProperty& property : kStringProperties)
    EXPECT_EQ(std::nullopt, Get(property.get)) << property.name << " starts unset";
  for (const StringProperty& property : kStringProperties)
    Put(property.put, std::string("value of ") + property.name);
  for (const StringProperty& property : kStringProperties)
    EXPECT_EQ(std::string("value of ") + property.name, Get(property.get)) << property.name;
}

// An empty text is kept as set (the session tells a message identifier that is empty from none);
// a null one unsets the property again.
TEST_F(FormTest, EmptyTextIsSetAndNullUnsets) {
  ASSERT_EQ(S_OK, form_->put_MessageID(MakeBstr("").Get()));
  EXPECT_EQ(std::optional<std::string>(""), Get(&INA_Form7::get_MessageID));
  ASSERT_EQ(S_OK, form_->put_MessageID(nullptr));
  EXPECT_EQ(std::nullopt, Get(&INA_Form7::get_MessageID));
}

// A new form is an invoice sent by no method, delivered alone, with its flags off.
TEST_F(FormTest, NewFormIsAnInvoiceSentByNoMethod) {
  NASendType method = nastEMAIL;
  NAFormType type = naftNON_LX;
  VARIANT_BOOL synchMultiple = VARIANT_TRUE;
  EXPECT_EQ(S_OK, form_->get_SendMethod(&method));
  EXPECT_EQ(nastNONE, method);
  EXPECT_EQ(S_OK, form_->get_FormType(&type));
  EXPECT_EQ(naftINVOICE, type);
  EXPECT_EQ(S_OK, form_->get_SynchMultiple(&synchMultiple));
  EXPECT_EQ(VARIANT_FALSE, synchMultiple);
  using FlagGetter = HRESULT (STDMETHODCALLTYPE INA_Form7::*)(VARIANT_BOOL*);
  for (FlagGetter getFlag : std::initializer_list<FlagGetter>{
           &INA_Form7::get_Pay, &INA_Form7::get_Post, &INA_Form7::get_BatchSend}) {
    VARIANT_BOOL flag = VARIANT_TRUE;
    EXPECT_EQ(S_OK, (form_.Get()->*getFlag)(&flag));
    EXPECT_EQ(VARIANT_FALSE, flag);
  }
  EXPECT_EQ("", AttachmentFileList());
}

TEST_F(FormTest, NullOutputIsRefused) {
  EXPECT_EQ(E_POINTER, form_->get_To(nullptr));
  EXPECT_EQ(E_POINTER, form_->get_SendMethod(nullptr));
  EXPECT_EQ(E_POINTER, form_->get_AttachmentFileList(nullptr));
  EXPECT_EQ(E_POINTER, form_->BuildXML(0, nullptr));
}

struct AttachmentListCase {
  const char* name;
  std::vector<std::string> added;
  const char* path;      // null: not set
  const char* fileName;  // null: not set
  std::string list;
  std::optional<std::string> pathAfter;
};

class AttachmentListTest : public FormTest,
                           public ::testing::WithParamInterface<AttachmentListCase> {};

TEST_P(AttachmentListTest, ListsTheFilesToAttach) {
  const AttachmentListCase& c = GetParam();
  for (const std::string& file : c.added)
    ASSERT_EQ(S_OK, form_->AddAttachmentFile(MakeBstr(file).Get()));
  if (c.path) Put(&INA_Form7::put_AttachmentPath, c.path);
  if (c.fileName) Put(&INA_Form7::put_AttachmentFileName, c.fileName);
  EXPECT_EQ(c.list, AttachmentFileList());
  EXPECT_EQ(c.pathAfter, Get(&INA_Form7::get_AttachmentPath));
  // Reading the list again gives the same.
  EXPECT_EQ(c.list, AttachmentFileList());
}

INSTANTIATE_TEST_SUITE_P(
    Form, AttachmentListTest,
    ::testing::Values(
        AttachmentListCase{"Empty", {}, nullptr, nullptr, "", std::nullopt},
        AttachmentListCase{
            "InOrderAdded", {"x.pdf", "y.pdf"}, nullptr, nullptr, "x.pdf|y.pdf", std::nullopt},
        AttachmentListCase{
            "DuplicatesKept", {"x.pdf", "x.pdf"}, nullptr, nullptr, "x.pdf|x.pdf", std::nullopt},
        AttachmentListCase{
            "EmptyEntryKept", {"x.pdf", ""}, nullptr, nullptr, "x.pdf|", std::nullopt},
        AttachmentListCase{
            "OwnFileWins", {"x.pdf"}, "C:\\Docs", "a.pdf", "C:\\Docs\\a.pdf", "C:\\Docs\\"},
        AttachmentListCase{
            "PathWithSeparatorKept", {}, "C:\\Docs\\", "a.pdf", "C:\\Docs\\a.pdf", "C:\\Docs\\"},
        AttachmentListCase{
            "PathAloneIsNoFile", {"x.pdf"}, "C:\\Docs", nullptr, "x.pdf", "C:\\Docs"},
        AttachmentListCase{"EmptyPathIsNoFile", {"x.pdf"}, "", "a.pdf", "x.pdf", ""},
        AttachmentListCase{"FileNameAloneIsNoFile", {}, nullptr, "a.pdf", "", std::nullopt}),
    [](const ::testing::TestParamInfo<AttachmentListCase>& info) { return info.param.name; });

TEST_F(FormTest, ClearingEmptiesTheList) {
  EXPECT_EQ(S_OK, form_->ClearAttachmentFileList());
  ASSERT_EQ(S_OK, form_->AddAttachmentFile(MakeBstr("x.pdf").Get()));
  ASSERT_EQ(S_OK, form_->AddAttachmentFile(nullptr));
  EXPECT_EQ("x.pdf|", AttachmentFileList());
  EXPECT_EQ(S_OK, form_->ClearAttachmentFileList());
  EXPECT_EQ("", AttachmentFileList());
  ASSERT_EQ(S_OK, form_->AddAttachmentFile(MakeBstr("y.pdf").Get()));
  EXPECT_EQ("y.pdf", AttachmentFileList());
}

std::string Text(const SharedText& text) {
  return text ? std::string(text->GetText(), size_t(text->GetLength())) : "<null>";
}

// A statement line's values in the order of the put, joined by "|".
std::string Fields(const StatementTxnItemView& line) {
  return std::to_string(line.date) + "|" + Text(line.txnDesc) + "|" + Text(line.amountStr) + "|" +
         Text(line.txnItemDesc) + "|" + Text(line.txnItemQty) + "|" + Text(line.txnRunningBal) +
         "|" + Text(line.txnItemRate);
}

TEST_F(FormTest, StatementLinesAreKeptInOrder) {
  ASSERT_EQ(S_OK,
            form_->put_StatementTxnItemView(39879, MakeBstr("INV 1").Get(), MakeBstr("10.00").Get(),
                                            MakeBstr("Labor").Get(), MakeBstr("2").Get(),
                                            MakeBstr("10.00").Get(), MakeBstr("5.00").Get()));
  ASSERT_EQ(S_OK,
            form_->put_StatementTxnItemView(39880.5, MakeBstr("PMT").Get(), MakeBstr("-4.00").Get(),
                                            nullptr, nullptr, MakeBstr("6.00").Get(), nullptr));
  const auto& lines = static_cast<CNA_Form*>(form_.Get())->StatementLines();
  ASSERT_EQ(2u, lines.size());
  EXPECT_EQ("39879.000000|INV 1|10.00|Labor|2|10.00|5.00", Fields(lines[0]));
  EXPECT_EQ("39880.500000|PMT|-4.00|||6.00|", Fields(lines[1]));
}

}  // namespace
}  // namespace parcelon::test
