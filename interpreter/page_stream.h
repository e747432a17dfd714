#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace rastrel::interpreter {

/// Size of a page in pixels, and samples of each pixel: 1 for gray, 3 for RGB. 8 bits each.
struct PageSize {
  unsigned width = 0;
  unsigned height = 0;
  unsigned channels = 0;

  [[nodiscard]] std::size_t RowBytes() const { return std::size_t{width} * channels; }
};

/// Who receives the pages of a stream. Each operation returns false to end the stream, and then
/// says why by its own means.
class PageReceiver {
 public:
  virtual ~PageReceiver() = default;
  virtual bool BeginPage(const PageSize& size) = 0;
  /// The next bytes of the page, row by row from the top, in pieces of any size.
  virtual bool AddPixels(std::span<const std::byte> bytes) = 0;
  /// All pixels have come.
  virtual bool EndPage() = 0;
};

/// Cuts the interpreter's pixel stream, binary PPM or PGM images one after the other, into pages.
/// Holds no more than a header.
class PageStream {
 public:
  explicit PageStream(PageReceiver& receiver) : m_Receiver(receiver) {}

  /// Takes the next bytes. False if the receiver ended the stream or the bytes are no such images;
  /// Reason() is empty in the first case.
  [[nodiscard]] bool Add(std::span<const std::byte> bytes);
  /// False if the stream ended within a page; Reason() says so.
  [[nodiscard]] bool Finish();
  [[nodiscard]] const std::string& Reason() const { return m_Reason; }
  /// Which share of the present page has come, from 0 to 1; 0 between pages.
  [[nodiscard]] double PresentShare() const;

  static constexpr std::size_t HeaderLimit = 1024;

 private:
  bool AddHeaderByte(char byte);
  bool FinishToken();
  bool Fail(const char* reason);

  PageReceiver& m_Receiver;
  PageSize m_Size;
  std::size_t m_Rest = 0;   // bytes of the present page still to come
  std::size_t m_Whole = 0;  // bytes of the present page
  std::string m_Token;
  unsigned m_TokenCount = 0;
  std::size_t m_HeaderBytes = 0;
  bool m_InComment = false;
  std::string m_Reason;
};

}  // namespace rastrel::interpreter
