#include "forms/StyleItem.h"

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "clienttools/OLAString.h"
#include "diagnostics/LogIfFailed.h"
#include "forms/EnumToString.h"
#include "forms/FormParts.h"
#include "platform/Bstr.h"

using parcelon::forms::Required;

namespace {

constexpr char kItemPrefix[] = "Parcelon:CStyleItemBuilder::BuildXML(XMLBuilder&, VARIANT_BOOL)";
constexpr char kFieldPrefix[] = "Parcelon:CStyleFieldBuilder::BuildXML(XMLBuilder&)";
constexpr char kFieldLabelPrefix[] = "Parcelon:CStyleFieldLabelBuilder::BuildXML(XMLBuilder&)";
constexpr char kFieldDataPrefix[] = "Parcelon:CStyleFieldDataBuilder::BuildXML(XMLBuilder&)";
constexpr char kTablePrefix[] = "Parcelon:CStyleTableBuilder::BuildXML(XMLBuilder&, VARIANT_BOOL)";
constexpr char kColumnPrefix[] = "Parcelon:CStyleColumnBuilder::BuildXML(XMLBuilder&, long&)";
constexpr char kColumnLabelPrefix[] = "Parcelon:CStyleColumnLabelBuilder::BuildXML(XMLBuilder&)";
constexpr char kColumnDataPrefix[] = "Parcelon:CStyleColumnDataBuilder::BuildXML(XMLBuilder&)";
constexpr char kFontPrefix[] = "Parcelon:CStyleFontBuilder::BuildXML(XMLBuilder&)";

// The identifier the tax-flag column is written with; the host numbers no such field.
constexpr char kTaxFlagId[] = "StyleTaxFlag";
constexpr char kTaxFlagFontName[] = "Arial";

// One required value of a host object written as one element: the element, the getter and the
// message of a failed read.
template <class Object, class Value>
struct ElementRead {
  const char* element;
  HRESULT (STDMETHODCALLTYPE Object::*get)(Value*);
  const char* failed;
};
template <class Object>
using NumberRead = ElementRead<Object, LONG>;
template <class Object>
using FlagRead = ElementRead<Object, VARIANT_BOOL>;

void AddValue(XMLBuilder& builder, XmlName name, LONG value) { builder.AddLongElement(name, value); }
void AddValue(XMLBuilder& builder, XmlName name, VARIANT_BOOL value) { builder.AddBoolElement(name, value); }

// Reads and writes each of `reads` in order; the first failure is logged and returned.
template <class Object, class Value, size_t Count>
HRESULT AddElements(XMLBuilder& builder, std::type_identity_t<Object>* object,
                    const ElementRead<Object, Value> (&reads)[Count], const char* prefix) {
  for (const ElementRead<Object, Value>& read : reads) {
    Value value{};
    RETURN_IF_FAILED_LOG((object->*read.get)(&value), prefix, read.failed);
    AddValue(builder, read.element, value);
  }
  return S_OK;
}

using EnumWord = int32_t (CLXEnumToString::*)(int32_t, OLAString&) const;

// The gateway's word for a host enumeration value; empty when it has none.
OLAString Word(EnumWord toString, LONG value) {
  OLAString word;
  (CLXEnumToString().*toString)(value, word);
  return word;
}

// Opens `element` with the one attribute `name`, written even when its value is empty.
void OpenWithAttribute(XMLBuilder& builder, XmlName element, const char* name, const OLAString& value) {
  const OLAString attributes[] = {name, value, ""};
  builder.OpenAggregateWithAttributes(element, attributes);
}

// ---- Label and data areas -------------------------------------------------------------------

// The messages of one kind of label or data area.
struct AreaWording {
  const char* prefix;
  const char* horzTextAlign;
  const char* vertTextAlign;
  const char* pagesPrintedOn;
  const char* border;
  const char* multiLine;
  bool multiLineIsOptional;
  const char* usesAscent;
  const char* font;  // optional
  const char* buildFont;
};

// What a data area adds.
struct DataWording {
  const char* dataType;
  const char* precision;
  const char* showCurrency;
  const char* showZeroAmts;
  const char* taxable;
};

const AreaWording kFieldLabelWording = {
    kFieldLabelPrefix,
    "Failed to get horizontal text alignment from style field label in LX.",
    "Failed to get vertical text alignment from style field label in LX.",
    "Failed to get pages printed on from style field label in LX.",
    "Failed to get border from style field label in LX.",
    "Failed to get multi line from style field label in LX.  Skipping this optional element.",
    true,
    "Failed to get uses ascent from style field label in LX.",
    "Failed to get font from style field label in LX.  Skipping this optional element.",
    "Failed to build style font aggregate XML for style field label.",
};

const AreaWording kFieldDataWording = {
    kFieldDataPrefix,
    "Failed to get horizontal text alignment from style field data in LX.",
    "Failed to get vertical text alignment from style field data in LX.",
    "Failed to get pages printed on from style field data in LX.",
    "Failed to get border from style field data in LX.",
    "Failed to get multi line from style field data in LX.",
    false,
    "Failed to get uses ascent from style field data in LX.",
    "Failed to get font from style field data in LX.  Skipping this optional element.",
    "Failed to build style font aggregate XML for style field data.",
};

const AreaWording kColumnLabelWording = {
    kColumnLabelPrefix,
    "Failed to get horizontal text alignment from style column label in LX.",
    "Failed to get vertical text alignment from style column label in LX.",
    "Failed to get pages printed on from style column label in LX.",
    "Failed to get border from style column label in LX.",
    "Failed to get multi line from style column label in LX.  Skipping this optional element.",
    true,
    "Failed to get uses ascent from style column label in LX.",
    "Failed to get font from style column label in LX.  Skipping this optional element.",
    "Failed to build style font aggregate XML for style column label.",
};

const AreaWording kColumnDataWording = {
    kColumnDataPrefix,
    "Failed to get horizontal text alignment from style column data in LX.",
    "Failed to get vertical text alignment from style column data in LX.",
    "Failed to get pages printed on from style column data in LX.",
    "Failed to get border from style column data in LX.",
    "Failed to get multi line from style column data in LX.",
    false,
    "Failed to get uses ascent from style column data in LX.",
    "Failed to get font from style column data in LX.  Skipping this optional element.",
    "Failed to build style font aggregate XML for style column data.",
};

const DataWording kFieldDataValues = {
    "Failed to get data type from style field data in LX.",
    "Failed to get precision from style field data in LX.",
    "Failed to get show currency from style field data in LX.",
    "Failed to get show zero amounts from style field data in LX.",
    "Failed to get taxable from style field data in LX.",
};

const DataWording kColumnDataValues = {
    "Failed to get data type from style column data in LX.",
    "Failed to get precision from style column data in LX.",
    "Failed to get show currency from style column data in LX.",
    "Failed to get show zero amounts from style column data in LX.",
    "Failed to get taxable from style column data in LX.",
};

// The place and size of a field's label and data on the page.
const NumberRead<IStyleFieldLabel> kFieldLabelPlace[] = {
    {"X", &IStyleFieldLabel::GetX, "Failed to get x coordinate from style field label in LX."},
    {"Y", &IStyleFieldLabel::GetY, "Failed to get y coordinate from style field label in LX."},
    {"Width", &IStyleFieldLabel::GetWidth, "Failed to get width from style field label in LX."},
    {"Height", &IStyleFieldLabel::GetHeight, "Failed to get height from style field label in LX."},
};

// The doubled points of the coordinates' messages are the host's own.
const NumberRead<IStyleFieldData> kFieldDataPlace[] = {
    {"X", &IStyleFieldData::GetX, "Failed to get x coordinate from style field data in LX.."},
    {"Y", &IStyleFieldData::GetY, "Failed to get y coordinate from style field data in LX.."},
    {"Width", &IStyleFieldData::GetWidth, "Failed to get width from style field data in LX."},
    {"Height", &IStyleFieldData::GetHeight, "Failed to get height from style field data in LX."},
};

// One attribute of an area's info aggregate: its name, getter and word table.
struct AttributeRead {
  const char* name;
  HRESULT (STDMETHODCALLTYPE IStyleTextArea::*get)(LONG*);
  EnumWord toString;
  const char* AreaWording::*failed;
};

const AttributeRead kInfoAttributes[] = {
    {"horzTextAlign", &IStyleTextArea::GetHorzTextAlign, &CLXEnumToString::AlignmentToString,
     &AreaWording::horzTextAlign},
    // The word only: the flag bit the host keeps beside the vertical alignment has no place here.
    {"vertTextAlign", &IStyleTextArea::GetVertTextAlign, &CLXEnumToString::VertAlignToString,
     &AreaWording::vertTextAlign},
    {"pagesPrintedOn", &IStyleTextArea::GetPagesPrintedOn, &CLXEnumToString::PrintOnPagesToString,
     &AreaWording::pagesPrintedOn},
    {"border", &IStyleTextArea::GetBorder, &CLXEnumToString::BorderToString, &AreaWording::border},
};

// Opens the info aggregate `element` of `area` with its alignment, pages and border attributes.
HRESULT OpenAreaInfo(XMLBuilder& builder, XmlName element, IStyleTextArea* area, const AreaWording& wording) {
  OLAString attributes[2 * std::size(kInfoAttributes) + 1];
  OLAString* next = attributes;
  for (const AttributeRead& read : kInfoAttributes) {
    LONG value = 0;
    RETURN_IF_FAILED_LOG((area->*read.get)(&value), wording.prefix, wording.*read.failed);
    (next++)->SetText(read.name);
    *next++ = Word(read.toString, value);
  }
  builder.OpenAggregateWithAttributes(element, attributes);
  return S_OK;
}

// "MultiLine", "UsesAscent" and "StyleFont" of `area`, then the info aggregate `element` is
// closed. `fontName`, when given, replaces the font's own name.
HRESULT CloseAreaInfo(XMLBuilder& builder, XmlName element, IStyleTextArea* area, const AreaWording& wording,
                      const char* fontName = nullptr) {
  VARIANT_BOOL multiLine = VARIANT_FALSE;
  const HRESULT multiLineRead = area->GetMultiLine(&multiLine);
  if (wording.multiLineIsOptional) {
    if (SUCCEEDED(LOG_IF_FAILED(multiLineRead, wording.prefix, wording.multiLine)))
      builder.AddBoolElement("MultiLine", multiLine);
  } else {
    RETURN_IF_FAILED_LOG(multiLineRead, wording.prefix, wording.multiLine);
    builder.AddBoolElement("MultiLine", multiLine);
  }

  VARIANT_BOOL usesAscent = VARIANT_FALSE;
  RETURN_IF_FAILED_LOG(area->GetUsesAscent(&usesAscent), wording.prefix, wording.usesAscent);
  builder.AddBoolElement("UsesAscent", usesAscent);

  IStyleFontPtr font;
  if (SUCCEEDED(LOG_IF_FAILED(area->GetFont(font.ReleaseAndGetAddressOf()), wording.prefix, wording.font)))
    RETURN_IF_FAILED_LOG(CStyleFontBuilder(Required(font), fontName).BuildXML(builder), wording.prefix,
                         wording.buildFont);
  builder.CloseAggregate(element);
  return S_OK;
}

// Opens the data aggregate `element` with the area's data type as its "type".
HRESULT OpenDataArea(XMLBuilder& builder, XmlName element, IStyleDataArea* data, const AreaWording& wording,
                     const DataWording& values) {
  LONG type = 0;
  RETURN_IF_FAILED_LOG(data->GetDataType(&type), wording.prefix, values.dataType);
  OpenWithAttribute(builder, element, "type", Word(&CLXEnumToString::ColumnTypeToString, type));
  return S_OK;
}

// "AmountDisplayHints": "Precision", "ShowCurrency", "ShowZeroAmts", "Taxable".
HRESULT AddAmountHints(XMLBuilder& builder, IStyleDataArea* data, const AreaWording& wording,
                       const DataWording& values) {
  builder.OpenAggregate("AmountDisplayHints");
  const NumberRead<IStyleDataArea> numbers[] = {{"Precision", &IStyleDataArea::GetPrecision, values.precision}};
  const FlagRead<IStyleDataArea> flags[] = {
      {"ShowCurrency", &IStyleDataArea::GetShowCurrency, values.showCurrency},
      {"ShowZeroAmts", &IStyleDataArea::GetShowZeroAmts, values.showZeroAmts},
      {"Taxable", &IStyleDataArea::GetTaxable, values.taxable},
  };
  RETURN_IF_FAILED(AddElements(builder, data, numbers, wording.prefix));
  RETURN_IF_FAILED(AddElements(builder, data, flags, wording.prefix));
  builder.CloseAggregate("AmountDisplayHints");
  return S_OK;
}

// ---- Fields and columns ---------------------------------------------------------------------

// A field's flags after "OnPrint", which is read ahead of the others.
const FlagRead<IStyleField> kFieldOnScreen[] = {
    {"OnScreen", &IStyleField::GetOnScreen, "Failed to get on screen from style field in LX."},
};
const FlagRead<IStyleField> kFieldUses[] = {
    {"UsesLabel", &IStyleField::GetUsesLabel, "Failed to get uses label from style field in LX."},
    {"UsesData", &IStyleField::GetUsesData, "Failed to get uses data from style field in LX."},
};

const FlagRead<IStyleColumn> kColumnFlags[] = {
    {"OnScreen", &IStyleColumn::GetOnScreen, "Failed to get on screen from style column in LX."},
    {"OnPrint", &IStyleColumn::GetOnPrint, "Failed to get on print from style column in LX."},
    {"UsesLabel", &IStyleColumn::GetUsesLabel, "Failed to get uses label from style column in LX."},
    {"UsesData", &IStyleColumn::GetUsesData, "Failed to get uses data from style column in LX."},
};

const NumberRead<IStyleColumn> kColumnOrder[] = {
    {"Order", &IStyleColumn::GetOrder, "Failed to get order from style column in LX."},
};

const FlagRead<IStyleFont> kFontFlags[] = {
    {"Bold", &IStyleFont::GetBold, "Failed to get bold from style font in LX."},
    {"Italic", &IStyleFont::GetItalic, "Failed to get italic from style font in LX."},
    {"UnderLine", &IStyleFont::GetUnderline, "Failed to get underline from style font in LX."},
    {"StrikeThrough", &IStyleFont::GetStrikeThrough, "Failed to get strike through from style font in LX."},
};

const NumberRead<IStyleFont> kFontNumbers[] = {
    {"PtSize", &IStyleFont::GetSize, "Failed to get size from style font in LX."},
    {"RGBColor", &IStyleFont::GetColor, "Failed to get color from style font in LX."},
};

const FlagRead<IStyle> kStylePredefined[] = {
    {"Predefined", &IStyle::GetPredefined, "Failed to get predefined from style in LX."},
};

const NumberRead<IStyle> kStylePage[] = {
    {"Width", &IStyle::GetWidth, "Failed to get width from style in LX."},
    {"Height", &IStyle::GetHeight, "Failed to get height from style in LX."},
    {"LeftMargin", &IStyle::GetLeftMargin, "Failed to get left margin from style in LX."},
    {"RightMargin", &IStyle::GetRightMargin, "Failed to get right margin from style in LX."},
    {"TopMargin", &IStyle::GetTopMargin, "Failed to get top margin from style in LX."},
    {"BottomMargin", &IStyle::GetBottomMargin, "Failed to get bottom margin from style in LX."},
};

const NumberRead<IStyleTable> kTableHeights[] = {
    {"Height", &IStyleTable::GetHeight, "Failed to get height from style table in LX."},
    {"LabelHeight", &IStyleTable::GetLabelHeight, "Failed to get label height from style table in LX."},
};

// A width that the host's values may have pushed outside LONG, held to its range.
LONG ClampedWidth(int64_t width) {
  return LONG(std::clamp<int64_t>(width, 0, INT32_MAX));
}

// The tax-flag column of a table whose host keeps none: shown and printed without a label, a
// centred string in Arial 10 after the host's columns, as wide as the room they leave.
void AddFixedTaxFlagColumn(XMLBuilder& builder, LONG order, LONG width) {
  OpenWithAttribute(builder, "StyleColumn", "id", kTaxFlagId);
  builder.AddBoolElement("OnScreen", VARIANT_TRUE);
  builder.AddBoolElement("OnPrint", VARIANT_TRUE);
  builder.AddBoolElement("UsesLabel", VARIANT_FALSE);
  builder.AddBoolElement("UsesData", VARIANT_TRUE);
  builder.AddLongElement("Order", order);
  builder.AddLongElement("Width", width);
  OpenWithAttribute(builder, "StyleColumnData", "type", Word(&CLXEnumToString::ColumnTypeToString, ctString));
  const OLAString info[] = {"horzTextAlign", Word(&CLXEnumToString::AlignmentToString, haCenter),
                            "vertTextAlign", Word(&CLXEnumToString::VertAlignToString, vaTop),
                            "pagesPrintedOn", Word(&CLXEnumToString::PrintOnPagesToString, popAll),
                            "border", Word(&CLXEnumToString::BorderToString, bdNone),
                            ""};
  builder.OpenAggregateWithAttributes("StyleColumnInfo", info);
  builder.AddBoolElement("MultiLine", VARIANT_FALSE);
  builder.AddBoolElement("UsesAscent", VARIANT_FALSE);
  builder.OpenAggregate("StyleFont");
  builder.AddElement("Name", OLAString(kTaxFlagFontName));
  builder.AddLongElement("PtSize", 10);
  builder.AddLongElement("RGBColor", 0);
  for (const FlagRead<IStyleFont>& flag : kFontFlags) builder.AddBoolElement(flag.element, VARIANT_FALSE);
  builder.CloseAggregate("StyleFont");
  builder.CloseAggregate("StyleColumnInfo");
  builder.CloseAggregate("StyleColumnData");
  builder.CloseAggregate("StyleColumn");
}

// The tax-flag column: the host's, else the fixed one.
HRESULT AddTaxFlagColumn(XMLBuilder& builder, const IStyleTablePtr& table, LONG order, int64_t roomLeft) {
  IStyleColumnPtr column;
  // A table without a second version has no tax-flag column of its own.
  IStyleTable2Ptr table2;
  if (SUCCEEDED(table.As(table2)) && table2) {
    if (FAILED(LOG_IF_FAILED(table2->GetTaxFlagColumn(column.ReleaseAndGetAddressOf()), kTablePrefix,
                             "Failed to get tax flag column from style table in LX.  Skipping this optional element.")))
      return S_OK;
  }
  if (!column) {
    AddFixedTaxFlagColumn(builder, order, ClampedWidth(roomLeft));
    return S_OK;
  }
  long width = 0;
  RETURN_IF_FAILED_LOG(CStyleColumnBuilder::ForTaxFlag(column.Get()).BuildXML(builder, width), kTablePrefix,
                       "Failed to build style column aggregate XML.");
  return S_OK;
}

}  // namespace

