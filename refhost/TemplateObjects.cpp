// The reference host's form templates: the styles list, a style with its page, fields, item
// table and columns, their label and data areas, and fonts.
//
// Every object of a template belongs to the style's record for fault selection. The methods of
// IStyleTextArea and IStyleDataArea are named after the area's own interface and also answer to
// the interface that declares them: "IStyleFieldLabel::GetWidth" picks the field labels,
// "IStyleTextArea::GetWidth" every label and data area.
#include "refhost/CollectionObject.h"
#include "refhost/HostObjects.h"
#include "refhost/PartCollection.h"

namespace parcelon::refhost {

// The element objects of the styles list, found by CollectionObject through the record type.
HRESULT NewElementObject(const CompanyPtr& company, Style& record, IStyle** out);

namespace {

class FontObject final : public ComObject<IStyleFont> {
 public:
  FontObject(CompanyPtr company, LONG style, const StyleFont& font)
      : ComObject(std::move(company), style), font_(font) {}

  HRESULT STDMETHODCALLTYPE GetName(BSTR* out) override {
    return Give("IStyleFont::GetName", out, font_.name);
  }
  HRESULT STDMETHODCALLTYPE GetSize(LONG* out) override {
    return Give("IStyleFont::GetSize", out, font_.size);
  }
  HRESULT STDMETHODCALLTYPE GetColor(LONG* out) override {
    return Give("IStyleFont::GetColor", out, font_.color);
  }
  HRESULT STDMETHODCALLTYPE GetBold(VARIANT_BOOL* out) override {
    return Give("IStyleFont::GetBold", out, font_.bold);
  }
  HRESULT STDMETHODCALLTYPE GetItalic(VARIANT_BOOL* out) override {
    return Give("IStyleFont::GetItalic", out, font_.italic);
  }
  HRESULT STDMETHODCALLTYPE GetUnderline(VARIANT_BOOL* out) override {
    return Give("IStyleFont::GetUnderline", out, font_.underline);
  }
  HRESULT STDMETHODCALLTYPE GetStrikeThrough(VARIANT_BOOL* out) override {
    return Give("IStyleFont::GetStrikeThrough", out, font_.strikeThrough);
  }

 private:
  const StyleFont& font_;
};

// The methods of IStyleTextArea over an Area (a StyleTextArea), named after Most.
template <class Area, class Most, class... Also>
class TextAreaObject : public ComObject<Most, Also..., IStyleTextArea> {
  using Base = ComObject<Most, Also..., IStyleTextArea>;

 public:
  TextAreaObject(CompanyPtr company, LONG style, const Area& area)
      : Base(std::move(company), style), area_(area) {}

  HRESULT STDMETHODCALLTYPE GetHorzTextAlign(LONG* out) override {
    return this->Give(Op("GetHorzTextAlign"), out, area_.horzAlign);
  }
  HRESULT STDMETHODCALLTYPE GetVertTextAlign(LONG* out) override {
    return this->Give(Op("GetVertTextAlign"), out, area_.vertAlign);
  }
  HRESULT STDMETHODCALLTYPE GetPagesPrintedOn(LONG* out) override {
    return this->Give(Op("GetPagesPrintedOn"), out, area_.pagesPrintedOn);
  }
  HRESULT STDMETHODCALLTYPE GetBorder(LONG* out) override {
    return this->Give(Op("GetBorder"), out, area_.border);
  }
  HRESULT STDMETHODCALLTYPE GetWidth(LONG* out) override {
    return this->Give(Op("GetWidth"), out, area_.width);
  }
  HRESULT STDMETHODCALLTYPE GetHeight(LONG* out) override {
    return this->Give(Op("GetHeight"), out, area_.height);
  }
  HRESULT STDMETHODCALLTYPE GetMultiLine(VARIANT_BOOL* out) override {
    return this->Give(Op("GetMultiLine"), out, area_.multiLine);
  }
  HRESULT STDMETHODCALLTYPE GetUsesAscent(VARIANT_BOOL* out) override {
    return this->Give(Op("GetUsesAscent"), out, area_.usesAscent);
  }
  HRESULT STDMETHODCALLTYPE GetFont(IStyleFont** out) override {
    return this->template GiveNew<FontObject>(Op("GetFont"), out, this->companyPtr(),
                                              this->record(), area_.font);
  }

 protected:
  const Area& area() const { return area_; }

 private:
  static OperationName Op(std::string_view method) {
    return {IidOf<Most>(), method, "IStyleTextArea"};
  }

  const Area& area_;
};

// The methods of IStyleDataArea over an Area (a StyleDataArea), named after Most.
template <class Area, class Most>
class DataAreaObject : public TextAreaObject<Area, Most, IStyleDataArea> {
 public:
  using TextAreaObject<Area, Most, IStyleDataArea>::TextAreaObject;

