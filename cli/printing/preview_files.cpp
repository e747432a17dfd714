#include "cli/printing/preview_files.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace rastrel::cli {
namespace {

namespace fs = std::filesystem;

// Between file systems a file can only be copied.
std::string WhyNotMoved(const fs::path& source, const fs::path& target) {
  std::error_code error;
  fs::rename(source, target, error);
  if (!error) return {};
  if (error == std::errc::cross_device_link) {
    fs::copy_file(source, target, fs::copy_options::overwrite_existing, error);
    if (!error) fs::remove(source, error);
  }
  return error ? error.message() : std::string();
}

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

PreviewFiles::PreviewFiles(const std::string& target, std::string jobName)
    : m_Extension(fs::path(target).extension()), m_JobName(std::move(jobName)) {
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

void PreviewFiles::Take(JobEvent& event) {
  if (event.kind != JobEventKind::Output) return;
  const std::string name = NameFor(event.path);
  m_Taken.insert(name);
  const std::string why = WhyNotMoved(event.path, name);
  if (why.empty()) {
    event.path = name;
    m_Names.push_back(name);
    return;
  }
  event.kind = JobEventKind::Log;
  event.path.clear();
  event.text = "the preview can't be written to '" + name + "': " + why;
  if (m_Fault.empty()) m_Fault = event.text;
}

}  // namespace rastrel::cli