// ---- CStyleItemBuilder ----------------------------------------------------------------------

HRESULT CStyleItemBuilder::BuildXML(XMLBuilder& builder, VARIANT_BOOL withTaxFlag) {
  IStyle* const style = Required(style_);
  LONG type = 0;
  RETURN_IF_FAILED_LOG(style->GetType(&type), kItemPrefix, "Failed to get type from style in LX.");
  OpenWithAttribute(builder, "StyleItem", "type", Word(&CLXEnumToString::TemplateTypeToString, type));

  LONG recNum = 0;
  RETURN_IF_FAILED_LOG(style->GetRecNum(&recNum), kItemPrefix, "Failed to get record number from style in LX.");
  builder.AddLongElement("ClientID", recNum);
  Bstr name;
  RETURN_IF_FAILED_LOG(style->GetFullName(name.Out()), kItemPrefix, "Failed to get full name from style in LX.");
  builder.AddElement("Name", name.Get());
  RETURN_IF_FAILED(AddElements(builder, style, kStylePredefined, kItemPrefix));
  RETURN_IF_FAILED(AddElements(builder, style, kStylePage, kItemPrefix));

  IStyleFieldsPtr fields;
  RETURN_IF_FAILED_LOG(style->GetFields(fields.ReleaseAndGetAddressOf()), kItemPrefix,
                       "Failed to get fields from style in LX.");
  LONG count = 0;
  RETURN_IF_FAILED_LOG(Required(fields)->GetCount(&count), kItemPrefix,
                       "Failed to get count from style fields list in LX.");
  for (LONG index = 0; index < count; ++index) {
    IStyleFieldPtr field;
    RETURN_IF_FAILED_LOG(fields->GetItem(index, field.ReleaseAndGetAddressOf()), kItemPrefix,
                         "Failed to get item from style fields list in LX.");
    RETURN_IF_FAILED_LOG(CStyleFieldBuilder(Required(field)).BuildXML(builder), kItemPrefix,
                         "Failed to build style field aggregate XML.");
  }

  IStyleTablePtr table;
  RETURN_IF_FAILED_LOG(style->GetTable(table.ReleaseAndGetAddressOf()), kItemPrefix,
                       "Failed to get table from style in LX.");
  RETURN_IF_FAILED_LOG(CStyleTableBuilder(Required(table)).BuildXML(builder, withTaxFlag), kItemPrefix,
                       "Failed to build style table aggregate XML.");
  builder.CloseAggregate("StyleItem");
  return S_OK;
}