  HRESULT STDMETHODCALLTYPE GetDataType(LONG* out) override {
    return this->Give(Op("GetDataType"), out, this->area().dataType);
  }
  HRESULT STDMETHODCALLTYPE GetPrecision(LONG* out) override {
    return this->Give(Op("GetPrecision"), out, this->area().precision);
  }
  HRESULT STDMETHODCALLTYPE GetShowCurrency(VARIANT_BOOL* out) override {
    return this->Give(Op("GetShowCurrency"), out, this->area().showCurrency);
  }
  HRESULT STDMETHODCALLTYPE GetShowZeroAmts(VARIANT_BOOL* out) override {
    return this->Give(Op("GetShowZeroAmts"), out, this->area().showZeroAmts);
  }
  HRESULT STDMETHODCALLTYPE GetTaxable(VARIANT_BOOL* out) override {
    return this->Give(Op("GetTaxable"), out, this->area().taxable);
  }

 private:
  static OperationName Op(std::string_view method) {
    return {IidOf<Most>(), method, "IStyleDataArea"};
  }
};

class FieldLabelObject final : public TextAreaObject<StyleFieldLabel, IStyleFieldLabel> {
 public:
  using TextAreaObject::TextAreaObject;

  HRESULT STDMETHODCALLTYPE GetLabel(BSTR* out) override {
    return Give("IStyleFieldLabel::GetLabel", out, area().label);
  }
  HRESULT STDMETHODCALLTYPE GetX(LONG* out) override {
    return Give("IStyleFieldLabel::GetX", out, area().x);
  }
  HRESULT STDMETHODCALLTYPE GetY(LONG* out) override {
    return Give("IStyleFieldLabel::GetY", out, area().y);
  }
};

class FieldDataObject final : public DataAreaObject<StyleFieldData, IStyleFieldData> {
 public:
  using DataAreaObject::DataAreaObject;

  HRESULT STDMETHODCALLTYPE GetX(LONG* out) override {
    return Give("IStyleFieldData::GetX", out, area().x);
  }
  HRESULT STDMETHODCALLTYPE GetY(LONG* out) override {
    return Give("IStyleFieldData::GetY", out, area().y);
  }
};

class ColumnLabelObject final : public TextAreaObject<StyleColumnLabel, IStyleColumnLabel> {
 public:
  using TextAreaObject::TextAreaObject;

  HRESULT STDMETHODCALLTYPE GetLabel(BSTR* out) override {
    return Give("IStyleColumnLabel::GetLabel", out, area().label);
  }
};

class ColumnDataObject final : public DataAreaObject<StyleColumnData, IStyleColumnData> {
 public:
  using DataAreaObject::DataAreaObject;
};

// What fields and columns have in common: identifier, flags, label and data area. Operations
// are named after Most.
template <class Part, class Most, class LabelObject, class DataObject>
class StylePartObject : public ComObject<Most> {
 public:
  StylePartObject(CompanyPtr company, LONG style, const Part& part)
      : ComObject<Most>(std::move(company), style), part_(part) {}

  HRESULT STDMETHODCALLTYPE GetID(LONG* out) override {
    return this->Give(Op("GetID"), out, part_.id);
  }
  HRESULT STDMETHODCALLTYPE GetOnScreen(VARIANT_BOOL* out) override {
    return this->Give(Op("GetOnScreen"), out, part_.onScreen);
  }
  HRESULT STDMETHODCALLTYPE GetOnPrint(VARIANT_BOOL* out) override {
    return this->Give(Op("GetOnPrint"), out, part_.onPrint);
  }
  HRESULT STDMETHODCALLTYPE GetUsesLabel(VARIANT_BOOL* out) override {
    return this->Give(Op("GetUsesLabel"), out, part_.usesLabel);
  }
  HRESULT STDMETHODCALLTYPE GetUsesData(VARIANT_BOOL* out) override {
    return this->Give(Op("GetUsesData"), out, part_.usesData);
  }
  template <class Label>
  HRESULT GetLabelArea(Label** out) {
    return this->template GiveNew<LabelObject>(Op("GetLabel"), out, this->companyPtr(),
                                               this->record(), part_.label);
  }
  template <class Data>
  HRESULT GetDataArea(Data** out) {
    return this->template GiveNew<DataObject>(Op("GetData"), out, this->companyPtr(),
                                              this->record(), part_.data);
  }

 protected:
  const Part& part() const { return part_; }

 private:
  static OperationName Op(std::string_view method) { return {IidOf<Most>(), method}; }

