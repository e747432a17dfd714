#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "cutting/job/cut_job.h"

namespace rastrel::cutting {

enum class DxfVersion {
  R12,   ///< AC1009: curves as straight lines
  R2000  ///< AC1015: curves as splines
};

/// "r12", "r2000".
[[nodiscard]] std::string_view NameOf(DxfVersion version);
[[nodiscard]] std::optional<DxfVersion> DxfVersionOf(std::string_view name);

/// A drawing in millimetres with a layer an operation. `toDevice` goes from the page's millimetres
/// to the drawing's; `tolerance` is looked at for R12 alone.
[[nodiscard]] std::string DxfText(const CutJob& job, const Transform& toDevice, double tolerance,
                                  DxfVersion version);

}  // namespace rastrel::cutting
