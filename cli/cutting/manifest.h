#pragma once

#include <string>
#include <vector>

#include "cli/console/options.h"
#include "cutting/job/cut_job.h"
#include "cutting/nest/nest.h"
#include "cutting/panel/panel.h"

/// Lists and pictures of several results, for the people and programs that put them together.
namespace rastrel::cli {

/// The files of a sheet or panel. `print` is empty without --print.
struct ResultFiles {
  std::string cut;
  std::string print;
};

/// With --manifest: the sheets with their files, and where each piece lies, as JSON
/// (docs/formats/manifests.md). Throws CommandError.
void WriteNestManifest(const Invocation& invocation, const std::vector<cutting::NestInput>& inputs,
                       const cutting::NestOptions& options, const cutting::NestResult& result,
                       const std::vector<ResultFiles>& sheets);

/// With --manifest: the panels with their files and places, as JSON; with --picture: how they make
/// the sign together, as SVG or PNG. Throws CommandError.
void WriteAssembly(const Invocation& invocation, const cutting::CutJob& job,
                   const cutting::PanelOptions& options, const std::vector<cutting::Panel>& panels,
                   const std::vector<ResultFiles>& files);

/// Throws CommandError for names of --manifest and --picture with other endings than .json, .svg
/// and .png.
void CheckManifestNames(const Invocation& invocation);

}  // namespace rastrel::cli
