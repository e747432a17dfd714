#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "rastrel/xml/characters.h"
#include "rastrel/xml/library.h"
#include "rastrel/xml/parser.h"
#include "rastrel/xml/plain_scanner.h"

namespace rastrel::xml {

/// The parser of one document and all that it reports: it is pushed bytes, and turns the callbacks
/// into XmlEvents, with the limits (limits.h) and the mending that the parser lacks. The first
/// fault counts; after it nothing is handed on. One thread.
class XmlParserEvents {
 public:
  XmlParserEvents(XmlEncoding encoding, XmlNames& names, XmlEvents& events)
      : m_Encoding(encoding), m_Names(names), m_Events(events) {}
  XmlParserEvents(const XmlParserEvents&) = delete;
  XmlParserEvents& operator=(const XmlParserEvents&) = delete;

  /// Makes the parser and passes it the document's first bytes, of which it wants four to choose
  /// how it decodes the others. False if it failed. REQUIRES: the library is loaded.
  [[nodiscard]] bool Begin(std::string_view head);
  /// Passes it the next bytes; at the document's end none, with `isLast`. Callbacks
  /// may fail. False if the parser has seen a fault, reported or not.
  /// REQUIRES: Begin succeeded, and nothing failed since.
  [[nodiscard]] bool Push(std::string_view bytes, bool isLast);
  /// Hands over a CDATA section that was held until something else follows, if there is one.
  void EndCdata();

  /// The first failure, with line and column and without a path, if there was one.
  [[nodiscard]] const Expected<void>& State() const { return m_State; }
  [[nodiscard]] bool Failed() const { return !m_State; }
  /// Fails for a reason at the parser's place, unless something failed before.
  void Fail(std::string why);
  /// Fails so, unless something failed before.
  void Note(Failure failure);
  /// Fails if the receiver of the events refuses the document.
  void FollowEvents();

  /// How many elements are open.
  [[nodiscard]] int Depth() const { return m_Depth; }
  /// The namespaces in force, the innermost last. Valid until the next push.
  [[nodiscard]] std::span<const XmlBinding> Bindings() const { return m_Bindings; }
  /// The kind of encoding that the first bytes show; Unknown for XmlEncoding::Utf8.
  [[nodiscard]] XmlEncodingFamily Family() const { return m_Family; }
  /// Whether it follows an encoding that the document declares.
  [[nodiscard]] bool ReadsDeclaration() const { return m_Encoding == XmlEncoding::ByDocument; }
  /// Where the parser is, from 1.
  [[nodiscard]] int Line() const { return Xml().SAX2GetLineNumber(m_Context.get()); }
  [[nodiscard]] int Column() const { return Xml().SAX2GetColumnNumber(m_Context.get()); }
  /// The parser itself, for XmlParserInternals.
  [[nodiscard]] xmlParserCtxt& Context() const { return *m_Context; }

 private:
  struct ContextEnd {
    void operator()(xmlParserCtxt* context) const { Xml().FreeParserCtxt(context); }
  };
  // A place in the document.
  struct Place {
    int line = 0;
    int column = 0;
    bool operator==(const Place&) const = default;
  };

  static const XmlLibrary& Xml() { return *XmlLibrary::Instance(); }
  static XmlParserEvents& Of(void* user) { return *static_cast<XmlParserEvents*>(user); }
  static xmlSAXHandler Handler();
  static void OnFault(void* user, xmlErrorPtr error);

  void TakeFault(const xmlError& error);
  void FailInCdata(const std::string& why);
  void FailAfter(const Place& place, std::string_view before, const std::string& why);
  void OnDocument();
  void OnStart(const xmlChar* local, const xmlChar* prefix, int namespaces,
               const xmlChar** declared, int attributes, const xmlChar** values);
  void OnEnd();
  void OnText(std::string_view text);
  void OnComment(std::string_view text);
  void OnInstruction(const char* target, std::string_view data);
  void OnCdata(std::string_view text);
  void Declarations(int count, const xmlChar** declared);
  void Attributes(int count, const xmlChar** values);
  [[nodiscard]] const XmlName* NameOf(const xmlChar* prefix, const xmlChar* local);

  XmlEncoding m_Encoding;
  XmlNames& m_Names;
  XmlEvents& m_Events;
  std::unique_ptr<xmlParserCtxt, ContextEnd> m_Context;
  Expected<void> m_State;
  XmlEncodingFamily m_Family = XmlEncodingFamily::Unknown;
  bool m_KeepsNames = false;      // the parser keeps each name at one address
  std::string m_Head;             // the document's begin, until its declaration is read
  bool m_HasBegun = false;        // the declaration is read, or there is none
  bool m_IsOtherVersion = false;  // than 1.0
  int m_PassedFault = 0;          // code of a fault that is none here
  int m_Depth = 0;
  std::vector<XmlBinding> m_Bindings;
  std::vector<std::size_t> m_OuterBindings;  // how many each open element found in force
  std::vector<XmlStartAttribute> m_Attributes;
  bool m_InCdata = false;
  Place m_CdataBegin;             // where the section's text begins
  Place m_CdataEnd;               // where the last piece of the section ended
  std::uint64_t m_CdataNext = 0;  // the same, as bytes of the document
  std::string m_Cdata;
};

}  // namespace rastrel::xml
