// The network adapter as a script: through IDispatch alone it creates the session by its class
// name, adds the e-mailed invoice with its properties, and drives the passes in the adapter's
// order, printing what each pass sends in the whole-send transcript's form.
//   cscript //nologo send_invoice.js <folder of invoice-1001.pdf> <settings file>
// The session's INA_Base members are reached by name like its own: AuthParams, a property put
// with two arguments, is called as a method whose last argument is the value; BuildData, whose
// pointer no script can hold, is called without one. The attachment's digest is FNV-1a 64 over
// the file the form names (plain text), computed here in 16-bit pieces.

var out = [];
function say(line) { out.push(line); }

var samples = WScript.Arguments(0);
var settingsPath = WScript.Arguments(1);
var files = new ActiveXObject("Scripting.FileSystemObject");

// The settings' URL keys by address, so that the transcript names the key of each address.
var urlKeys = {};
var settings = files.OpenTextFile(settingsPath, 1).ReadAll().split(/\r?\n/);
for (var i = 0; i < settings.length; ++i) {
  var pair = /^([^=\[]+)=(.*)$/.exec(settings[i]);
  if (pair) urlKeys[pair[2]] = pair[1];
}
function urlKey(url) { return url !== "" && urlKeys.hasOwnProperty(url) ? urlKeys[url] : "(no key)"; }

// FNV-1a 64 of the file's bytes (text of one byte per character), as 16 hex digits. The 64-bit
// product is built from 16-bit pieces so that every partial sum stays exact in a double.
function fnv1a64(text) {
  var h = [0x2325, 0x8422, 0x9ce4, 0xcbf2];  // 14695981039346656037, low piece first
  var p = [0x01b3, 0x0000, 0x0100, 0x0000];  // 1099511628211
  for (var n = 0; n < text.length; ++n) {
    h[0] ^= text.charCodeAt(n) & 0xff;
    var product = [0, 0, 0, 0];
    for (var a = 0; a < 4; ++a)
      for (var b = 0; a + b < 4; ++b) product[a + b] += h[a] * p[b];
    var carry = 0;
    for (var k = 0; k < 4; ++k) {
      var sum = product[k] + carry;
      h[k] = sum % 0x10000;
      carry = Math.floor(sum / 0x10000);
    }
  }
  var hex = "";
  for (var d = 3; d >= 0; --d) hex += (0x10000 + h[d]).toString(16).substring(1);
  return hex;
}

function hex8(value) { return "0x" + (0x100000000 + (value >>> 0)).toString(16).toUpperCase().substring(1); }

function pad6(n) { return ("00000" + n).slice(-6); }

// A failed call ends the run, naming where it stopped.
var step = "creating Parcelon.NA_Forms";
try {
var forms = new ActiveXObject("Parcelon.NA_Forms");
var form = forms.AddForm();
form.FormType = 1;           // naftINVOICE
form.TransactionRecordNumber = 1001;
form.SendMethod = 0;         // nastEMAIL
form.Post = false;
form.SynchMultiple = false;
form.To = "siobhan@obrien.example";
form.Cc = "accounts@obrien.example";
form.Bcc = "archive@harborpine.example";
form.From = "office@harborpine.example";
form.ReplyTo = "billing@harborpine.example";
form.Subject = "Your form from Harbor & Pine";
form.Text = "Thank you for your business.";
form.Fax_ToFaxNumber = "415-555-0101";
form.AttachmentPath = samples;
form.AttachmentFileName = "invoice-1001.pdf";
form.DocType = "pdf";
forms.Initialize();

var attachments = 0;
var attachmentPass = true;   // the first form is delivered
var formsSent = 0;
for (var pass = 1, again = true; again; ++pass) {
  say("== pass " + pass);
  var login = forms.LoginType;
  var sending = forms.IsSendMethod();
  var service = forms.ServiceID, dtdId = forms.DTD_ID, dtdVersion = forms.DTD_Version;
  var docType = forms.XMLDocType;
  step = "AuthParams";
  forms.AuthParams("TICKET-0001", "AUTH-0001");
  step = "building";
  say("login type: " + login);
  say("send method delivering: " + (sending == 0 ? "yes" : "no"));
  say("service: " + service);
  say("DTD: " + dtdId + " " + dtdVersion);
  say("doctype: " + docType);
  var size = 0, body = "";
  if (attachmentPass) {
    forms.BuildData();
    size = forms.DataSize;
  } else {
    body = forms.BuildXML(0);
  }
  var url = forms.URL;
  say("send state: " + (attachmentPass ? "1 (attachment)" : "2 (form)"));
  say("url: " + urlKey(url) + " = " + url);
  say("content type: " + forms.ContentType);
  say("headers:");
  var headers = forms.RequestHeaderParams;
  if (headers !== "") say(headers.replace(/\n$/, ""));
  if (attachmentPass) {
    var pdf = files.OpenTextFile(samples + "\\invoice-1001.pdf", 1).ReadAll();
    say("body: " + size + " bytes, FNV-1a 64 " + fnv1a64(pdf));
  } else {
    say("body:");
    say(body.replace(/\n$/, ""));
  }
  var responseHeaders = forms.NumResponseHeaderParams;
  var response = "";
  if (attachmentPass) {
    var name = forms.ResponseHeaderParamName(1);
    var cookie = "messageid=ATT" + pad6(++attachments) + " ; Path=/";
    say("response: " + name + ": " + cookie);
    forms.SetResponseHeaderParamValue(name, cookie);
    response = "<AttachmentRs statusCode=\"0\" statusSeverity=\"INFO\"><MessageID>ATT" + pad6(attachments) +
               "</MessageID></AttachmentRs>";
  }
  var types = forms.ResponseTypesToParse;
  say("response types to parse: " + types);
  if (response === "") {
    say("response document: none");
  } else {
    say("response document:");
    say(response);
    var document = new ActiveXObject("Msxml2.DOMDocument.3.0");
    document.async = false;
    document.loadXML(response);
    var aggregates = [document.documentElement];
    for (var c = 0; c < document.documentElement.childNodes.length; ++c)
      aggregates.push(document.documentElement.childNodes.item(c));
    for (var g = 0; g < aggregates.length; ++g) {
      if (("," + types + ",").indexOf("," + aggregates[g].nodeName + ",") < 0) continue;
      var status = 0;
      try { forms.ParseResponse(aggregates[g]); } catch (e) { status = e.number; }
      say("ParseResponse(" + aggregates[g].nodeName + "): " + hex8(status));
    }
  }
  forms.OnSynchCompleted();
  if (attachmentPass) attachmentPass = false;
  else attachmentPass = ++formsSent < 1;
  again = forms.IsAnotherSynchNeeded;
}
say("== done");
} catch (e) {
  say(step + " failed: " + hex8(e.number));
}
// Wine's cscript has no WScript.StdOut: the transcript goes out as one echo.
WScript.Echo(out.join("\n"));
