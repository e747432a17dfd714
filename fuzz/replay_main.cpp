// Runs a fuzz target on every file of a folder: what libFuzzer found once stays found.
//
//   NAME_replay FOLDER

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace {

std::vector<std::uint8_t> ReadAll(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  const std::vector<char> text{std::istreambuf_iterator<char>(stream), {}};
  return {text.begin(), text.end()};
}

std::vector<std::filesystem::path> FilesOf(const std::filesystem::path& folder) {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    if (entry.is_regular_file()) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: " << argv[0] << " FOLDER\n";
    return 2;
  }
  const std::vector<std::filesystem::path> files = FilesOf(argv[1]);
  if (files.empty()) {
    std::cerr << argv[1] << " is empty\n";
    return 1;
  }
  for (const std::filesystem::path& file : files) {
    // The name first, so that a crash shows which input it was.
    std::cout << file.filename().string() << std::endl;
    const std::vector<std::uint8_t> bytes = ReadAll(file);
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    // Every input cut short is one more: a reader must cope with an end at any byte.
    const std::size_t step = std::max<std::size_t>(1, bytes.size() / 256);
    for (std::size_t length = 0; length < bytes.size(); length += step)
      LLVMFuzzerTestOneInput(bytes.data(), length);
  }
  return 0;
}
