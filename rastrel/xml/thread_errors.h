#pragma once

#include "rastrel/xml/library.h"

namespace rastrel::xml {

/// Takes over the functions of this thread that the parser's library reports faults to which it
/// knows no document for, and returns them at its end. They belong to the program around us, so
/// this lives for the length of one call to the library. REQUIRES: the library is loaded.
class XmlThreadErrors {
 public:
  /// `handler` gets `user` with each fault; texts without a fault are dropped.
  XmlThreadErrors(void* user, xmlStructuredErrorFunc handler);
  ~XmlThreadErrors();
  XmlThreadErrors(const XmlThreadErrors&) = delete;
  XmlThreadErrors& operator=(const XmlThreadErrors&) = delete;

 private:
  xmlStructuredErrorFunc m_Structured;
  void* m_StructuredUser;
  xmlGenericErrorFunc m_Generic;
  void* m_GenericUser;
};

}  // namespace rastrel::xml
