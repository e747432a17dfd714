#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "cli/console/options.h"
#include "cli/cutting/page_picture.h"
#include "cutting/job/cut_job.h"

/// Commands that read or write several cut jobs.
namespace rastrel::cli {

/// The name of one of several results: "sign.plt" and 3 make "sign-3.plt".
[[nodiscard]] std::string NumberedName(const std::string& path, std::size_t number);

/// A file's job, and with --print the picture of its page.
struct CutPage {
  cutting::CutJob job;
  std::shared_ptr<PagePicture> picture;  ///< null without --print
};

/// The page of one file, by the command's rules. Throws CommandError, also for a cut job with
/// --print, which has no picture.
[[nodiscard]] CutPage PageOfFile(const Invocation& invocation, const std::string& file);

/// Gives the job the way of the tool and writes it to that name in the form of its ending; with
/// --marks files for cutters count from the first mark. Throws CommandError.
void WriteJobAs(const Invocation& invocation, cutting::CutJob job, const std::string& name);

}  // namespace rastrel::cli
