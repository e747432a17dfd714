#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"

namespace rastrel::cutting {

/// One zlib stream. Used on one thread.
class Deflate {
 public:
  /// Fails if there is no memory.
  [[nodiscard]] static Expected<Deflate> Start();
  ~Deflate();
  Deflate(Deflate&& other) noexcept;
  Deflate& operator=(Deflate&&) = delete;
  Deflate(const Deflate&) = delete;
  Deflate& operator=(const Deflate&) = delete;

  /// Takes the next bytes, and returns those of the stream that are ready, perhaps none.
  [[nodiscard]] Expected<std::string> Add(std::string_view bytes);
  /// The rest of the stream. Nothing is added after it.
  [[nodiscard]] Expected<std::string> End();

 private:
  struct Stream;
  explicit Deflate(std::unique_ptr<Stream> stream);
  [[nodiscard]] Expected<std::string> Run(std::string_view bytes, int flush);

  std::unique_ptr<Stream> m_Stream;
};

}  // namespace rastrel::cutting
