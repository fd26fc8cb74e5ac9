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
const StringProperty kStringProperties[] = {
    STRING_PROPERTY(To),
    STRING_PROPERTY(Cc),
    STRING_PROPERTY(Bcc),
    STRING_PROPERTY(From),
    STRING_PROPERTY(ReplyTo),
    STRING_PROPERTY(Subject),
    STRING_PROPERTY(Text),
    STRING_PROPERTY(Fax_FromCompanyName),
    STRING_PROPERTY(Fax_FromTelephoneNumber),
    STRING_PROPERTY(Fax_FromFaxNumber),
    STRING_PROPERTY(Fax_ToCompanyName),
    STRING_PROPERTY(Fax_ToRecipientName),
    STRING_PROPERTY(Fax_ToFaxNumber),
    STRING_PROPERTY(PDFFileName),
    STRING_PROPERTY(DocType),
    STRING_PROPERTY(AttachmentPath),
    STRING_PROPERTY(AttachmentFileName),
    STRING_PROPERTY(MessageID),
    STRING_PROPERTY(PaperMail_ToAttention),
    STRING_PROPERTY(PaperMail_FromAttention),
    STRING_PROPERTY(PaperMail_ToAddresseeName),
    STRING_PROPERTY(PaperMail_FromAddresseeName),
    STRING_PROPERTY(PaperMail_ToStreetAddress1),
    STRING_PROPERTY(PaperMail_FromStreetAddress1),
    STRING_PROPERTY(PaperMail_ToStreetAddress2),
    STRING_PROPERTY(PaperMail_FromStreetAddress2),
    STRING_PROPERTY(PaperMail_ToCity),
    STRING_PROPERTY(PaperMail_FromCity),
    STRING_PROPERTY(PaperMail_ToState),
    STRING_PROPERTY(PaperMail_FromState),
    STRING_PROPERTY(PaperMail_ToPostalCode),
    STRING_PROPERTY(PaperMail_FromPostalCode),
    STRING_PROPERTY(PaperMail_ToCountry),
    STRING_PROPERTY(PaperMail_FromCountry),
    STRING_PROPERTY(CoverLetter),
};
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

TEST_F(FormTest, NumbersDatesAndFlagsAreKept) {
  ASSERT_EQ(S_OK, form_->put_TransactionType(nattSTATEMENT));
  ASSERT_EQ(S_OK, form_->put_TransactionRecordNumber(2147483647));
  ASSERT_EQ(S_OK, form_->put_StatementStyleNumber(-4));
  ASSERT_EQ(S_OK, form_->put_StatementCustomerRecNum(77));
  ASSERT_EQ(S_OK, form_->put_StatementID(12));
  ASSERT_EQ(S_OK, form_->put_StatementDate(39879.5));
  ASSERT_EQ(S_OK, form_->put_StatementDueDate(39909.25));
  ASSERT_EQ(S_OK, form_->put_StatementFromDate(39800));
  ASSERT_EQ(S_OK, form_->put_StatementToDate(39850));
  ASSERT_EQ(S_OK, form_->put_StatementAmountDue(MakeBstr("1,234.50").Get()));
  ASSERT_EQ(S_OK, form_->put_Post(VARIANT_TRUE));
  ASSERT_EQ(S_OK, form_->put_RemoveAfterSend(VARIANT_TRUE));
  // A form type the enumeration does not name is kept as given.
  ASSERT_EQ(S_OK, form_->put_FormType(NAFormType(12)));

  NATransactionType transactionType = nattINVOICE;
  LONG number = 0;
  DATE date = 0;
  VARIANT_BOOL flag = VARIANT_FALSE;
  NAFormType type = naftINVOICE;
  EXPECT_EQ(S_OK, form_->get_TransactionType(&transactionType));
  EXPECT_EQ(nattSTATEMENT, transactionType);
  EXPECT_EQ(S_OK, form_->get_TransactionRecordNumber(&number));
  EXPECT_EQ(2147483647, number);
  EXPECT_EQ(S_OK, form_->get_StatementStyleNumber(&number));
  EXPECT_EQ(-4, number);
  EXPECT_EQ(S_OK, form_->get_StatementCustomerRecNum(&number));
  EXPECT_EQ(77, number);
  EXPECT_EQ(S_OK, form_->get_StatementID(&number));
  EXPECT_EQ(12, number);
  EXPECT_EQ(S_OK, form_->get_StatementDate(&date));
  EXPECT_EQ(39879.5, date);
  EXPECT_EQ(S_OK, form_->get_StatementDueDate(&date));
  EXPECT_EQ(39909.25, date);
  EXPECT_EQ(S_OK, form_->get_StatementFromDate(&date));
  EXPECT_EQ(39800, date);
  EXPECT_EQ(S_OK, form_->get_StatementToDate(&date));
  EXPECT_EQ(39850, date);
  EXPECT_EQ("1,234.50", Get(&INA_Form7::get_StatementAmountDue));
  EXPECT_EQ(S_OK, form_->get_Post(&flag));
  EXPECT_EQ(VARIANT_TRUE, flag);
  EXPECT_EQ(S_OK, form_->get_Pay(&flag));
  EXPECT_EQ(VARIANT_FALSE, flag);
  EXPECT_EQ(S_OK, form_->get_RemoveAfterSend(&flag));
  EXPECT_EQ(VARIANT_TRUE, flag);
  EXPECT_EQ(S_OK, form_->get_BatchSend(&flag));
  EXPECT_EQ(VARIANT_FALSE, flag);
  EXPECT_EQ(S_OK, form_->get_FormType(&type));
  EXPECT_EQ(12, type);
}