// ---- CStyleFieldBuilder ---------------------------------------------------------------------

HRESULT CStyleFieldBuilder::BuildXML(XMLBuilder& builder) {
  IStyleField* const field = Required(field_);
  // The on-print flag is read ahead of the identifier, once: the aggregate opens only when both
  // could be read, and "OnPrint" is written from this reading.
  VARIANT_BOOL onPrint = VARIANT_FALSE;
  RETURN_IF_FAILED_LOG(field->GetOnPrint(&onPrint), kFieldPrefix, "Failed to get on print from style field in LX.");
  LONG id = 0;
  RETURN_IF_FAILED_LOG(field->GetID(&id), kFieldPrefix, "Failed to get ID from style field in LX.");
  OpenWithAttribute(builder, "StyleField", "id", Word(&CLXEnumToString::StyleFieldToString, id));

  RETURN_IF_FAILED(AddElements(builder, field, kFieldOnScreen, kFieldPrefix));
  builder.AddBoolElement("OnPrint", onPrint);
  RETURN_IF_FAILED(AddElements(builder, field, kFieldUses, kFieldPrefix));

  IStyleFieldLabelPtr label;
  RETURN_IF_FAILED_LOG(field->GetLabel(label.ReleaseAndGetAddressOf()), kFieldPrefix,
                       "Failed to get label from style field in LX.");
  RETURN_IF_FAILED_LOG(CStyleFieldLabelBuilder(Required(label)).BuildXML(builder), kFieldPrefix,
                       "Failed to build style field label aggregate XML.");
  IStyleFieldDataPtr data;
  RETURN_IF_FAILED_LOG(field->GetData(data.ReleaseAndGetAddressOf()), kFieldPrefix,
                       "Failed to get data from style field in LX.");
  RETURN_IF_FAILED_LOG(CStyleFieldDataBuilder(Required(data)).BuildXML(builder), kFieldPrefix,
                       "Failed to build style field data aggregate XML.");
  builder.CloseAggregate("StyleField");
  return S_OK;
}

