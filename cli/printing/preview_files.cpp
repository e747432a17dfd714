#include "cli/printing/preview_files.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace rastrel::cli {
namespace {

namespace fs = std::filesystem;

// The part after the job's name in a delivered file's name: "-1", "-2", "-1-Cyan". The number
// of the first page goes.
std::string SuffixOf(const std::string& stem, const std::string& jobName) {
  constexpr std::string_view first = "-1";
  std::string suffix = stem.starts_with(jobName) ? stem.substr(jobName.size()) : "-" + stem;
  const bool isFirst =
      suffix.starts_with(first) && (suffix.size() == first.size() || suffix[first.size()] == '-');
  return isFirst ? suffix.substr(first.size()) : suffix;
}

}  // namespace

PreviewFiles::PreviewFiles(const std::string& target, std::string jobName, std::string directory)
    : m_Target(target),
      m_Extension(fs::path(target).extension()),
      m_JobName(std::move(jobName)),
      m_Directory(std::move(directory)) {
  m_Stem = target.substr(0, target.size() - m_Extension.size());
}

std::string PreviewFiles::NameFor(const std::string& delivered) const {
  const std::string suffix = SuffixOf(fs::path(delivered).stem(), m_JobName);
  const std::string stem = m_Stem + suffix;
  std::string name = stem + m_Extension;
  for (int number = 2; m_Taken.contains(name); ++number)
    name = stem + "-" + std::to_string(number) + m_Extension;
  return name;
}

bool PreviewFiles::Hold(JobEvent& event) {
  if (event.kind != JobEventKind::Output) return false;
  const std::string name = NameFor(event.path);
  // A number of its own, as the engine may write the next page over the same name.
  const std::string held = m_Directory + "/" + std::to_string(m_Held.size() + 1);
  std::error_code error;
  fs::create_directories(m_Directory, error);
  auto moved = os::OutputFile::Take(event.path, held, os::Existing::Refused);
  const Expected<void> done = moved ? moved->Commit() : Expected<void>(moved.Error());
  if (done) {
    m_Taken.insert(name);
    m_Names.push_back(name);
    m_Held.push_back(held);
    return true;
  }
  event.kind = JobEventKind::Log;
  event.path.clear();
  event.text = "the preview can't be written to '" + name + "': " + Describe(done.Error());
  if (m_Fault.empty()) m_Fault = event.text;
  return false;
}

Expected<void> PreviewFiles::Deliver(os::Existing first, os::Existing others) {
  const auto existingOf = [&](const std::string& name) {
    return name == m_Target ? first : others;
  };
  // Before the first is moved, as that may be a long copy.
  for (const std::string& name : m_Names) {
    if (auto place = os::CheckPlace(name, existingOf(name)); !place) return place;
  }
  std::vector<os::OutputFile> files;
  for (std::size_t index = 0; index < m_Names.size(); ++index) {
    const std::string& name = m_Names[index];
    auto file = os::OutputFile::Take(m_Held[index], name, existingOf(name));
    if (!file) return file.Error();
    files.push_back(*std::move(file));
  }
  return os::OutputFile::CommitAll(files);
}

}  // namespace rastrel::cli
