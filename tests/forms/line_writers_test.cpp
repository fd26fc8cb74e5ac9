// The writers that the form aggregates keep for forms that carry lines: the invoice and estimate
// line writers, their sales-tax line rule and the estimate template's cost check, against the
// reference host; whole texts, and every failure of a read with its log lines.

// GCC 12 at -O3 takes the strings of the row tables below, built in braced initialiser lists, for
// uninitialised (a known false positive of its maybe-uninitialized analysis).
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <gtest/gtest.h>

#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "forms/EstimateForm.h"
#include "forms/FormAggregateTest.h"
#include "forms/FormParts.h"
#include "forms/InvoiceForm.h"

namespace parcelon::test {
namespace {

// Style 1 prints the sales tax as a line (its sales tax field is not printed) and shows rate and
// markup; style 2 prints the sales tax in its footer and leaves the markup out; style 3 has
// neither fields nor columns.
const std::string kFixture = std::string("{") + kAggregateCompany + R"(
  "items": [
    {"recNum": 50, "name": "Labor", "type": "service"},
    {"recNum": 51, "name": "Shingles", "type": "inventory", "parent": 50},
    {"recNum": 60, "name": "State Tax", "type": "taxComp", "longDescription": "State sales tax <5%>"}
  ],
  "classes": [{"recNum": 5, "name": "Roofing & Siding"}],
  "styles": [
    {"recNum": 1, "fullName": "Tax as line", "fields": [{"id": "date"}, {"id": "salesTax", "onPrint": false}],
     "table": {"columns": [{"id": "rate"}, {"id": "estMarkupItem"}]}},
    {"recNum": 2, "fullName": "Tax in footer", "fields": [{"id": "salesTax"}],
     "table": {"columns": [{"id": "estMarkupItem", "onPrint": false}, {"id": "rate"}]}},
    {"recNum": 3, "fullName": "Plain"}
  ],
  "invoices": [
    {"recNum": 300, "customer": 11, "customStyle": 1, "salesTaxItem": 60, "salesTaxRate": "5.00",
     "lines": [
       {"item": 51, "description": "Cedar <red> shingles", "quantity": "12", "unitPrice": "3.25",
        "amount": "39.00", "class": 5, "other1": "O1", "isTaxable": true, "openBalance": "39.00",
        "customFields": ["Blue", "L&R"], "serviceDate": "2009-03-02",
        "currentPercentage": "50.00", "estimateAmount": "78.00", "estimateQuantity": "24",
        "estimateRate": "3.25", "priorAmount": "0.00", "totalPercentage": "50.00"},
       {"description": "Note: see plan", "paid": true, "isEndOfGroup": true, "isPrintable": false}
     ]},
    {"recNum": 301, "customer": 10, "customStyle": 2, "salesTaxItem": 60, "salesTaxRate": "5.00"}
  ],
  "estimates": [
    {"recNum": 400, "customer": 10, "customStyle": 1, "salesTaxItem": 60, "salesTaxRate": "7.25",
     "lines": [
       {"item": 50, "description": "Crew day", "quantity": "3", "unitPrice": "40.00", "amount": "150.00",
        "markup": "30.00", "nominalTotal": "120.40", "customFields": ["x"]},
       {"description": "Weather permitting"},
       {"item": 50, "description": "Lump sum", "unitPrice": "25.00", "amount": "25.00", "isTaxable": true}
     ]},
    {"recNum": 401, "customer": 10, "customStyle": 2},
    {"recNum": 402, "customer": 10, "customStyle": 3}
  ]
})";

constexpr char kInvoiceItemPrefix[] =
    "Parcelon:CInvoiceItemBuilder::BuildXML(XMLBuilder&, VARIANT_BOOL, OLAString&, IAmountPtr&): ";
constexpr char kInvoiceLinePrefix[] = "Parcelon:CInvoiceItemBuilder::BuildInvoiceLineItem(): ";
constexpr char kProgressPrefix[] =
    "Parcelon:CInvoiceItemBuilder::BuildProgressInvoiceElements(IInvoiceItemLineItem2Ptr, XMLBuilder&): ";
constexpr char kEstimateItemPrefix[] =
    "Parcelon:CEstimateItemBuilder::BuildXML(XMLBuilder&, VARIANT_BOOL, OLAString&, IAmountPtr&, BOOL): ";
constexpr char kEstimateLinePrefix[] = "Parcelon:CEstimateItemBuilder::BuildEstimateLineItem(): ";
constexpr char kInvoiceTaxPrefix[] =
    "Parcelon:CInvoiceDetailBuilder::MaybeAddSalesTaxLineItem(double, IItemPtr, IAmountPtr, VARIANT_BOOL, "
    "XMLBuilder&): ";
