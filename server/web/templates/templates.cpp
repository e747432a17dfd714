#include "server/web/templates/templates.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/random_digits.h"
#include "rastrel/platform/os/tree.h"
#include "server/web/templates/merge_notes.h"

namespace rastrel::server::web {
namespace {

constexpr std::size_t FormsLimit = 200;
constexpr std::uint64_t PictureLimit = 8'000'000;
constexpr const char* PicturePixels = "1000";
constexpr double LongestSide = 1000;  // centimetres
constexpr int RandomBytes = 16;

Expected<std::string> NewName(const std::string& work) {
  const auto digits = os::RandomDigits(RandomBytes);
  if (!digits) return digits.Error();
  return work + "/" + *digits;
}

// A directory for the files of a run, which goes with it.
class WorkDirectory {
 public:
  static Expected<WorkDirectory> Make(const std::string& work) {
    auto path = NewName(work);
    if (!path) return path.Error();
    if (auto made = os::MakeDirectory(os::FromNative(*path), os::Access::Private); !made)
      return made.Error();
    return WorkDirectory(*std::move(path));
  }
  ~WorkDirectory() {
    if (!m_Path.empty()) static_cast<void>(os::RemoveNativeTree(m_Path));
  }
  WorkDirectory(WorkDirectory&& other) noexcept : m_Path(std::exchange(other.m_Path, {})) {}
  WorkDirectory& operator=(WorkDirectory&&) = delete;
  WorkDirectory(const WorkDirectory&) = delete;
  WorkDirectory& operator=(const WorkDirectory&) = delete;
  [[nodiscard]] std::string File(const char* name) const { return m_Path + "/" + name; }

 private:
  explicit WorkDirectory(std::string path) : m_Path(std::move(path)) {}
  std::string m_Path;
};

// Parts of a key: none can be taken for another's beginning.
void AppendPart(std::string& key, std::string_view part) {
  key += std::to_string(part.size());
  key += ':';
  key += part;
}

std::string KeyOf(const std::string& owner, const TemplateForm& form, const FieldValues& values,
                  const std::string& blank) {
  std::string key;
  for (const std::string& part : {owner, form.file.path, form.file.stamp, blank})
    AppendPart(key, part);
  for (const auto& [name, value] : values) {
    AppendPart(key, name);
    AppendPart(key, value);
  }
  return key;
}

bool IsSide(std::string_view text, double centimetres) {
  double number = 0;
  const auto read =
      std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
  return read.ec == std::errc() && read.ptr == text.data() + text.size() && number > 0 &&
         number * centimetres <= LongestSide;
}

}  // namespace

// The right to run the program, for one person or, with an empty name, for none.
class Templates::Turn {
 public:
  Turn(Templates& owner, std::string person) : m_Owner(owner), m_Person(std::move(person)) {}
  ~Turn() {
    if (!m_IsTaken) return;
    {
      const std::lock_guard lock(m_Owner.m_Mutex);
      --m_Owner.m_Running;
      if (!m_Person.empty()) m_Owner.m_Drawing.erase(m_Person);
    }
    m_Owner.m_Ended.notify_all();
  }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

  /// Waits so long at most. False if it is not to be had.
  [[nodiscard]] bool Take(std::chrono::milliseconds wait) {
    std::unique_lock lock(m_Owner.m_Mutex);
    m_IsTaken = m_Owner.m_Ended.wait_for(lock, wait, [this] {
      return m_Owner.m_Running < m_Owner.m_Limits.runs && !m_Owner.m_Drawing.contains(m_Person);
    });
    if (!m_IsTaken) return false;
    ++m_Owner.m_Running;
    if (!m_Person.empty()) m_Owner.m_Drawing.insert(m_Person);
    return true;
  }

