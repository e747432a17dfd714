#pragma once

#include <libxml/SAX2.h>
#include <libxml/globals.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <string>

#include "rastrel/platform/os/expected.h"

namespace rastrel::xml {

/// The parser's functions, by their names there without the prefix. They are bound when the first
/// document is read: the library and those that it needs, with 30 MB of character tables, would
/// double the start time of every program, and few of them read XML.
struct XmlLibrary {
  /// The one that is bound, or why it can't be had. Thread: any.
  [[nodiscard]] static const Expected<XmlLibrary>& Instance();

  decltype(&::xmlInitParser) InitParser = nullptr;
  decltype(&::xmlCreatePushParserCtxt) CreatePushParserCtxt = nullptr;
  decltype(&::xmlCtxtUseOptions) CtxtUseOptions = nullptr;
  decltype(&::xmlParseChunk) ParseChunk = nullptr;
  decltype(&::xmlStopParser) StopParser = nullptr;
  decltype(&::xmlFreeParserCtxt) FreeParserCtxt = nullptr;
  decltype(&::xmlBufUse) BufUse = nullptr;
  decltype(&::xmlSAX2GetLineNumber) SAX2GetLineNumber = nullptr;
  decltype(&::xmlSAX2GetColumnNumber) SAX2GetColumnNumber = nullptr;
  decltype(&::xmlSetStructuredErrorFunc) SetStructuredErrorFunc = nullptr;
  decltype(&::xmlSetGenericErrorFunc) SetGenericErrorFunc = nullptr;
  // The current thread's functions for faults; the header has macros of the plain names.
  decltype(&::__xmlStructuredError) StructuredError = nullptr;
  decltype(&::__xmlStructuredErrorContext) StructuredErrorContext = nullptr;
  decltype(&::__xmlGenericError) GenericError = nullptr;
  decltype(&::__xmlGenericErrorContext) GenericErrorContext = nullptr;

  /// Its version, numbered as LIBXML_VERSION is; 0 if it does not say.
  int version = 0;
};

}  // namespace rastrel::xml