constexpr char kEstimateTaxPrefix[] =
    "Parcelon:CEstimateDetailBuilder::MaybeAddSalesTaxLineItem(double, IItemPtr, IAmountPtr, VARIANT_BOOL, "
    "XMLBuilder&): ";
constexpr char kCostPrefix[] = "Parcelon:CEstimateDetailBuilder::CheckTemplateForHowToHandleCost(BOOL*): ";

const std::string kShinglesLine =
    "<InvoiceItem>\n<ItemName>Shingles</ItemName>\n<ItemDesc>Cedar &lt;red&gt; shingles</ItemDesc>\n"
    "<Quantity>12.00</Quantity>\n<Rate>3.25</Rate>\n<Amount>39.00</Amount>\n"
    "<ClassName>Roofing &amp; Siding</ClassName>\n<Other1>O1</Other1>\n<Other2></Other2>\n"
    "<IsPrintable>Y</IsPrintable>\n<IsTaxable>Y</IsTaxable>\n<IsEndOfGroup>N</IsEndOfGroup>\n<Paid>N</Paid>\n"
    "<BalOpen>39.00</BalOpen>\n<CustomFieldData>\n<Index>0</Index>\n<Data>Blue</Data>\n</CustomFieldData>\n"
    "<CustomFieldData>\n<Index>1</Index>\n<Data>L&amp;R</Data>\n</CustomFieldData>\n"
    "<ServiceDate>20090302T000000-0500</ServiceDate>\n<TaxableFlag>T</TaxableFlag>\n"
    "<CurrentPercentage>50.00</CurrentPercentage>\n<EstimateAmount>78.00</EstimateAmount>\n"
    "<EstimateQuantity>24.00</EstimateQuantity>\n<EstimateRate>3.25</EstimateRate>\n<PriorAmount>0.00</PriorAmount>\n"
    "<TotalPercentage>50.00</TotalPercentage>\n</InvoiceItem>\n";

const std::string kNoteLine =
    "<InvoiceItem>\n<ItemName></ItemName>\n<ItemDesc>Note: see plan</ItemDesc>\n<ClassName></ClassName>\n"
    "<Other1></Other1>\n<Other2></Other2>\n<IsPrintable>N</IsPrintable>\n<IsTaxable>N</IsTaxable>\n"
    "<IsEndOfGroup>Y</IsEndOfGroup>\n<Paid>Y</Paid>\n<TaxableFlag> </TaxableFlag>\n</InvoiceItem>\n";

const std::string kCrewDayLine =
    "<EstimateItem>\n<ItemName>Labor</ItemName>\n<ItemDesc>Crew day</ItemDesc>\n<Quantity>3.00</Quantity>\n"
    "<Rate>40.00</Rate>\n<Amount>150.00</Amount>\n<ClassName></ClassName>\n<Other1></Other1>\n<Other2></Other2>\n"
    "<IsPrintable>Y</IsPrintable>\n<IsTaxable>N</IsTaxable>\n<IsEndOfGroup>N</IsEndOfGroup>\n<Paid>N</Paid>\n"
    "<MarkupLineItem>30.00</MarkupLineItem>\n<NominalLineItem>120.4</NominalLineItem>\n<CustomFieldData>\n"
    "<Index>0</Index>\n<Data>x</Data>\n</CustomFieldData>\n<TaxableFlag> </TaxableFlag>\n</EstimateItem>\n";

const std::string kInvoiceTaxLine =
    "<InvoiceItem>\n<ItemName>State Tax</ItemName>\n<ItemDesc>State sales tax &lt;5%&gt;</ItemDesc>\n"
    "<Rate>5.00</Rate>\n<Amount>12.35</Amount>\n<IsPrintable>Y</IsPrintable>\n<IsTaxable>N</IsTaxable>\n"
    "<IsEndOfGroup>N</IsEndOfGroup>\n<Paid>N</Paid>\n</InvoiceItem>\n";

// The estimate's sales tax line: the invoice's with its own element and rate.
const std::string kEstimateTaxLine = Edited(kInvoiceTaxLine, {{"<InvoiceItem>\n", "<EstimateItem>\n"},
                                                              {"<Rate>5.00</Rate>\n", "<Rate>7.25</Rate>\n"},
                                                              {"</InvoiceItem>\n", "</EstimateItem>\n"}});