// ---- Field label and data -------------------------------------------------------------------

HRESULT CStyleFieldLabelBuilder::BuildXML(XMLBuilder& builder) {
  IStyleFieldLabel* const label = Required(label_);
  builder.OpenAggregate("StyleFieldLabel");
  Bstr text;
  RETURN_IF_FAILED_LOG(label->GetLabel(text.Out()), kFieldLabelPrefix,
                       "Failed to get label from style field label in LX.");
  builder.AddElement("StyleFieldLabelText", text.Get());
  RETURN_IF_FAILED(OpenAreaInfo(builder, "StyleFieldInfo", label, kFieldLabelWording));
  RETURN_IF_FAILED(AddElements(builder, label, kFieldLabelPlace, kFieldLabelPrefix));
  RETURN_IF_FAILED(CloseAreaInfo(builder, "StyleFieldInfo", label, kFieldLabelWording));
  builder.CloseAggregate("StyleFieldLabel");
  return S_OK;
}

HRESULT CStyleFieldDataBuilder::BuildXML(XMLBuilder& builder) {
  IStyleFieldData* const data = Required(data_);
  RETURN_IF_FAILED(OpenDataArea(builder, "StyleFieldData", data, kFieldDataWording, kFieldDataValues));
  RETURN_IF_FAILED(OpenAreaInfo(builder, "StyleFieldInfo", data, kFieldDataWording));
  RETURN_IF_FAILED(AddElements(builder, data, kFieldDataPlace, kFieldDataPrefix));
  RETURN_IF_FAILED(CloseAreaInfo(builder, "StyleFieldInfo", data, kFieldDataWording));
  RETURN_IF_FAILED(AddAmountHints(builder, data, kFieldDataWording, kFieldDataValues));
  builder.CloseAggregate("StyleFieldData");
  return S_OK;
}