  const Part& part_;
};

class FieldObject final
    : public StylePartObject<StyleField, IStyleField, FieldLabelObject, FieldDataObject> {
 public:
  using StylePartObject::StylePartObject;

  HRESULT STDMETHODCALLTYPE GetLabel(IStyleFieldLabel** out) override {
    return GetLabelArea(out);
  }
  HRESULT STDMETHODCALLTYPE GetData(IStyleFieldData** out) override { return GetDataArea(out); }
};

class ColumnObject final
    : public StylePartObject<StyleColumn, IStyleColumn, ColumnLabelObject, ColumnDataObject> {
 public:
  using StylePartObject::StylePartObject;

  HRESULT STDMETHODCALLTYPE GetOrder(LONG* out) override {
    return Give("IStyleColumn::GetOrder", out, part().order);
  }
  HRESULT STDMETHODCALLTYPE GetLabel(IStyleColumnLabel** out) override {
    return GetLabelArea(out);
  }
  HRESULT STDMETHODCALLTYPE GetData(IStyleColumnData** out) override { return GetDataArea(out); }
};

using FieldsObject = PartCollectionObject<IStyleFields, IStyleField, FieldObject, StyleField>;
using ColumnsObject = PartCollectionObject<IStyleColumns, IStyleColumn, ColumnObject, StyleColumn>;

class TableObject final : public ComObject<IStyleTable2, IStyleTable> {
 public:
  TableObject(CompanyPtr company, LONG style, const StyleTable& table)
      : ComObject(std::move(company), style), table_(table) {}

  HRESULT STDMETHODCALLTYPE GetWidth(LONG* out) override {
    return Give("IStyleTable::GetWidth", out, table_.width);
  }
  HRESULT STDMETHODCALLTYPE GetHeight(LONG* out) override {
    return Give("IStyleTable::GetHeight", out, table_.height);
  }
  HRESULT STDMETHODCALLTYPE GetLabelHeight(LONG* out) override {
    return Give("IStyleTable::GetLabelHeight", out, table_.labelHeight);
  }
  HRESULT STDMETHODCALLTYPE GetColumns(IStyleColumns** out) override {
    return GiveNew<ColumnsObject>("IStyleTable::GetColumns", out, companyPtr(), record(),
                                  table_.columns);
  }
  HRESULT STDMETHODCALLTYPE GetTaxFlagColumn(IStyleColumn** out) override {
    RETURN_IF_FAILED(Ready("IStyleTable2::GetTaxFlagColumn", out));
    *out = nullptr;
    if (!table_.taxFlag) return S_OK;
    return CreateObject<ColumnObject>(out, companyPtr(), record(), *table_.taxFlag);
  }

 private:
  const StyleTable& table_;
};

class StyleObject final : public ComObject<IStyle> {
 public:
  StyleObject(CompanyPtr company, const Style& style)
      : ComObject(std::move(company), style.recNum), style_(style) {}

  HRESULT STDMETHODCALLTYPE GetRecNum(LONG* out) override {
    return Give("IStyle::GetRecNum", out, style_.recNum);
  }
  HRESULT STDMETHODCALLTYPE GetFullName(BSTR* out) override {
    return Give("IStyle::GetFullName", out, style_.fullName);
  }
  HRESULT STDMETHODCALLTYPE GetType(LONG* out) override {
    return Give("IStyle::GetType", out, style_.type);
  }
  HRESULT STDMETHODCALLTYPE GetPredefined(VARIANT_BOOL* out) override {
    return Give("IStyle::GetPredefined", out, style_.predefined);
  }
  HRESULT STDMETHODCALLTYPE GetWidth(LONG* out) override {
    return Give("IStyle::GetWidth", out, style_.width);
  }
  HRESULT STDMETHODCALLTYPE GetHeight(LONG* out) override {
    return Give("IStyle::GetHeight", out, style_.height);
  }
  HRESULT STDMETHODCALLTYPE GetLeftMargin(LONG* out) override {
    return Give("IStyle::GetLeftMargin", out, style_.leftMargin);
  }
  HRESULT STDMETHODCALLTYPE GetRightMargin(LONG* out) override {
    return Give("IStyle::GetRightMargin", out, style_.rightMargin);
  }
  HRESULT STDMETHODCALLTYPE GetTopMargin(LONG* out) override {
    return Give("IStyle::GetTopMargin", out, style_.topMargin);
  }
  HRESULT STDMETHODCALLTYPE GetBottomMargin(LONG* out) override {
    return Give("IStyle::GetBottomMargin", out, style_.bottomMargin);
  }
  HRESULT STDMETHODCALLTYPE GetFields(IStyleFields** out) override {
    return GiveNew<FieldsObject>("IStyle::GetFields", out, companyPtr(), record(), style_.fields);
  }
  HRESULT STDMETHODCALLTYPE GetTable(IStyleTable** out) override {
    return GiveNew<TableObject>("IStyle::GetTable", out, companyPtr(), record(), style_.table);
  }

 private:
  const Style& style_;
};

}  // namespace

HRESULT NewElementObject(const CompanyPtr& company, Style& record, IStyle** out) {
  return CreateObject<StyleObject>(out, company, record);
}

HRESULT NewRecordObject(const CompanyPtr& company, RecNum recNum, IStyle** out) {
  *out = nullptr;
  Style* style = recNum == 0 ? &company->styles.Empty() : company->Find<Style>(recNum);
  if (!style) return LX_E_NOTFOUND;
  return CreateObject<StyleObject>(out, company, *style);
}

HRESULT NewStyles(const CompanyPtr& company, IStyles** out) {
  return CreateObject<CollectionObject<IStyles, IStyle, Style>>(out, company);
}

}  // namespace parcelon::refhost
