#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "cutting/dxf/dxf_groups.h"
#include "cutting/job/cut_job.h"
#include "rastrel/platform/os/expected.h"

namespace rastrel::cutting {

struct DxfLayer {
  PaintColor color;
  double lineWidth = 0;   ///< millimetres
  bool isHidden = false;  ///< off or frozen
};

struct DxfBlock {
  Point base;
  std::vector<DxfObject> objects;
};

/// The parts of a file that matter for its objects. Texts belong to the file's text.
struct DxfFile {
  int unit = 0;                            ///< $INSUNITS; 0: none
  bool isUtf8 = false;                     ///< else in the code page of the drawing
  std::map<std::string, DxfLayer> layers;  ///< by DxfKey of their names
  std::map<std::string, DxfBlock> blocks;  ///< by DxfKey of their names
  std::vector<DxfObject> objects;          ///< of the drawing itself
};

/// A name for comparison, which does not tell upper from lower case.
[[nodiscard]] std::string DxfKey(std::string_view name);

/// Millimetres of a line weight in hundredths of one; 0 for those that have a meaning of their own.
[[nodiscard]] double DxfLineWidth(int weight);

/// Takes a file apart. Fails as ReadDxf.
[[nodiscard]] Expected<DxfFile> TakeDxfApart(std::string_view text, const std::string& name);

}  // namespace rastrel::cutting
