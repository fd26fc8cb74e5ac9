// The sample company's forms as the whole-send tests send them: to its customer, with the
// sample's PDF. Plain data over the send driver's types, so that a client that may not link the
// component shares them too.
#pragma once

#include <string>

#include "tools/SendDriver.h"

namespace parcelon::test {

inline tools::FormSpec SampleForm(NAFormType type, LONG recNum, NASendType send) {
  tools::FormSpec form;
  form.type = type;
  form.recNum = recNum;
  form.send = send;
  form.to = "siobhan@obrien.example";
  form.from = "office@harborpine.example";
  form.subject = "Your form from Harbor & Pine";
  form.text = "Thank you for your business.";
  form.faxTo = "415-555-0101";
  form.pdf = std::string(PARCELON_SOURCE_DIR) + "/samples/invoice-1001.pdf";
  return form;
}

}  // namespace parcelon::test