// ---- CStyleTableBuilder ---------------------------------------------------------------------

HRESULT CStyleTableBuilder::BuildXML(XMLBuilder& builder, VARIANT_BOOL withTaxFlag) {
  IStyleTable* const table = Required(table_);
  builder.OpenAggregate("StyleTable");
  // Read once: written here and measured against the printed columns for the tax-flag column.
  LONG width = 0;
  RETURN_IF_FAILED_LOG(table->GetWidth(&width), kTablePrefix, "Failed to get width from style table in LX.");
  builder.AddLongElement("Width", width);
  RETURN_IF_FAILED(AddElements(builder, table, kTableHeights, kTablePrefix));

  IStyleColumnsPtr columns;
  RETURN_IF_FAILED_LOG(table->GetColumns(columns.ReleaseAndGetAddressOf()), kTablePrefix,
                       "Failed to get columns from style table in LX.");
  LONG count = 0;
  RETURN_IF_FAILED_LOG(Required(columns)->GetCount(&count), kTablePrefix,
                       "Failed to get count from style columns list in LX.");
  builder.OpenAggregate("TableColumns");
  // At most 2^31 columns of at most 2^31 each: the sum cannot overflow 64 bits.
  int64_t printedWidth = 0;
  for (LONG index = 0; index < count; ++index) {
    IStyleColumnPtr column;
    RETURN_IF_FAILED_LOG(columns->GetItem(index, column.ReleaseAndGetAddressOf()), kTablePrefix,
                         "Failed to get item from style columns list in LX.");
    VARIANT_BOOL onPrint = VARIANT_FALSE;
    RETURN_IF_FAILED_LOG(Required(column)->GetOnPrint(&onPrint), kTablePrefix,
                         "Failed to get on print from style column in LX.");
    long columnWidth = 0;
    RETURN_IF_FAILED_LOG(CStyleColumnBuilder(column.Get()).BuildXML(builder, columnWidth), kTablePrefix,
                         "Failed to build style column aggregate XML.");
    if (onPrint) printedWidth += columnWidth;
  }
  if (withTaxFlag)
    RETURN_IF_FAILED(AddTaxFlagColumn(builder, table_, std::max<LONG>(count, 0), int64_t(width) - printedWidth));
  builder.CloseAggregate("TableColumns");
  builder.CloseAggregate("StyleTable");
  return S_OK;
}

