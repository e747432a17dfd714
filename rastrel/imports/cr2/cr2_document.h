#pragma once

#include <memory>
#include <vector>

#include "rastrel/imports/cr2/cr2_records.h"
#include "rastrel/platform/values/color.h"

namespace rastrel::imports {

/// A parsed template of either generation.
struct Cr2Document {
  CR2_TABLE_SIZE tableSize;
  CR2_TEMPLATE plateTemplate;
  CR2_CUTLINE cutLine;
  std::vector<CR2_GRAPHIC> graphics;  ///< the graphics directory
  std::vector<CR2_PLATE> plates;
  std::vector<std::unique_ptr<CVKColor>> outputFilter;  ///< cr2 alone: colors that are left out
};

}  // namespace rastrel::imports
