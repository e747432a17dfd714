#pragma once

// What the benchmarks of imports have in common: the document that is imported into, and the
// comparison with the XML parser.

#include <memory>
#include <string>

#include "bench/measure.h"
#include "bench/require.h"
#include "host/document/document.h"
#include "host/document_host.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/xml/layer.h"

namespace rastrel::bench {

/// An empty document, installed as the host's.
class OpenDocument {
 public:
  OpenDocument() { host::SetHost(&m_Host); }
  ~OpenDocument() { host::SetHost(nullptr); }
  OpenDocument(const OpenDocument&) = delete;
  OpenDocument& operator=(const OpenDocument&) = delete;
  [[nodiscard]] document::Document& Get() { return m_Host.GetDocument(); }

 private:
  document::DocumentHost m_Host;
};

/// Measures `import(path, document)`, each time into a new document, against parsing the file's XML
/// alone.
template <class Import>
void CompareWithXml(const char* name, const std::wstring& path, Import import) {
  std::unique_ptr<OpenDocument> open;
  Compare(
      {.name = name,
       .peerName = "their XML alone",
       .rounds = 9,
       .limit = 5.0,
       .clock = Clock::Processor},
      [&] {
        open.reset();
        open = std::make_unique<OpenDocument>();
      },
      [&] { import(path, open->Get()); },
      [&] { Require(static_cast<bool>(LoadXmlFile(path)), "the file was not parsed"); });
}

}  // namespace rastrel::bench
