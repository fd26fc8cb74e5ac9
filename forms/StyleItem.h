// The template style aggregate "StyleItem": a form template's page, its free-standing fields with
// their label and data areas, the item table with its columns and the tax-flag column, and the
// font of every text area. Each builder describes one host object and is used once, on the stack,
// by its parent.
//
// A host value that cannot be read is logged with the builder's prefix and its HRESULT is returned
// at once, leaving the elements opened so far open; an optional one ("... Skipping this optional
// element.") is logged and its element left out. A null host object where one is required throws
// ComError(E_POINTER).
#pragma once

#include "clienttools/XMLBuilder.h"
#include "host/HostModel.h"
#include "platform/ComBase.h"

class CStyleItemBuilder {
 public:
  explicit CStyleItemBuilder(IStyle* style) : style_(style) {}
  virtual ~CStyleItemBuilder() = default;

  // "StyleItem" (attribute "type"): "ClientID", "Name", "Predefined", the page's size and margins,
  // one "StyleField" per field and the "StyleTable". `withTaxFlag` is handed to the table: it
  // writes the tax-flag column when it is set.
  HRESULT BuildXML(XMLBuilder& builder, VARIANT_BOOL withTaxFlag);

 private:
  IStylePtr style_;
};

class CStyleFieldBuilder {
 public:
  explicit CStyleFieldBuilder(IStyleField* field) : field_(field) {}
  virtual ~CStyleFieldBuilder() = default;

  // "StyleField" (attribute "id"): "OnScreen", "OnPrint", "UsesLabel", "UsesData",
  // "StyleFieldLabel", "StyleFieldData". The on-print flag is read before the identifier.
  HRESULT BuildXML(XMLBuilder& builder);

 private:
  IStyleFieldPtr field_;
};

class CStyleFieldLabelBuilder {
 public:
  explicit CStyleFieldLabelBuilder(IStyleFieldLabel* label) : label_(label) {}
  virtual ~CStyleFieldLabelBuilder() = default;

  // "StyleFieldLabel": "StyleFieldLabelText", then "StyleFieldInfo" (the alignment, pages and
  // border attributes) with "X", "Y", "Width", "Height", "MultiLine" (optional), "UsesAscent" and
  // "StyleFont" (optional).
  HRESULT BuildXML(XMLBuilder& builder);

 private:
  IStyleFieldLabelPtr label_;
};

class CStyleFieldDataBuilder {
 public:
  explicit CStyleFieldDataBuilder(IStyleFieldData* data) : data_(data) {}
  virtual ~CStyleFieldDataBuilder() = default;

  // "StyleFieldData" (attribute "type"): "StyleFieldInfo" as for a label ("MultiLine" required),
  // then "AmountDisplayHints".
  HRESULT BuildXML(XMLBuilder& builder);

 private:
  IStyleFieldDataPtr data_;
};

class CStyleTableBuilder {
 public:
  explicit CStyleTableBuilder(IStyleTable* table) : table_(table) {}
  virtual ~CStyleTableBuilder() = default;

  // "StyleTable": "Width", "Height", "LabelHeight", then "TableColumns" with one "StyleColumn" per
  // column and, when `withTaxFlag` is set, the tax-flag column ("StyleTaxFlag"): the host's own
  // when the table has one, else a fixed one placed after the columns, as wide as the table's
  // width left over by the printed columns.
  HRESULT BuildXML(XMLBuilder& builder, VARIANT_BOOL withTaxFlag);

 private:
  IStyleTablePtr table_;
};

class CStyleColumnBuilder {
 public:
  explicit CStyleColumnBuilder(IStyleColumn* column) : column_(column) {}
  // The host's tax-flag column: written as "StyleTaxFlag", without identifier or label aggregate,
  // its width that of its data, its font named "Arial".
  static CStyleColumnBuilder ForTaxFlag(IStyleColumn* column);
  virtual ~CStyleColumnBuilder() = default;

  // "StyleColumn" (attribute "id"): "OnScreen", "OnPrint", "UsesLabel", "UsesData", "Order",
  // "Width" (the wider of label and data, also given to `width`), "StyleColumnLabel",
  // "StyleColumnData".
  HRESULT BuildXML(XMLBuilder& builder, long& width);

 private:
  CStyleColumnBuilder(IStyleColumn* column, bool taxFlag) : column_(column), taxFlag_(taxFlag) {}

  IStyleColumnPtr column_;
  bool taxFlag_ = false;
};

class CStyleColumnLabelBuilder {
 public:
  explicit CStyleColumnLabelBuilder(IStyleColumnLabel* label) : label_(label) {}
  virtual ~CStyleColumnLabelBuilder() = default;

  // "StyleColumnLabel": "StyleFieldLabelText", then "StyleColumnInfo" (the alignment, pages and
  // border attributes) with "MultiLine" (optional), "UsesAscent" and "StyleFont" (optional).
  HRESULT BuildXML(XMLBuilder& builder);

 private:
  IStyleColumnLabelPtr label_;
};

class CStyleColumnDataBuilder {
 public:
  explicit CStyleColumnDataBuilder(IStyleColumnData* data) : data_(data) {}
  // The tax-flag column's data: its font named "Arial", without "AmountDisplayHints".
  static CStyleColumnDataBuilder ForTaxFlag(IStyleColumnData* data);
  virtual ~CStyleColumnDataBuilder() = default;

  // "StyleColumnData" (attribute "type"): "StyleColumnInfo" as for a label ("MultiLine"
  // required), then "AmountDisplayHints".
  HRESULT BuildXML(XMLBuilder& builder);

 private:
  CStyleColumnDataBuilder(IStyleColumnData* data, bool taxFlag) : data_(data), taxFlag_(taxFlag) {}

  IStyleColumnDataPtr data_;
  bool taxFlag_ = false;
};

class CStyleFontBuilder {
 public:
  // `name`, when given, is written instead of the host font's name, which is then not read.
  explicit CStyleFontBuilder(IStyleFont* font, const char* name = nullptr) : font_(font), name_(name) {}
  virtual ~CStyleFontBuilder() = default;

  // "StyleFont": "Name", "PtSize", "RGBColor", "Bold", "Italic", "UnderLine", "StrikeThrough".
  HRESULT BuildXML(XMLBuilder& builder);

 private:
  IStyleFontPtr font_;
  const char* name_;
};
