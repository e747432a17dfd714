#include "cutting/print/deflate.h"

#include <zlib.h>

#include <array>
#include <utility>

namespace rastrel::cutting {

struct Deflate::Stream {
  z_stream state{};
  bool isOpen = false;

  Stream() = default;
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  ~Stream() {
    if (isOpen) deflateEnd(&state);
  }
};

Deflate::Deflate(std::unique_ptr<Stream> stream) : m_Stream(std::move(stream)) {}
Deflate::Deflate(Deflate&& other) noexcept = default;
Deflate::~Deflate() = default;

Expected<Deflate> Deflate::Start() {
  auto stream = std::make_unique<Stream>();
  // Pages are mostly white or flat, where the fastest level is nearly as small as the others.
  if (deflateInit(&stream->state, Z_BEST_SPEED) != Z_OK)
    return FailureOf("there is no memory to compress pixels");
  stream->isOpen = true;
  return Deflate(std::move(stream));
}

Expected<std::string> Deflate::Run(std::string_view bytes, int flush) {
  z_stream& state = m_Stream->state;
  // The library's type has no const; it does not write there.
  state.next_in = reinterpret_cast<Bytef*>(
      const_cast<char*>(bytes.data()));  // NOLINT(*-const-cast,*-reinterpret-cast)
  state.avail_in = static_cast<uInt>(bytes.size());
  std::string ready;
  std::array<char, 16 * 1024> block{};
  do {
    state.next_out = reinterpret_cast<Bytef*>(block.data());  // NOLINT(*-reinterpret-cast)
    state.avail_out = static_cast<uInt>(block.size());
    if (deflate(&state, flush) == Z_STREAM_ERROR) return FailureOf("pixels can't be compressed");
    ready.append(block.data(), block.size() - state.avail_out);
  } while (state.avail_out == 0);
  return ready;
}

Expected<std::string> Deflate::Add(std::string_view bytes) { return Run(bytes, Z_NO_FLUSH); }
Expected<std::string> Deflate::End() { return Run({}, Z_FINISH); }

}  // namespace rastrel::cutting
