// The document a network adapter posts for a form pass: the session's text under a root named
// by the document type declaration the session gives ("ZPN PUBLIC '...' '...'").
#pragma once

#include <string>
#include <string_view>

namespace parcelon::tools {

// The root element's name: the declaration's first word.
inline std::string_view RequestRootName(std::string_view docType) {
  return docType.substr(0, docType.find(' '));
}

// The prolog, the declaration and the root around the body, which may hold several message sets
// (a data upload before the form request).
inline std::string ComposeRequestDocument(std::string_view docType, std::string_view body) {
  const std::string_view root = RequestRootName(docType);
  std::string document;
  document.reserve(body.size() + docType.size() + 2 * root.size() + 64);
  document.append("<?xml version=\"1.0\" encoding=\"windows-1252\"?>\n<!DOCTYPE ")
      .append(docType).append(">\n<").append(root).append(">\n")
      .append(body).append("</").append(root).append(">\n");
  return document;
}

}  // namespace parcelon::tools
