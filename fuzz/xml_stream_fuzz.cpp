// Documents as a stream, their elements taken whole where they can be, and part by part: no handler
// sees a difference.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

#include "tests/support/xml_streaming.h"

namespace {

void ExpectNoDifference(const std::string& document, std::size_t piece, std::uint32_t choices) {
  const std::string differences = rastrel::test::DifferencesInStreaming(document, piece, choices);
  if (differences.empty()) return;
  std::cerr << differences << "\nin\n" << document << '\n';
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  // The last byte says how it is read.
  const std::uint32_t choices = size == 0 ? 0 : bytes[size - 1];
  const std::string document(reinterpret_cast<const char*>(bytes), size == 0 ? 0 : size - 1);
  ExpectNoDifference(document, 1 + size % 9, choices);
  // The input as a seed: tables as programs write them, and worse.
  std::uint32_t seed = 2166136261;
  for (std::size_t index = 0; index < size; ++index) seed = (seed ^ bytes[index]) * 16777619;
  ExpectNoDifference(rastrel::test::XmlTables(seed).Next(6), 1 + size % 50, seed);
  return 0;
}
