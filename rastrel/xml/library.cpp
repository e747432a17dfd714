#include "rastrel/xml/library.h"

#include "rastrel/platform/os/shared_library.h"
#include "rastrel/xml/availability.h"
#include "rastrel/xml/parser_internals.h"

namespace rastrel::xml {
namespace {

Expected<XmlLibrary> Load() {
  const auto library = os::SharedLibrary::Open(RASTREL_LIBXML2);
  if (!library) return FailureOf("the XML parser can't be had: " + Describe(library.Error()));
  XmlLibrary xml;
  const bool whole = library->Bind(xml.InitParser, "xmlInitParser") &&
                     library->Bind(xml.CreatePushParserCtxt, "xmlCreatePushParserCtxt") &&
                     library->Bind(xml.CtxtUseOptions, "xmlCtxtUseOptions") &&
                     library->Bind(xml.ParseChunk, "xmlParseChunk") &&
                     library->Bind(xml.StopParser, "xmlStopParser") &&
                     library->Bind(xml.FreeParserCtxt, "xmlFreeParserCtxt") &&
                     library->Bind(xml.BufUse, "xmlBufUse") &&
                     library->Bind(xml.SAX2GetLineNumber, "xmlSAX2GetLineNumber") &&
                     library->Bind(xml.SAX2GetColumnNumber, "xmlSAX2GetColumnNumber") &&
                     library->Bind(xml.SetStructuredErrorFunc, "xmlSetStructuredErrorFunc") &&
                     library->Bind(xml.SetGenericErrorFunc, "xmlSetGenericErrorFunc") &&
                     library->Bind(xml.StructuredError, "__xmlStructuredError") &&
                     library->Bind(xml.StructuredErrorContext, "__xmlStructuredErrorContext") &&
                     library->Bind(xml.GenericError, "__xmlGenericError") &&
                     library->Bind(xml.GenericErrorContext, "__xmlGenericErrorContext");
  if (!whole) return FailureOf("the XML parser " RASTREL_LIBXML2 " is of another kind");
  xml.InitParser();
  // Some builds have no such function. Then the version is one that was not checked.
  decltype(&::__xmlParserVersion) version = nullptr;
  if (library->Bind(version, "__xmlParserVersion"))
    xml.version = XmlParserInternals::VersionNumber(*version());
  return xml;
}

}  // namespace

const Expected<XmlLibrary>& XmlLibrary::Instance() {
  static const Expected<XmlLibrary> library = Load();
  return library;
}

Expected<void> LoadXmlParser() {
  const Expected<XmlLibrary>& library = XmlLibrary::Instance();
  if (!library) return library.Error();
  return {};
}

}  // namespace rastrel::xml
