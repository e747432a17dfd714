// The scans of PostScript comments against literal ones that seek and read for every line.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

#include "tests/support/memory_file.h"
#include "tests/support/ps_scan_answers.h"
#include "tests/support/ps_scan_files.h"

namespace {

void ExpectNoDifference(const rastrel::test::MemoryFile& file, const std::string& content) {
  file.Write(content);
  const std::string differences = rastrel::test::DifferencesFromLiteral(file.Path());
  if (differences.empty()) return;
  std::cerr << "differs:" << differences << '\n';
  std::abort();
}

// Inputs are short and lines of interest are long: a byte 1 and a byte 2 become as many bytes as
// the two after them say.
std::string Expand(const std::uint8_t* bytes, std::size_t size) {
  std::string content;
  for (std::size_t index = 0; index < size; ++index) {
    if (bytes[index] == 1 && index + 3 < size) {
      const std::size_t count = bytes[index + 1] * 256U + bytes[index + 2];
      content.append(count % 9000, static_cast<char>(bytes[index + 3]));
      index += 3;
    } else {
      content.push_back(static_cast<char>(bytes[index]));
    }
    if (content.size() > 400000) break;
  }
  return content;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  static const rastrel::test::MemoryFile file;
  const std::string content = Expand(bytes, size);
  ExpectNoDifference(file, content);
  ExpectNoDifference(file, "%!PS-Adobe\n" + content);
  // The input as a seed: files made of comments, tokens and line ends.
  std::uint32_t seed = 2166136261;
  for (std::size_t index = 0; index < size; ++index) seed = (seed ^ bytes[index]) * 16777619;
  ExpectNoDifference(file, rastrel::test::PsScanFiles(seed).Next());
  return 0;
}