// ---- CStyleColumnBuilder --------------------------------------------------------------------

CStyleColumnBuilder CStyleColumnBuilder::ForTaxFlag(IStyleColumn* column) { return {column, true}; }

HRESULT CStyleColumnBuilder::BuildXML(XMLBuilder& builder, long& width) {
  IStyleColumn* const column = Required(column_);
  OLAString id(kTaxFlagId);
  if (!taxFlag_) {
    LONG value = 0;
    RETURN_IF_FAILED_LOG(column->GetID(&value), kColumnPrefix, "Failed to get ID from style column in LX.");
    id = Word(&CLXEnumToString::StyleFieldToString, value);
  }
  OpenWithAttribute(builder, "StyleColumn", "id", id);
  RETURN_IF_FAILED(AddElements(builder, column, kColumnFlags, kColumnPrefix));
  RETURN_IF_FAILED(AddElements(builder, column, kColumnOrder, kColumnPrefix));

  // The tax-flag column shows its data only: it has no label aggregate, and its data gives its width.
  IStyleColumnLabelPtr label;
  if (!taxFlag_)
    RETURN_IF_FAILED_LOG(column->GetLabel(label.ReleaseAndGetAddressOf()), kColumnPrefix,
                         "Failed to get label from style column in LX.");
  IStyleColumnDataPtr data;
  RETURN_IF_FAILED_LOG(column->GetData(data.ReleaseAndGetAddressOf()), kColumnPrefix,
                       "Failed to get data from style column in LX.");
  LONG labelWidth = INT32_MIN;
  if (!taxFlag_)
    RETURN_IF_FAILED_LOG(Required(label)->GetWidth(&labelWidth), kColumnPrefix,
                         "Failed to get width from style column label in LX.");
  LONG dataWidth = 0;
  RETURN_IF_FAILED_LOG(Required(data)->GetWidth(&dataWidth), kColumnPrefix,
                       "Failed to get width from style column data in LX.");
  width = std::max(labelWidth, dataWidth);
  builder.AddLongElement("Width", LONG(width));

  if (!taxFlag_)
    RETURN_IF_FAILED_LOG(CStyleColumnLabelBuilder(label.Get()).BuildXML(builder), kColumnPrefix,
                         "Failed to build style column label aggregate XML.");
  CStyleColumnDataBuilder dataBuilder =
      taxFlag_ ? CStyleColumnDataBuilder::ForTaxFlag(data.Get()) : CStyleColumnDataBuilder(data.Get());
  RETURN_IF_FAILED_LOG(dataBuilder.BuildXML(builder), kColumnPrefix,
                       "Failed to build style column data aggregate XML.");
  builder.CloseAggregate("StyleColumn");
  return S_OK;
}

