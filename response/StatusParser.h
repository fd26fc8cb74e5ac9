// CStatusParser: loads a gateway response, or takes one element of it, and reads the status of
// one response aggregate: its name, the attributes "trnUID", "statusCode", "statusSeverity" and
// "statusMessage", and the texts of its child elements "MessageID" and "LastDataUploadToken".
// Every value is kept as the text the document holds; what it means is the caller's to decide.
#pragma once

#include "clienttools/OLAString.h"
#include "platform/ComBase.h"
#include "platform/XmlDom.h"

class CStatusParser {
 public:
  CStatusParser() = default;
  CStatusParser(const CStatusParser&) = delete;
  CStatusParser& operator=(const CStatusParser&) = delete;
  virtual ~CStatusParser() = default;

  // Creates a document and loads `xml` into it. A document that loads with a parse error still
  // counts as loaded (the error is logged).
  HRESULT LoadXML(BSTR xml);
  // LoadXML, then reads the status of the document's root element.
  HRESULT Parse(BSTR xml);
  // Reads the status of `element`, forgetting the values read before. Values it does not find
  // stay empty.
  HRESULT ParseElement(IXMLDOMNode* element);
  // Releases the document and the element and empties every value.
  void Clear();

  const OLAString& GetElementName() const { return elementName_; }
  const OLAString& GetTrnUID() const { return trnUID_; }
  const OLAString& GetStatusCode() const { return statusCode_; }
  const OLAString& GetStatusSeverity() const { return statusSeverity_; }
  const OLAString& GetStatusMessage() const { return statusMessage_; }
  const OLAString& GetMessageID() const { return messageID_; }
  const OLAString& GetLastDataUploadToken() const { return lastDataUploadToken_; }
  // The element whose status was read, with a reference added; null before any.
  IXMLDOMNodePtr GetElement() const { return element_; }

 private:
  HRESULT ReadAttributes(IXMLDOMNode* element);
  HRESULT ReadChildren(IXMLDOMNode* element);

  IXMLDOMDocumentPtr document_;
  IXMLDOMNodePtr element_;
  OLAString elementName_;
  OLAString trnUID_;
  OLAString statusCode_;
  OLAString statusSeverity_;
  OLAString statusMessage_;
  OLAString messageID_;
  OLAString lastDataUploadToken_;
};