// A failure of the line writers: the fault, the status, the edits of the whole text and the log;
// for a failure that ends the line, the line of the whole text where the writing stopped.
struct LineCase {
  struct Fault {
    std::string operation;
    std::optional<LONG> record;
    HRESULT hr;
    HostFault Get() const { return {operation.c_str(), record, hr}; }
  } fault;
  HRESULT status;
  std::vector<std::pair<std::string, std::string>> edits;
  std::vector<std::string> log;
  std::string stopsAt = {};
};

// `text` up to the line `stop`.
std::string UpTo(const std::string& text, const std::string& stop) {
  const size_t at = ("\n" + text).find("\n" + stop);
  EXPECT_NE(std::string::npos, at) << stop;
  return text.substr(0, at);
}

// The whole line of element `name` in `text`.
std::string ElementOf(const std::string& text, const std::string& name) {
  const size_t at = ("\n" + text).find("\n<" + name + ">");
  EXPECT_NE(std::string::npos, at) << name;
  return at == std::string::npos ? "" : text.substr(at, text.find('\n', at) + 1 - at);
}

// The invoice and estimate line writers, told apart by their names, records and whole text.
struct LineKind {
  std::string kind;      // "invoice" or "estimate"
  std::string lineItem;  // the host's line item interface
  LONG record;           // the transaction
  LONG item;             // the item of line 0
  const std::string& text;
  const char* open;  // the first line of the whole text
  const char* itemPrefix;
  const char* linePrefix;
  const char* balance;  // the element of the open balance, if the text has one
};

// The log lines of amounts `whats` that could not be written, in order.
std::vector<std::string> Converting(const char* prefix, std::initializer_list<const char*> whats) {
  std::vector<std::string> lines;
  for (const char* what : whats)
    lines.push_back(Entry(prefix, std::string("Failed converting amount to XML for ") + what + "." + kSkipping));
  return lines;
}

// A failure of `getter` of the line item that leaves out `element` (none for nullptr).
LineCase Optional(const LineKind& k, const std::string& getter, const std::string& words, const char* element) {
  LineCase c{{k.lineItem + "::" + getter, k.record, E_FAIL}, S_OK, {},
             {Entry(k.linePrefix, "Failed to get " + words + " from " + k.kind + " line item in LX." + kSkipping)}};
  if (element) c.edits.push_back({ElementOf(k.text, element), ""});
  return c;
}

// A failure of `getter` of the line item (of its second interface for `second`) that ends the line at
// `element`, or at its start for nullptr.
LineCase Ending(const LineKind& k, const std::string& getter, const std::string& words, const char* element,
                bool second) {
  const std::string from = k.kind + (second ? " line item(2)" : " line item");
  return {{k.lineItem + (second ? "2::" : "::") + getter, k.record, E_FAIL}, E_FAIL, {},
          {Entry(second ? k.itemPrefix : k.linePrefix, "Failed to get " + words + " from " + from + " in LX.")},
          element ? ElementOf(k.text, element) : k.open};
}

// The failures both line writers meet alike.
std::vector<LineCase> SharedLineCases(const LineKind& k) {
  const std::string lineItem = k.kind + " line item";
  const std::pair<std::string, std::string> noName{ElementOf(k.text, "ItemName"), "<ItemName></ItemName>\n"};
  return {
      {{k.lineItem + "::GetItem", k.record, E_FAIL}, S_OK, {noName},
       {Entry(k.itemPrefix, "Failed to get item from " + lineItem + " in LX.  Continuing..."),
        Entry(k.itemPrefix, "Using empty item name element because failed to get item from " + lineItem + " in LX.")}},
      {{"IItem::GetType", k.item, E_FAIL}, S_OK, {},
       {Entry(k.itemPrefix, "Failed to get type from item in LX while building " + k.kind + " item.  Continuing...")}},
      {{"IItem::GetName", k.item, E_FAIL}, S_OK, {noName},
       {Entry(k.itemPrefix, "Failed to get name from item in LX while building " + k.kind +
                                " item.  Using empty item name element.")}},
      {{k.lineItem + "2", {}, E_NOINTERFACE}, E_NOINTERFACE, {},
       {Entry(k.itemPrefix, "Failed to get " + lineItem + "(2) from LX.", "0x80004002")}, k.open},
      Ending(k, "GetIsEndOfGroup", "is end of group", nullptr, true),
      Ending(k, "GetIsPrintable", "is printable", nullptr, true),
      Ending(k, "GetQuantity", "quantity", nullptr, true),
      Optional(k, "GetDescription", "item description", "ItemDesc"),
      Optional(k, "GetUnitPrice", "unit price", "Rate"),
      Optional(k, "GetAmount", "amount", "Amount"),
      Optional(k, "GetClass", "class", "ClassName"),
      Optional(k, "GetOther1", "other 1", "Other1"),
      Optional(k, "GetOther2", "other 2", "Other2"),
      Ending(k, "GetIsTaxable", "is taxable", "IsTaxable", false),
      Ending(k, "GetPaid", "paid", "Paid", false),
      Optional(k, "GetOpenBalance", "open balance", k.balance),
  };
}

