// Documents through the XML layer, whole, in pieces and as a stream, against the parser's own tree.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

#include "rastrel/job/app_log.h"
#include "rastrel/platform/os/text.h"
#include "rastrel/xml/layer.h"
#include "tests/support/memory_file.h"
#include "tests/support/xml_oracle.h"

namespace {

void ExpectNoDifference(const std::string& document, std::size_t pieces) {
  const std::string differences = rastrel::test::DifferencesFromLiteral(document, pieces);
  if (differences.empty()) return;
  std::cerr << "differs " << differences << "\nin\n" << document << '\n';
  std::abort();
}

// A document that the layer writes, it reads back as the same.
void ExpectRoundTrip(const std::string& document) {
  const rastrel::test::MemoryFile file;
  file.Write(document);
  const XmlNode root = LoadXmlFile(file.Wide());
  if (!root) return;
  if (!SaveNodeXml(root, file.Wide())) std::abort();
  const XmlNode again = LoadXmlFile(file.Wide());
  if (!again || rastrel::test::DumpOf(again) != rastrel::test::DumpOf(root)) {
    std::cerr << "is written as another\n" << document << '\n';
    std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string document(reinterpret_cast<const char*>(bytes), size);
  const std::size_t pieces = 1 + size % 9;
  // Every refusal is logged; a new log begins empty.
  static unsigned runs = 0;
  if (++runs % 4096 == 0) CAppLog::DeleteInstance();
  ExpectNoDifference(document, pieces);
  ExpectRoundTrip(document);
  // Nothing to compare with: bytes that are no UTF-8 become characters here.
  static_cast<void>(LoadXmlString(rastrel::os::WideFromUtf8(document)));
  // The input as a seed: documents made of all that there is.
  std::uint32_t seed = 2166136261;
  for (std::size_t index = 0; index < size; ++index) seed = (seed ^ bytes[index]) * 16777619;
  ExpectNoDifference(rastrel::test::XmlDocuments(seed).Next(), pieces);
  return 0;
}
