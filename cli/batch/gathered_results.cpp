#include "cli/batch/gathered_results.h"

#include <string>
#include <utility>

namespace rastrel::cli {

void GatheredResults::Add(std::size_t index, FileResult result) {
  const std::scoped_lock lock(m_Mutex);
  if (m_Results.contains(index)) return;
  if (result.status != 0) {
    ++m_Failed;
    m_Bad[index] = result.status;
  }
  m_Results.emplace(index, std::move(result));
  if (m_Shows) ClearProgress();
  for (auto next = m_Results.find(m_Written); next != m_Results.end() && next->second;
       next = m_Results.find(++m_Written)) {
    WriteHeld(next->second->text);
    next->second.reset();
  }
  if (!m_Shows) return;
  std::string line = std::to_string(m_Results.size()) + " of " + std::to_string(m_Files) + " files";
  if (m_Failed > 0) line += ", " + std::to_string(m_Failed) + " failed";
  ShowProgress(line);
}

bool GatheredResults::Has(std::size_t index) const {
  const std::scoped_lock lock(m_Mutex);
  return m_Results.contains(index);
}

std::size_t GatheredResults::NextWithout(std::size_t from) const {
  const std::scoped_lock lock(m_Mutex);
  while (from < m_Files && m_Results.contains(from)) ++from;
  return from;
}

std::size_t GatheredResults::Ended() const {
  const std::scoped_lock lock(m_Mutex);
  return m_Results.size();
}

std::size_t GatheredResults::Failed() const {
  const std::scoped_lock lock(m_Mutex);
  return m_Failed;
}

ExitStatus GatheredResults::Status() const {
  const std::scoped_lock lock(m_Mutex);
  return m_Bad.empty() ? ExitStatus::Done : static_cast<ExitStatus>(m_Bad.begin()->second);
}

}  // namespace rastrel::cli
