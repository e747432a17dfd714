#pragma once

#include <cstddef>
#include <vector>

#include "cutting/view/cut_scene.h"

namespace rastrel::cutting {

/// Where the knife is.
struct KnifePlace {
  std::size_t stroke = 0;  ///< being worked, or gone to
  int pass = 1;            ///< from 1 on
  bool isTravel = false;   ///< on its way to the stroke, lifted
  Point at;
  double done = 0;  ///< finished length of the pass; 0 on its way
};

/// The whole way of the knife over the strokes of a scene that are shown, in their order, from the
/// page's origin on: each is gone to, and followed as often as it has passes. A closed stroke's
/// next pass begins where the one before it ended; an open one's is gone back to. Keeps no stroke:
/// the scene must outlive it, and must not change which groups it shows.
class KnifeWay {
 public:
  explicit KnifeWay(const CutScene& scene);

  /// Millimetres, of both together.
  [[nodiscard]] double Length() const { return m_Length; }
  [[nodiscard]] double TravelLength() const { return m_Travel; }
  [[nodiscard]] std::size_t Strokes() const { return m_Strokes; }
  /// After that much of the way; the ends beyond them. REQUIRES: Strokes() > 0.
  [[nodiscard]] KnifePlace At(double length) const;
  /// The length after which the n-th shown stroke begins to be worked, from 0 on; Length() beyond
  /// the last.
  [[nodiscard]] double BeginOf(std::size_t shown) const;
  /// How many shown strokes have begun to be worked or gone to at that length: from 1 to Strokes().
  [[nodiscard]] std::size_t CountAt(double length) const;

 private:
  struct Step {
    double begin;  // of the travel to it
    double work;   // begin of its pass
    std::size_t stroke;
    int pass;
    std::size_t shown;
    Point from;
  };
  [[nodiscard]] const Step& StepAt(double length) const;

  const CutScene* m_Scene;
  std::vector<Step> m_Steps;
  double m_Length = 0;
  double m_Travel = 0;
  std::size_t m_Strokes = 0;
};

}  // namespace rastrel::cutting
