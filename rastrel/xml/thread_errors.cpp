#include "rastrel/xml/thread_errors.h"

namespace rastrel::xml {
namespace {

extern "C" {
void DropMessage(void*, const char*, ...) {}
}

const XmlLibrary& Xml() { return *XmlLibrary::Instance(); }

}  // namespace

XmlThreadErrors::XmlThreadErrors(void* user, xmlStructuredErrorFunc handler)
    : m_Structured(*Xml().StructuredError()),
      m_StructuredUser(*Xml().StructuredErrorContext()),
      m_Generic(*Xml().GenericError()),
      m_GenericUser(*Xml().GenericErrorContext()) {
  Xml().SetStructuredErrorFunc(user, handler);
  Xml().SetGenericErrorFunc(nullptr, DropMessage);
}

XmlThreadErrors::~XmlThreadErrors() {
  Xml().SetStructuredErrorFunc(m_StructuredUser, m_Structured);
  Xml().SetGenericErrorFunc(m_GenericUser, m_Generic);
}

}  // namespace rastrel::xml
