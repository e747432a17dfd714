// Records of paths from the drawing program, which may be in a foreign file's hands: those that are
// taken are written again as they were, and can be put into a document and saved.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

#include "host/document/document_file.h"
#include "host/graphics/vector_path.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace rastrel;
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
  const std::string_view body(reinterpret_cast<const char*>(data), size);
  auto path = graphics::ReadPathRecord(body);
  if (!path) return 0;
  const auto again = graphics::ReadPathRecord(graphics::PathRecord(*path));
  if (!again || !(*again == *path)) std::abort();
  document::Document document;
  document.Insert(document.Create(std::move(path->shape)), host::DocumentRoot);
  const std::string text = document::DocumentText(document);
  const auto read = document::ReadDocumentText(text);
  if (!read || document::DocumentText(**read) != text) std::abort();
  return 0;
}
