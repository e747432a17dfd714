#include "rastrel/printing/wait_table.h"

namespace PrintingThread {

void CWaitTable::Add(HANDLE* handle, Reaction signaled, Reaction abandoned) {
  if (m_Entries.size() < Limit) m_Entries.push_back({handle, signaled, abandoned});
}

std::span<const HANDLE> CWaitTable::GetHandles() {
  std::erase_if(m_Entries,
                [](const Entry& entry) { return *entry.m_pHandle == INVALID_HANDLE_VALUE; });
  m_Handles.clear();
  for (const Entry& entry : m_Entries) m_Handles.push_back(*entry.m_pHandle);
  return m_Handles;
}

const CWaitTable::Entry* CWaitTable::At(std::size_t index) const {
  return index < m_Entries.size() ? &m_Entries[index] : nullptr;
}

}  // namespace PrintingThread
