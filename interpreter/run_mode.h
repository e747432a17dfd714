#pragma once

#include "interpreter/job_kind.h"
#include "interpreter/page_maker.h"
#include "interpreter/run_start.h"

namespace rastrel::interpreter {

/// How far a run has come.
struct RunProgress {
  const JobLayout& job;
  unsigned pages = 0;     ///< that are made
  unsigned begun = 0;     ///< whose output the interpreter has begun
  bool measured = false;  ///< the measure was reported
  double sentShare = 0;   ///< of the job's bytes, 0 to 1
  double pageShare = 0;   ///< of the present page's pixels, 0 to 1
};

/// In which a kind of run differs from the others.
class RunMode {
 public:
  virtual ~RunMode() = default;
  /// The files that the interpreter runs besides the job.
  [[nodiscard]] virtual const RunScript& Script() const = 0;
  /// The treatment of the pages.
  [[nodiscard]] virtual PageTask Pages() const { return {}; }
  /// Whether a run that ends without a page has failed.
  [[nodiscard]] virtual bool NeedsPage() const { return true; }
  /// Whether all that is wanted lies there, whatever the job would still do.
  [[nodiscard]] virtual bool HasEnough(const RunProgress&) const { return false; }
  /// Which share of the run is done, 0 to 1, as far as that can be said.
  [[nodiscard]] virtual double Share(const RunProgress& progress) const = 0;
};

/// All pages become directories.
class PrintMode : public RunMode {
 public:
  [[nodiscard]] const RunScript& Script() const override { return PrintScript(); }
  [[nodiscard]] double Share(const RunProgress& progress) const override;
};

/// The page that the job leaves open becomes a directory.
class OpenPageMode final : public PrintMode {
 public:
  [[nodiscard]] const RunScript& Script() const override { return OpenPageScript(); }
};

/// Pages are thrown away.
class InstallMode final : public PrintMode {
 public:
  [[nodiscard]] PageTask Pages() const override { return {.keeps = false}; }
  [[nodiscard]] bool NeedsPage() const override { return false; }
};

/// The first page becomes a directory.
class PictureMode final : public RunMode {
 public:
  [[nodiscard]] const RunScript& Script() const override { return PictureScript(); }
  [[nodiscard]] PageTask Pages() const override { return {.maximum = 1}; }
  [[nodiscard]] bool HasEnough(const RunProgress& progress) const override;
  [[nodiscard]] double Share(const RunProgress& progress) const override;
};

/// The first page is measured. Its progress is not reported.
class MeasureMode final : public RunMode {
 public:
  [[nodiscard]] const RunScript& Script() const override { return MeasureScript(); }
  [[nodiscard]] PageTask Pages() const override { return {.maximum = 1}; }
  [[nodiscard]] bool HasEnough(const RunProgress& progress) const override;
  [[nodiscard]] double Share(const RunProgress&) const override { return 0; }
};

}  // namespace rastrel::interpreter