class LineWritersTest : public FormAggregateTest {
 protected:
  void SetUp() override {
    FormAggregateTest::SetUp();
    UseCompany(kFixture);
  }

  IInvoicePtr Invoice(LONG recNum) {
    IInvoicePtr invoice;
    EXPECT_EQ(S_OK, forms::LookUpInvoice(CompanyFile().Get(), recNum, "test", invoice));
    return invoice;
  }
  IEstimatePtr Estimate(LONG recNum) {
    IEstimatePtr estimate;
    EXPECT_EQ(S_OK, forms::LookUpEstimate(CompanyFile().Get(), recNum, "test", estimate));
    return estimate;
  }
  // Line `index` of `transaction`.
  template <class Lines, class Line, class Transaction>
  static ComPtr<Line> LineOf(const ComPtr<Transaction>& transaction, LONG index) {
    ComPtr<Lines> lines;
    ComPtr<Line> line;
    EXPECT_EQ(S_OK, transaction->GetLineItems(lines.ReleaseAndGetAddressOf()));
    EXPECT_EQ(S_OK, lines->GetItem(index, line.ReleaseAndGetAddressOf()));
    return line;
  }

  // The text of one invoice line; `itemName` and `amount` receive what the writer hands back.
  std::string WriteInvoiceLine(LONG index, VARIANT_BOOL customerIsTaxable, HRESULT expected,
                               OLAString& itemName, IAmountPtr& amount) {
    const auto line = LineOf<IInvoiceItemLineItems, IInvoiceItemLineItem>(Invoice(300), index);
    return Written(expected, [&](XMLBuilder& b) {
      return CInvoiceItemBuilder(line.Get()).BuildXML(b, customerIsTaxable, itemName, amount);
    });
  }
  std::string WriteInvoiceLine(LONG index, VARIANT_BOOL customerIsTaxable, HRESULT expected) {
    OLAString itemName;
    IAmountPtr amount;
    return WriteInvoiceLine(index, customerIsTaxable, expected, itemName, amount);
  }

  std::string WriteEstimateLine(LONG index, BOOL showCost, HRESULT expected) {
    const auto line = LineOf<IEstimateItemLineItems, IEstimateItemLineItem>(Estimate(400), index);
    OLAString itemName;
    IAmountPtr amount;
    return Written(expected, [&](XMLBuilder& b) {
      return CEstimateItemBuilder(line.Get()).BuildXML(b, VARIANT_TRUE, itemName, amount, showCost);
    });
  }

  // The sales tax line of invoice or estimate `recNum`, with its own sales tax item and rate.
  template <class Builder, class Transaction>
  std::string WriteTaxLine(const ComPtr<Transaction>& transaction, LONG recNum, VARIANT_BOOL customerIsTaxable,
                           HRESULT expected) {
    IItemPtr item;
    IAmountPtr rate;
    EXPECT_EQ(S_OK, transaction->GetSalesTaxItem(item.ReleaseAndGetAddressOf()));
    EXPECT_EQ(S_OK, transaction->GetSalesTaxRate(rate.ReleaseAndGetAddressOf()));
    return Written(expected, [&](XMLBuilder& b) {
      return Builder(CompanyFile().Get(), recNum).MaybeAddSalesTaxLineItem(12.345, item, rate, customerIsTaxable, b);
    });
  }

  // Each case on its own: the fault injected, the text `write` gives against `whole`, and the log.
  template <class Write>
  void CheckLineCases(const std::vector<LineCase>& cases, const std::string& whole, Write write) {
    for (const LineCase& c : cases) {
      SCOPED_TRACE(c.fault.operation);
      StartCase();
      Inject(c.fault.Get());
      const std::string text = write(c.status);
      EXPECT_EQ(c.stopsAt.empty() ? Edited(whole, c.edits) : UpTo(whole, c.stopsAt), text);
      EXPECT_EQ(c.log, LogEntries());
    }
  }

  // *showCost of estimate `recNum`'s template.
  BOOL ShowCost(LONG recNum, HRESULT expected) {
    BOOL showCost = -7;
    EXPECT_EQ(expected, CEstimateDetailBuilder(CompanyFile().Get(), recNum).CheckTemplateForHowToHandleCost(&showCost));
    return showCost;
  }
};

// ---- Invoice lines ---------------------------------------------------------------------------