// ---- Column label and data ------------------------------------------------------------------

HRESULT CStyleColumnLabelBuilder::BuildXML(XMLBuilder& builder) {
  IStyleColumnLabel* const label = Required(label_);
  builder.OpenAggregate("StyleColumnLabel");
  Bstr text;
  RETURN_IF_FAILED_LOG(label->GetLabel(text.Out()), kColumnLabelPrefix,
                       "Failed to get label from style column label in LX.");
  builder.AddElement("StyleFieldLabelText", text.Get());
  RETURN_IF_FAILED(OpenAreaInfo(builder, "StyleColumnInfo", label, kColumnLabelWording));
  RETURN_IF_FAILED(CloseAreaInfo(builder, "StyleColumnInfo", label, kColumnLabelWording));
  builder.CloseAggregate("StyleColumnLabel");
  return S_OK;
}

CStyleColumnDataBuilder CStyleColumnDataBuilder::ForTaxFlag(IStyleColumnData* data) { return {data, true}; }

HRESULT CStyleColumnDataBuilder::BuildXML(XMLBuilder& builder) {
  IStyleColumnData* const data = Required(data_);
  RETURN_IF_FAILED(OpenDataArea(builder, "StyleColumnData", data, kColumnDataWording, kColumnDataValues));
  RETURN_IF_FAILED(OpenAreaInfo(builder, "StyleColumnInfo", data, kColumnDataWording));
  RETURN_IF_FAILED(CloseAreaInfo(builder, "StyleColumnInfo", data, kColumnDataWording,
                                 taxFlag_ ? kTaxFlagFontName : nullptr));
  if (!taxFlag_) RETURN_IF_FAILED(AddAmountHints(builder, data, kColumnDataWording, kColumnDataValues));
  builder.CloseAggregate("StyleColumnData");
  return S_OK;
}

// ---- CStyleFontBuilder ----------------------------------------------------------------------

HRESULT CStyleFontBuilder::BuildXML(XMLBuilder& builder) {
  IStyleFont* const font = Required(font_);
  builder.OpenAggregate("StyleFont");
  if (name_) {
    builder.AddElement("Name", OLAString(name_));
  } else {
    Bstr name;
    RETURN_IF_FAILED_LOG(font->GetName(name.Out()), kFontPrefix, "Failed to get name from style font in LX.");
    builder.AddElement("Name", name.Get());
  }
  RETURN_IF_FAILED(AddElements(builder, font, kFontNumbers, kFontPrefix));
  RETURN_IF_FAILED(AddElements(builder, font, kFontFlags, kFontPrefix));
  builder.CloseAggregate("StyleFont");
  return S_OK;
}
