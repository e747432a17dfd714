#pragma once

#include "rastrel/imports/cr2/cr2_records.h"
#include "rastrel/imports/cr2/object_list.h"
#include "rastrel/imports/document_host.h"

namespace rastrel::imports {

/// Replaces the replaceable items of the texts among loaded objects by a frame's variables. An item
/// whose text is a number, read from its start, is replaced by the variable of that number if the
/// frame has it. Objects derived from a text are derived again.
void ReplaceVariables(const DocumentHost& document, const ObjectList& objects,
                      const CR2_GRAPHIC_FRAME& frame);

}  // namespace rastrel::imports