 private:
  Templates& m_Owner;
  const std::string m_Person;
  bool m_IsTaken = false;
};

Templates::Templates(std::string directory, std::string work, RunMerge run, const Limits& limits)
    : m_Folder(std::move(directory)),
      m_Work(std::move(work)),
      m_Run(std::move(run)),
      m_Limits(limits),
      m_Rate(limits.atOnce, limits.interval) {}

Templates::~Templates() = default;

Expected<TemplateForm> Templates::Form(const std::string& name) {
  auto file = m_Folder.Find(name);
  if (!file) return file.Error();
  {
    const std::lock_guard lock(m_Mutex);
    const auto known = std::ranges::find(m_Forms, name, &CachedForm::name);
    if (known != m_Forms.end() && known->stamp == file->stamp) {
      m_Forms.splice(m_Forms.begin(), m_Forms, known);
      return TemplateForm{*std::move(file), known->fields};
    }
  }
  if (!m_Run) return FailureOf("templates can't be read here");
  Turn turn(*this, {});
  if (!turn.Take(m_Limits.wait)) return FailureOf("too much is drawn at present");
  const auto run = m_Run({"merge", file->path, "--fields", "--json"}, m_Limits.time);
  if (!run) return run.Error();
  auto fields = FieldsOfLines(run->output, run->status);
  if (!fields) return fields.Error();
  const std::lock_guard lock(m_Mutex);
  m_Forms.remove_if([&](const CachedForm& form) { return form.name == name; });
  m_Forms.push_front({name, file->stamp, *fields});
  if (m_Forms.size() > FormsLimit) m_Forms.pop_back();
  return TemplateForm{*std::move(file), *std::move(fields)};
}

Templates::Drawn Templates::Draw(const std::string& person, const TemplateForm& form,
                                 const FieldValues& values, const std::string& blank) {
  return Take("of " + person, person, form, values, blank, {});
}

Templates::Drawn Templates::Sample(const std::string& person, const TemplateForm& form) {
  return Take("", person, form, SampleValues(form.fields), "plate", m_Limits.wait);
}

Templates::Drawn Templates::Take(const std::string& owner, const std::string& person,
                                 const TemplateForm& form, const FieldValues& values,
                                 const std::string& blank, std::chrono::milliseconds wait) {
  Drawn drawn;
  std::string key = KeyOf(owner, form, values, blank);
  drawn.picture = Cached(key);
  if (drawn.picture) return drawn;
  drawn.wait = m_Rate.Take(person);
  if (drawn.wait.count() > 0) {
    drawn.delay = PictureDelay::TooOften;
    return drawn;
  }
  Turn turn(*this, owner);
  if (!turn.Take(wait)) {
    drawn.delay = PictureDelay::Busy;
    drawn.wait = RateLimit::Duration(1000);
    return drawn;
  }
  auto picture = DrawNow(form, values, blank);
  if (!picture) {
    drawn.delay = PictureDelay::Failed;
    return drawn;
  }
  drawn.picture = std::make_shared<const PlatePicture>(*std::move(picture));
  Keep(std::move(key), drawn.picture);
  return drawn;
}

Expected<PlatePicture> Templates::DrawNow(const TemplateForm& form, const FieldValues& values,
                                          const std::string& blank) const {
  if (!m_Run) return FailureOf("templates can't be drawn here");
  const auto place = WorkDirectory::Make(m_Work);
  if (!place) return place.Error();
  const std::string table = place->File("values.csv");
  const std::string result = place->File("plate.png");
  if (auto written =
          os::ReplaceFile(os::FromNative(table), TableOf(form.fields, values), os::Access::Private);
      !written)
    return written.Error();
  const auto run = m_Run({"merge", form.file.path, "--data", table, "--blank", blank, "--pixels",
                          PicturePixels, "--page", "1", "-o", result, "--json"},
                         m_Limits.time);
  if (!run) return run.Error();
  PlatePicture picture;
  ReadMergeLines(run->output, values, picture);
  if (auto png = os::ReadWholeFile(os::FromNative(result), PictureLimit)) picture.png = *png;
  if (picture.png.empty() && picture.notes.empty())
    picture.notes.push_back({"", "refused", "the plate can't be drawn"});
  return picture;
}

Expected<std::string> Templates::WriteTable(const TemplateForm& form,
                                            const FieldValues& values) const {
  auto path = NewName(m_Work);
  if (!path) return path.Error();
  if (auto written =
          os::ReplaceFile(os::FromNative(*path), TableOf(form.fields, values), os::Access::Private);
      !written)
    return written.Error();
  return path;
}

std::shared_ptr<const PlatePicture> Templates::Cached(const std::string& key) {
  const std::lock_guard lock(m_Mutex);
  const auto found = std::ranges::find(m_Pictures, key, &CachedPicture::key);
  if (found == m_Pictures.end()) return nullptr;
  m_Pictures.splice(m_Pictures.begin(), m_Pictures, found);
  return found->picture;
}

void Templates::Keep(std::string key, std::shared_ptr<const PlatePicture> picture) {
  const auto bytesOf = [](const CachedPicture& one) {
    return one.key.size() + one.picture->png.size() + sizeof(CachedPicture);
  };
  const std::lock_guard lock(m_Mutex);
  m_Pictures.push_front({std::move(key), std::move(picture)});
  m_PictureBytes += bytesOf(m_Pictures.front());
  while (!m_Pictures.empty() && m_PictureBytes > m_Limits.cacheBytes) {
    m_PictureBytes -= bytesOf(m_Pictures.back());
    m_Pictures.pop_back();
  }
}

bool IsBlankSize(const std::string& text) {
  if (text == "plate") return true;
  if (text.size() < 5 || text.size() > 40) return false;
  const std::string unit = text.substr(text.size() - 2);
  const double centimetres = unit == "cm" ? 1 : unit == "mm" ? 0.1 : unit == "in" ? 2.54 : 0;
  const std::string_view sides = std::string_view(text).substr(0, text.size() - 2);
  const std::size_t sign = sides.find('x');
  return centimetres > 0 && sign != sides.npos && IsSide(sides.substr(0, sign), centimetres) &&
         IsSide(sides.substr(sign + 1), centimetres);
}

}  // namespace rastrel::server::web
