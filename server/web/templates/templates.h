#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <list>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "rastrel/platform/os/expected.h"
#include "server/web/access/rate_limit.h"
#include "server/web/templates/field_values.h"
#include "server/web/templates/run_merge.h"
#include "server/web/templates/template_folder.h"

namespace rastrel::server::web {

/// A template with its fields.
struct TemplateForm {
  TemplateFile file;
  std::vector<TemplateField> fields;
};

/// A plate drawn with values.
struct PlatePicture {
  std::string png;  ///< empty if nothing could be drawn; `notes` say why
  int pages = 0;    ///< of the plate; the picture shows the first
  double widthCm = 0;
  double heightCm = 0;
  /// "refused" (value: why), "not-placed", "squeezed" and "beyond" (value: percent of the room),
  /// "missing-font" (value: its name), "note" and "left-out" (value: a sentence).
  std::vector<FieldNote> notes;
};

/// Why there is no picture now.
enum class PictureDelay {
  None,      ///< there is one
  TooOften,  ///< the caller has asked too often
  Busy,      ///< others are drawn
  Failed,    ///< the program could not be run
};

/// The shop's templates: their list, their fields, and plates drawn with a person's values. The
/// drawing is a process of its own. Any thread.
class Templates {
 public:
  struct Limits {
    int atOnce = 40;  ///< pictures of a person; then one after each interval
    RateLimit::Duration interval{250};
    int runs = 2;                           ///< of the program at a time, and one for each person
    std::chrono::milliseconds time{20000};  ///< of a run
    /// For another's run, where fields are read and samples are drawn.
    std::chrono::milliseconds wait{3000};
    std::size_t cacheBytes = 32'000'000;
  };

  /// `work` is a private directory for files that go with their run; native.
  Templates(std::string directory, std::string work, RunMerge run, const Limits& limits);
  ~Templates();
  Templates(const Templates&) = delete;
  Templates& operator=(const Templates&) = delete;

  [[nodiscard]] Expected<std::vector<TemplateFile>> List() const { return m_Folder.List(); }
  /// FailureCode::BadInput for a name that is none, or a template that has a fault; the message of
  /// the latter is for people and names the file. Any other failure is one of this machine.
  [[nodiscard]] Expected<TemplateForm> Form(const std::string& name);
  /// The same name without its fields.
  [[nodiscard]] Expected<TemplateFile> Find(const std::string& name) const {
    return m_Folder.Find(name);
  }

  struct Drawn {
    PictureDelay delay = PictureDelay::None;
    RateLimit::Duration wait{0};                  ///< until it can be tried again
    std::shared_ptr<const PlatePicture> picture;  ///< null if there is a delay
  };
  /// Draws a plate for a person, by name; nobody else is given a picture that was drawn for them.
  /// `blank` is as `--blank` takes it. REQUIRES: FaultsOf finds nothing.
  [[nodiscard]] Drawn Draw(const std::string& person, const TemplateForm& form,
                           const FieldValues& values, const std::string& blank);

  /// Draws a plate whose texts are the names of their fields, on a blank as large as the plate. It
  /// is the same for everybody, so that nothing of a person is in it; `person` is who asks.
  [[nodiscard]] Drawn Sample(const std::string& person, const TemplateForm& form);

  /// Writes the table of one row to a new private file; whoever asked removes it.
  [[nodiscard]] Expected<std::string> WriteTable(const TemplateForm& form,
                                                 const FieldValues& values) const;

 private:
  struct CachedForm {
    std::string name;
    std::string stamp;
    std::vector<TemplateField> fields;
  };
  struct CachedPicture {
    std::string key;
    std::shared_ptr<const PlatePicture> picture;
  };
  class Turn;

  // `owner` is the person that the picture is for, empty for everybody; `wait` for others' runs.
  [[nodiscard]] Drawn Take(const std::string& owner, const std::string& person,
                           const TemplateForm& form, const FieldValues& values,
                           const std::string& blank, std::chrono::milliseconds wait);
  [[nodiscard]] std::shared_ptr<const PlatePicture> Cached(const std::string& key);
  void Keep(std::string key, std::shared_ptr<const PlatePicture> picture);
  [[nodiscard]] Expected<PlatePicture> DrawNow(const TemplateForm& form, const FieldValues& values,
                                               const std::string& blank) const;

  const TemplateFolder m_Folder;
  const std::string m_Work;
  const RunMerge m_Run;
  const Limits m_Limits;
  RateLimit m_Rate;
  std::mutex m_Mutex;
  std::condition_variable m_Ended;
  int m_Running = 0;
  std::set<std::string> m_Drawing;      // persons whose picture is drawn
  std::list<CachedForm> m_Forms;        // the one used last first
  std::list<CachedPicture> m_Pictures;  // ...
  std::size_t m_PictureBytes = 0;
};

/// Whether a text is a size of a blank that pictures are drawn on: "7.5x2.5cm", "3x1in", each side
/// at most ten meters; or "plate".
[[nodiscard]] bool IsBlankSize(const std::string& text);

}  // namespace rastrel::server::web
