#include "tools/ReceivedRequest.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <memory>

namespace parcelon::tools {

namespace {

std::string Name(const xmlNode* node) { return reinterpret_cast<const char*>(node->name); }

bool EndsWith(const std::string& text, std::string_view end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

std::vector<xmlNode*> Elements(const xmlNode* parent) {
  std::vector<xmlNode*> out;
  for (xmlNode* child = parent->children; child; child = child->next)
    if (child->type == XML_ELEMENT_NODE) out.push_back(child);
  return out;
}

std::string Text(const xmlNode* node) {
  xmlChar* content = xmlNodeGetContent(node);
  std::string text = content ? reinterpret_cast<const char*>(content) : "";
  xmlFree(content);
  return text;
}

std::string ChildText(const xmlNode* parent, std::string_view name) {
  for (xmlNode* child : Elements(parent))
    if (Name(child) == name) return Text(child);
  return "";
}

std::string Attribute(const xmlNode* node, const char* name) {
  xmlChar* value = xmlGetProp(node, reinterpret_cast<const xmlChar*>(name));
  std::string text = value ? reinterpret_cast<const char*>(value) : "";
  xmlFree(value);
  return text;
}

std::string Serialized(xmlDoc* document, xmlNode* node) {
  const std::unique_ptr<xmlBuffer, decltype(&xmlBufferFree)> buffer(xmlBufferCreate(), xmlBufferFree);
  xmlNodeDump(buffer.get(), document, node, 0, 0);
  return std::string(reinterpret_cast<const char*>(xmlBufferContent(buffer.get())), size_t(xmlBufferLength(buffer.get())));
}

void ReadUpload(xmlDoc* document, xmlNode* upload, ReceivedRequest& out) {
  out.hasUpload = true;
  for (xmlNode* part : Elements(upload)) {
    const std::string name = Name(part);
    if (name == "CompanyUID") {
      out.companyUID = Text(part);
    } else if (name == "LastDataUploadToken") {
      out.token = Text(part);
    } else if (name == "CompanyAdd") {
      out.companyName = ChildText(part, "CompanyName");
      out.companyText = Serialized(document, part);
    } else if (EndsWith(name, "Add")) {
      for (xmlNode* record : Elements(part))
        out.records.push_back({name.substr(0, name.size() - 3), ChildText(record, "ClientID"), Serialized(document, record), false});
    } else if (EndsWith(name, "Del")) {
      for (xmlNode* id : Elements(part))
        if (Name(id) == "ClientID") out.records.push_back({name.substr(0, name.size() - 3), Text(id), "", true});
    }
  }
}

void ReadForm(xmlDoc* document, const std::string& messageSet, xmlNode* request, ReceivedRequest& out) {
  ReceivedForm form{Name(request), messageSet, Attribute(request, "trnUID"), {}, Serialized(document, request)};
  for (xmlNode* part : Elements(request)) {
    if (Name(part) == "CompanyUID" && out.companyUID.empty()) out.companyUID = Text(part);
    if (Name(part) == "Attachments")
      for (xmlNode* id : Elements(part))
        if (Name(id) == "MsgID") form.messageIds.push_back(Text(id));
  }
  out.forms.push_back(std::move(form));
}

}  // namespace

bool ReadReceivedRequest(std::string_view document, ReceivedRequest& out, std::string& error) {
  out = ReceivedRequest{};
  if (document.size() > size_t(INT32_MAX)) return error = "the request is too long", false;
  const std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> parsed(
      xmlReadMemory(document.data(), int(document.size()), "request.xml", nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR |
                                                                                  XML_PARSE_NOWARNING),
      xmlFreeDoc);
  if (!parsed) {
    const xmlError* last = xmlGetLastError();
    error = std::string("the request is not well-formed XML") + (last && last->message ? ": " + std::string(last->message) : "");
    while (!error.empty() && error.back() == '\n') error.pop_back();
    return false;
  }
  xmlNode* root = xmlDocGetRootElement(parsed.get());
  for (xmlNode* messageSet : Elements(root)) {
    const std::string setName = Name(messageSet);
    for (xmlNode* request : Elements(messageSet)) {
      if (setName == "LXDataMsgsRq" && Name(request) == "DataUploadRq")
        ReadUpload(parsed.get(), request, out);
      else if (EndsWith(Name(request), "Rq"))
        ReadForm(parsed.get(), setName, request, out);
    }
  }
  return true;
}

}  // namespace parcelon::tools