// A new form is an invoice sent by no method, delivered alone.
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
        AttachmentListCase{"One", {"x.pdf"}, nullptr, nullptr, "x.pdf", std::nullopt},
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

// A long list costs in proportion to its length.
TEST_F(FormTest, ManyAttachmentsAreJoined) {
  std::string expected;
  for (int i = 0; i < 10000; ++i) {
    const std::string name = "file" + std::to_string(i) + ".pdf";
    ASSERT_EQ(S_OK, form_->AddAttachmentFile(MakeBstr(name).Get()));
    expected += (i ? "|" : "") + name;
  }
  EXPECT_EQ(expected, AttachmentFileList());
}

std::string Text(const SharedText& text) {
  return text ? std::string(text->GetText(), size_t(text->GetLength())) : "<null>";
}

TEST_F(FormTest, StatementLinesAreKeptInOrder) {
  ASSERT_EQ(S_OK,
            form_->put_StatementTxnItemView(39879, MakeBstr("INV 1").Get(), MakeBstr("10.00").Get(),
                                            MakeBstr("Labor").Get(), MakeBstr("2").Get(),
                                            MakeBstr("10.00").Get(), MakeBstr("5.00").Get()));
  ASSERT_EQ(S_OK,
            form_->put_StatementTxnItemView(39880, MakeBstr("PMT").Get(), MakeBstr("-4.00").Get(),
                                            nullptr, nullptr, MakeBstr("6.00").Get(), nullptr));
  const auto& lines = static_cast<CNA_Form*>(form_.Get())->StatementLines();
  ASSERT_EQ(2u, lines.size());
  EXPECT_EQ(39879, lines[0].date);
  EXPECT_EQ("INV 1", Text(lines[0].txnDesc));
  EXPECT_EQ("10.00", Text(lines[0].amountStr));
  EXPECT_EQ("Labor", Text(lines[0].txnItemDesc));
  EXPECT_EQ("2", Text(lines[0].txnItemQty));
  EXPECT_EQ("10.00", Text(lines[0].txnRunningBal));
  EXPECT_EQ("5.00", Text(lines[0].txnItemRate));
  EXPECT_EQ(39880, lines[1].date);
  EXPECT_EQ("PMT", Text(lines[1].txnDesc));
  EXPECT_EQ("", Text(lines[1].txnItemDesc));
  EXPECT_EQ("6.00", Text(lines[1].txnRunningBal));
}

}  // namespace
}  // namespace parcelon::test
