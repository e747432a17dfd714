#pragma once

#include <optional>

#include "interpreter/interpreter.h"

namespace rastrel::interpreter {

/// The beginning of a run, as its listener has heard it already.
struct HeardBeginning {
  bool isInterpreting = false;
  bool isConverting = false;
};

/// Makes the pages of PostScript whose comments name them in several interpreters at the same
/// time, each with the job's head, its own pages and the tail, if the user has asked for that. The
/// result is that of PrintPages, or nothing: then no page is there, and the job is to be run as a
/// whole. A warning to `listener` says why, unless there is but one interpreter to be had;
/// `heard` is its other news.
///
/// Nothing is the result for jobs that are no such PostScript, and as soon as any interpreter says
/// anything about the job, fails, or makes other than its pages: a job that depends on earlier
/// pages would.
[[nodiscard]] std::optional<Expected<unsigned>> PrintInParts(const RunRequest& request,
                                                             const RunDirectory& directory,
                                                             RunListener& listener,
                                                             Guardian& guardian,
                                                             HeardBeginning& heard);

}  // namespace rastrel::interpreter
