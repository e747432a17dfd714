#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <utility>

#include "host/graphics/vector_path.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::drawing {

using graphics::VectorPath;

/// Takes the paths of a vector file in painting order, within the limits of vector_path.h.
class PathSink {
 public:
  /// `take` is called with each path; `note` with a sentence about a part that was left out.
  using TakePath = std::function<void(const VectorPath&)>;
  using TakeNote = std::function<void(const std::string&)>;
  PathSink(TakePath take, TakeNote note) : m_Take(std::move(take)), m_Note(std::move(note)) {}

  /// Takes a path. False if a limit is passed: then `Taken` fails, and nothing more is taken.
  bool Take(const VectorPath& path);
  void Note(const std::string& sentence) { m_Note(sentence); }

  /// Success while no limit is passed. The failure is a sentence about the file.
  [[nodiscard]] const Expected<void>& Taken() const { return m_Taken; }
  [[nodiscard]] std::size_t Paths() const { return m_Paths; }
  /// Fails if the file asks for more points than there may be, before they are made.
  bool HasRoomFor(std::size_t points);

 private:
  TakePath m_Take;
  TakeNote m_Note;
  Expected<void> m_Taken;
  std::size_t m_Paths = 0;
  std::size_t m_Points = 0;
};

}  // namespace rastrel::drawing
