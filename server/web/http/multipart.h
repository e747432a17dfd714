#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

#include "rastrel/platform/os/expected.h"

namespace rastrel::server::web {

/// Reads multipart/form-data (RFC 7578) as it comes, in pieces of any size, with as much memory as
/// its limits say whatever comes. Failures are a reason alone. On one thread.
class MultipartReader {
 public:
  static constexpr std::size_t HeadLimit = 8192;    ///< of a part's headers
  static constexpr std::size_t ValueLimit = 65536;  ///< of a part that is no file
  static constexpr std::size_t PartLimit = 100;
  static constexpr std::size_t BoundaryLimit = 200;

  /// What becomes of the parts. A failure of one ends the reading.
  struct Sink {
    std::function<Expected<void>(std::string name, std::string value)> field;
    /// A part with a file name begins; its bytes follow.
    std::function<Expected<void>(std::string name, std::string fileName)> file;
    std::function<Expected<void>(std::string_view bytes)> bytes;
  };

  /// `boundary` as Content-Type names it. Fails if it is empty or too long.
  [[nodiscard]] static Expected<MultipartReader> Create(const std::string& boundary, Sink sink);

  [[nodiscard]] Expected<void> Feed(std::string_view piece);
  /// Nothing more comes. Fails if the last boundary is missing.
  [[nodiscard]] Expected<void> Finish() const;

 private:
  enum class State { Preamble, AfterBoundary, Head, Value, File, End };

  MultipartReader(const std::string& boundary, Sink sink);
  // Each takes what it can of m_Held; false if it needs more.
  [[nodiscard]] Expected<bool> Step();
  [[nodiscard]] Expected<bool> TakeAfterBoundary();
  [[nodiscard]] Expected<bool> TakeHead();
  [[nodiscard]] Expected<bool> TakeContent();
  [[nodiscard]] Expected<void> BeginPart(std::string_view head);
  [[nodiscard]] Expected<void> Give(std::string_view content);

  std::string m_Delimiter;
  Sink m_Sink;
  State m_State = State::Preamble;
  std::string m_Held;
  std::string m_Name;
  std::string m_Value;
  std::size_t m_Parts = 0;
};

}  // namespace rastrel::server::web
