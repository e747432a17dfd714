#pragma once

#include <cstdint>
#include <vector>

#include "interpreter/job_kind.h"
#include "rastrel/platform/os/expected.h"

/// The pages of PostScript with page comments, as parts of its file.
namespace rastrel::interpreter {

/// Bytes of a file.
struct FilePart {
  std::uint64_t offset = 0;
  std::uint64_t length = 0;
  bool operator==(const FilePart&) const = default;
};

/// A document in parts, which follow each other without a gap:
///
///     | head: comments, prolog, setup | page 1 | page 2 | ... | tail: from %%Trailer on |
struct DscPages {
  FilePart head;
  std::vector<FilePart> pages;
  FilePart tail;
};

/// Finds the pages of a PostScript job whose comments say that each can be run after the head
/// alone. The failure is the reason why they can't, a clause without a full stop: comments that are
/// missing, contradict each other or say that pages depend on each other, a page that does not
/// begin with a save and end with its restore, an end of the job within the file, or a file that
/// can't be read (with an error number). Comments can lie: only the user knows whether these don't.
[[nodiscard]] Expected<DscPages> FindDscPages(int file, const JobLayout& layout);

}  // namespace rastrel::interpreter