TEST_F(LineWritersTest, InvoiceLineWithEveryElement) {
  OLAString itemName;
  IAmountPtr amount;
  EXPECT_EQ(kShinglesLine, WriteInvoiceLine(0, VARIANT_TRUE, S_OK, itemName, amount));
  EXPECT_STREQ("Shingles", itemName.GetText());
  Bstr amountText;
  ASSERT_TRUE(amount);
  EXPECT_EQ(S_OK, amount->GetText(amountText.Out()));
  EXPECT_EQ(MakeBstr("39.00").Length(), amountText.Length());
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(LineWritersTest, InvoiceLineOfADescriptionAlone) {
  OLAString itemName("left over");
  IAmountPtr amount;
  EXPECT_EQ(kNoteLine, WriteInvoiceLine(1, VARIANT_TRUE, S_OK, itemName, amount));
  EXPECT_STREQ("", itemName.GetText());
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(LineWritersTest, ALineIsTaxedOnlyForATaxableCustomerButKeepsItsTaxCode) {
  EXPECT_EQ(Edited(kShinglesLine, {{"<IsTaxable>Y</IsTaxable>\n", "<IsTaxable>N</IsTaxable>\n"}}),
            WriteInvoiceLine(0, VARIANT_FALSE, S_OK));
  // Only VARIANT_TRUE is the boolean's true; any other non-zero value counts as taxable too.
  EXPECT_EQ(kShinglesLine, WriteInvoiceLine(0, 1, S_OK));
}

TEST_F(LineWritersTest, InvoiceLineFailures) {
  const LineKind k{"invoice",          "IInvoiceItemLineItem", 300, 51, kShinglesLine, "<InvoiceItem>\n",
                   kInvoiceItemPrefix, kInvoiceLinePrefix,     "BalOpen"};
  const std::string customField = "Failed to get custom field from invoice line item in LX." + kSkipping;
  const std::vector<std::pair<std::string, std::string>> noCustomFields = {
      {"<CustomFieldData>\n<Index>0</Index>\n<Data>Blue</Data>\n</CustomFieldData>\n", ""},
      {"<CustomFieldData>\n<Index>1</Index>\n<Data>L&amp;R</Data>\n</CustomFieldData>\n", ""}};
  std::vector<LineCase> cases = SharedLineCases(k);
  cases.push_back({{"IClass::GetName", 5, E_FAIL}, S_OK, {{"<ClassName>Roofing &amp; Siding</ClassName>\n", ""}},
                   {Entry(kInvoiceLinePrefix,
                         "Failed to get name from class in LX while getting invoice item's class name." + kSkipping)}});
  cases.push_back(Optional(k, "GetCustomFieldCount", "custom field count", nullptr));
  cases.back().edits = noCustomFields;
  cases.push_back({{"IInvoiceItemLineItem::GetCustomField", 300, E_FAIL}, S_OK, noCustomFields,
                   {Entry(kInvoiceLinePrefix, customField), Entry(kInvoiceLinePrefix, customField)}});
  cases.push_back(Optional(k, "GetServiceDate", "service date", "ServiceDate"));
  CheckLineCases(cases, kShinglesLine, [&](HRESULT status) { return WriteInvoiceLine(0, VARIANT_TRUE, status); });
}

TEST_F(LineWritersTest, EveryProgressFigureIsOptional) {
  const struct {
    const char* getter;
    const char* words;
    const char* line;
  } figures[] = {
      {"GetCurrentPercentage", "current percentage", "<CurrentPercentage>50.00</CurrentPercentage>\n"},
      {"GetEstimateAmount", "estimate amount", "<EstimateAmount>78.00</EstimateAmount>\n"},
      {"GetEstimateQuantity", "estimate quantity", "<EstimateQuantity>24.00</EstimateQuantity>\n"},
      {"GetEstimateRate", "estimate rate", "<EstimateRate>3.25</EstimateRate>\n"},
      {"GetPriorAmount", "prior amount", "<PriorAmount>0.00</PriorAmount>\n"},
      {"GetPriorPercentage", "prior percentage", nullptr},
      {"GetPriorQuantity", "prior quantity", nullptr},
      {"GetPriorRate", "prior rate", nullptr},
      {"GetTotalPercentage", "total percentage", "<TotalPercentage>50.00</TotalPercentage>\n"},
  };
  for (const auto& figure : figures) {
    const std::string operation = std::string("IInvoiceItemLineItem2::") + figure.getter;
    SCOPED_TRACE(operation);
    StartCase();
    Inject({operation.c_str(), 300, E_FAIL});
    EXPECT_EQ(figure.line ? WithoutLines(kShinglesLine, {figure.line}) : kShinglesLine,
              WriteInvoiceLine(0, VARIANT_TRUE, S_OK));
    EXPECT_EQ(std::vector<std::string>{Entry(kProgressPrefix, std::string("Failed to get ") + figure.words +
                                                                  " from invoice line item(2) in LX." + kSkipping)},
              LogEntries());
  }
}

TEST_F(LineWritersTest, AmountsThatCannotBeWrittenAreLeftOutOneByOne) {
  Inject({"IAmount::GetText", 300, E_FAIL});
  EXPECT_EQ(WithoutLines(kShinglesLine,
                         {"<Quantity>12.00</Quantity>\n", "<Rate>3.25</Rate>\n", "<Amount>39.00</Amount>\n",
                          "<BalOpen>39.00</BalOpen>\n", "<CurrentPercentage>50.00</CurrentPercentage>\n",
                          "<EstimateAmount>78.00</EstimateAmount>\n", "<EstimateQuantity>24.00</EstimateQuantity>\n",
                          "<EstimateRate>3.25</EstimateRate>\n", "<PriorAmount>0.00</PriorAmount>\n",
                          "<TotalPercentage>50.00</TotalPercentage>\n"}),
            WriteInvoiceLine(0, VARIANT_TRUE, S_OK));
  std::vector<std::string> expected = Converting(kInvoiceLinePrefix, {"quantity", "rate", "amount", "balance open"});
  for (const std::string& line :
       Converting(kProgressPrefix, {"current percentage", "estimate amount", "estimate quantity", "estimate rate",
                                    "prior amount", "prior percentage", "prior quantity", "prior rate",
                                    "total percentage"}))
    expected.push_back(line);
  EXPECT_EQ(expected, LogEntries());
}

// ---- Estimate lines --------------------------------------------------------------------------

TEST_F(LineWritersTest, EstimateLinesShowTheirCostOnlyWhenTheTemplateDoes) {
  EXPECT_EQ(kCrewDayLine, WriteEstimateLine(0, TRUE, S_OK));
  EXPECT_EQ(WithoutLines(kCrewDayLine, {"<Rate>40.00</Rate>\n", "<MarkupLineItem>30.00</MarkupLineItem>\n"}),
            WriteEstimateLine(0, FALSE, S_OK));
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(LineWritersTest, EstimateLinesWithoutQuantityOrAmount) {
  const std::string describesOnly =
      "<EstimateItem>\n<ItemName></ItemName>\n<ItemDesc>Weather permitting</ItemDesc>\n<ClassName></ClassName>\n"
      "<Other1></Other1>\n<Other2></Other2>\n<IsPrintable>Y</IsPrintable>\n<IsTaxable>N</IsTaxable>\n"
      "<IsEndOfGroup>N</IsEndOfGroup>\n<Paid>N</Paid>\n<NominalLineItem>0</NominalLineItem>\n"
      "<TaxableFlag> </TaxableFlag>\n</EstimateItem>\n";
  EXPECT_EQ(describesOnly, WriteEstimateLine(1, TRUE, S_OK));
  const std::string lumpSum =
      "<EstimateItem>\n<ItemName>Labor</ItemName>\n<ItemDesc>Lump sum</ItemDesc>\n<Rate>25.00</Rate>\n"
      "<Amount>25.00</Amount>\n<ClassName></ClassName>\n<Other1></Other1>\n<Other2></Other2>\n"
      "<IsPrintable>Y</IsPrintable>\n<IsTaxable>Y</IsTaxable>\n<IsEndOfGroup>N</IsEndOfGroup>\n<Paid>N</Paid>\n"
      "<NominalLineItem>0</NominalLineItem>\n<TaxableFlag>T</TaxableFlag>\n</EstimateItem>\n";
  EXPECT_EQ(lumpSum, WriteEstimateLine(2, TRUE, S_OK));
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(LineWritersTest, EstimateLineFailures) {
  const LineKind k{"estimate",          "IEstimateItemLineItem", 400, 50, kCrewDayLine, "<EstimateItem>\n",
                   kEstimateItemPrefix, kEstimateLinePrefix,     nullptr};
  std::vector<LineCase> cases = SharedLineCases(k);
  for (const auto& [getter, words] : {std::pair{"GetIsAmountZero", "line amount is zero"},
                                      std::pair{"GetIsQuantityBlank", "quantity is blank"}})
    cases.push_back({{std::string("IEstimateItemLineItem::") + getter, 400, E_FAIL}, S_OK, {},
                     {Entry(kEstimateLinePrefix,
                            std::string("Failed determining if ") + words + " in LX.  Continuing...")}});
  cases.push_back(Optional(k, "GetMarkup", "markup", "MarkupLineItem"));
  cases.push_back(Optional(k, "GetNominalTotal", "nominal total", "NominalLineItem"));
  cases.push_back({{"IAmount2::GetDouble", 400, E_FAIL}, S_OK, {{"<NominalLineItem>120.4</NominalLineItem>\n", ""}},
                   {Entry(kEstimateLinePrefix,
                         "Failed to get double from amount in LX when getting nominal line item." + kSkipping)}});
  cases.push_back(Optional(k, "GetCustomField", "custom field", nullptr));
  cases.back().edits = {{"<CustomFieldData>\n<Index>0</Index>\n<Data>x</Data>\n</CustomFieldData>\n", ""}};
  CheckLineCases(cases, kCrewDayLine, [&](HRESULT status) { return WriteEstimateLine(0, TRUE, status); });
}

TEST_F(LineWritersTest, EstimateAmountsThatCannotBeWrittenAreLeftOut) {
  Inject({"IAmount::GetText", 400, E_FAIL});
  EXPECT_EQ(WithoutLines(kCrewDayLine, {"<Quantity>3.00</Quantity>\n", "<Rate>40.00</Rate>\n",
                                        "<Amount>150.00</Amount>\n", "<MarkupLineItem>30.00</MarkupLineItem>\n"}),
            WriteEstimateLine(0, TRUE, S_OK));
  // The empty open balance is no exception: its text cannot be read either.
  EXPECT_EQ(Converting(kEstimateLinePrefix, {"quantity", "rate", "amount", "balance open", "markup line item"}),
            LogEntries());
}

// ---- Sales-tax line rule ---------------------------------------------------------------------

TEST_F(LineWritersTest, SalesTaxLineOnlyForATaxableCustomerAndATemplateThatPrintsItAsALine) {
  EXPECT_EQ(kInvoiceTaxLine, (WriteTaxLine<CInvoiceDetailBuilder>(Invoice(300), 300, VARIANT_TRUE, S_OK)));
  EXPECT_EQ("", (WriteTaxLine<CInvoiceDetailBuilder>(Invoice(300), 300, VARIANT_FALSE, S_FALSE)));
  EXPECT_EQ("", (WriteTaxLine<CInvoiceDetailBuilder>(Invoice(301), 301, VARIANT_TRUE, S_FALSE)));
  EXPECT_EQ(kEstimateTaxLine, (WriteTaxLine<CEstimateDetailBuilder>(Estimate(400), 400, VARIANT_TRUE, S_OK)));
  EXPECT_EQ("", (WriteTaxLine<CEstimateDetailBuilder>(Estimate(401), 401, VARIANT_TRUE, S_FALSE)));
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(LineWritersTest, SalesTaxLineWithoutSalesTaxItem) {
  // Estimate 402 has no sales tax item: the host gives the empty item, record number 0.
  EXPECT_EQ("", (WriteTaxLine<CEstimateDetailBuilder>(Estimate(402), 402, VARIANT_TRUE, S_FALSE)));
  EXPECT_TRUE(LogEntries().empty());
  CInvoiceDetailBuilder detail(CompanyFile().Get(), 300);
  XMLBuilder builder(0, 4096);
  EXPECT_EQ(E_POINTER,
            ErrorRaisedBy([&] { detail.MaybeAddSalesTaxLineItem(1, nullptr, nullptr, VARIANT_TRUE, builder); }));
}

TEST_F(LineWritersTest, SalesTaxLineFailures) {
  const auto failed = [](const char* operation, LONG record, const std::string& message) {
    return LineCase{{operation, record, E_FAIL}, E_FAIL, {}, {Entry(kInvoiceTaxPrefix, message)}};
  };
  const std::string detail = " in LX while building invoice detail.";
  const std::string taxLine = " in LX while building invoice's sales tax line item.";
  const LineCase cases[] = {
      failed("IItem::GetRecNum", 60, "Failed to get record number from sales tax item" + detail),
      failed("IInvoice::GetCustomStyle", 300, "Failed to get custom style from invoice in LX."),
      failed("IStyle::GetFields", 1, "Failed to get fields from style" + detail),
      failed("IStyleFields::GetCount", 1, "Failed to get count from style fields list" + detail),
      failed("IStyleFields::GetItem", 1, "Failed to get ID from style field" + detail),
      failed("IStyleField::GetID", 1, "Failed to get ID from style field" + detail),
      failed("IStyleField::GetOnPrint", 1, "Failed to get on print from style field" + detail),
      failed("IItem::GetName", 60, "Failed to get name from sales tax item" + taxLine),
      {{"IItem::GetLongDescription", 60, E_FAIL}, S_OK, {{"<ItemDesc>State sales tax &lt;5%&gt;</ItemDesc>\n", ""}},
       {Entry(kInvoiceTaxPrefix, "Failed to get long description from sales tax item" + taxLine + kSkipping)}},
      {{"IAmount::GetText", 300, E_FAIL}, S_OK, {{"<Rate>5.00</Rate>\n", ""}},
       {Entry(kInvoiceTaxPrefix,
             "Failed converting amount to XML for rate while building invoice's sales tax line item." + kSkipping)}},
  };
  for (const LineCase& c : cases) {
    SCOPED_TRACE(c.fault.operation);
    StartCase();
    const IInvoicePtr invoice = Invoice(300);
    Inject(c.fault.Get());
    const std::string text = WriteTaxLine<CInvoiceDetailBuilder>(invoice, 300, VARIANT_TRUE, c.status);
    EXPECT_EQ(SUCCEEDED(c.status) ? Edited(kInvoiceTaxLine, c.edits) : "", text);
    EXPECT_EQ(c.log, LogEntries());
  }
}

TEST_F(LineWritersTest, EstimateSalesTaxLineFailuresSpeakOfTheEstimate) {
  StartCase();
  const IEstimatePtr estimate = Estimate(400);
  Inject({"IEstimate::GetCustomStyle", 400, E_FAIL});
  EXPECT_EQ("", WriteTaxLine<CEstimateDetailBuilder>(estimate, 400, VARIANT_TRUE, E_FAIL));
  StartCase();
  Inject({"IItem::GetLongDescription", 60, E_FAIL});
  EXPECT_EQ(WithoutLines(kEstimateTaxLine, {"<ItemDesc>State sales tax &lt;5%&gt;</ItemDesc>\n"}),
            WriteTaxLine<CEstimateDetailBuilder>(estimate, 400, VARIANT_TRUE, S_OK));
  EXPECT_EQ((std::vector<std::string>{
                Entry(kEstimateTaxPrefix, "Failed to get long description from sales tax item in LX while building "
                                          "estimate's sales tax line item." + kSkipping)}),
            LogEntries());
}

// ---- The estimate template's cost check ------------------------------------------------------

TEST_F(LineWritersTest, CostShowsOnlyWhenTheTemplatePrintsRateAndMarkup) {
  EXPECT_EQ(TRUE, ShowCost(400, S_OK));
  EXPECT_EQ(FALSE, ShowCost(401, S_OK));
  EXPECT_EQ(FALSE, ShowCost(402, S_OK));
  EXPECT_TRUE(LogEntries().empty());
}

TEST_F(LineWritersTest, CostCheckFailures) {
  const struct {
    LONG estimate;
    HostFault fault;
    std::string log;
  } cases[] = {
      {400, {"IEstimate::GetCustomStyle", 400, E_FAIL}, "Failed to get custom style from estimate in LX."},
      {400, {"IStyle::GetTable", 1, E_FAIL}, "Failed to get table from style in LX."},
      {400, {"IStyleTable::GetColumns", 1, E_FAIL}, "Failed to get columns from style table in LX."},
      {400, {"IStyleColumns::GetCount", 1, E_FAIL}, "Failed to get count from style columns list in LX."},
      {400, {"IStyleColumn::GetID", 1, E_FAIL},
       "Failed get ID from style column in LX while building estimate detail."},
      {400, {"IStyleColumn::GetOnPrint", 1, E_FAIL},
       "Failed to get on print from style rate column in LX while building estimate detail."},
      {401, {"IStyleColumn::GetOnPrint", 2, E_FAIL},
       "Failed to get on print from style markup column in LX while building estimate detail."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.fault.operation);
    StartCase();
    Inject(c.fault);
    EXPECT_EQ(FALSE, ShowCost(c.estimate, E_FAIL));
    EXPECT_EQ(std::vector<std::string>{Entry(kCostPrefix, c.log)}, LogEntries());
  }
}

TEST_F(LineWritersTest, CostCheckOfAnUnknownEstimate) {
  Faults().MakeAbsent(refhost::ListKind::Estimates, 400);
  EXPECT_EQ(FALSE, ShowCost(400, LX_E_NOTFOUND));
  EXPECT_EQ(std::vector<std::string>{Entry("Parcelon:CEstimateDetailBuilder::InitEstimatePtr(void): ",
                                          "Failed to get item from estimates in LX.", "0x80041a00")},
            LogEntries());
  EXPECT_EQ(E_POINTER, CEstimateDetailBuilder(CompanyFile().Get(), 400).CheckTemplateForHowToHandleCost(nullptr));
}

}  // namespace
}  // namespace parcelon::test
