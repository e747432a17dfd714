#pragma once

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "host/drawing/exchange_pairs.h"
#include "host/drawing/path_sink.h"

namespace rastrel::drawing {

/// An entity of a DXF file: its kind and its pairs, in the file's order.
class ExchangeEntity {
 public:
  /// Reads the entity at the present pair, up to the one that begins the next. False if there is
  /// none: the file is over.
  bool Read(ExchangePairs& pairs);

  [[nodiscard]] std::string_view Kind() const { return m_Kind; }
  [[nodiscard]] bool Has(int code) const;
  /// The first value of a code; `usual` if there is none.
  [[nodiscard]] double Number(int code, double usual = 0) const;
  [[nodiscard]] int Int(int code, int usual = 0) const;
  [[nodiscard]] std::string_view Text(int code) const;
  /// The point whose x has that code; its y has the code 10 above.
  [[nodiscard]] CWorldPoint Point(int code) const { return {Number(code), Number(code + 10)}; }
  /// All values of a code, in order.
  [[nodiscard]] std::vector<double> Numbers(int code) const;

  /// A corner of a polyline and the arc to the next: tan of a quarter of its angle, 0 for a line.
  struct Corner {
    CWorldPoint point;
    double bulge = 0;
  };
  /// The corners of an LWPOLYLINE.
  [[nodiscard]] std::vector<Corner> Corners() const;

 private:
  struct Pair {
    int code;
    std::string_view value;
  };
  std::string_view m_Kind;
  std::vector<Pair> m_Pairs;
};

}  // namespace rastrel::drawing
