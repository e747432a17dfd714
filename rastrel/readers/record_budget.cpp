#include "rastrel/readers/record_budget.h"

#include <string>
#include <utility>

#include "rastrel/xml/failure.h"

namespace rastrel::readers {

bool RecordBudget::Take(std::size_t bytes) {
  if (bytes <= m_Left) {
    m_Left -= bytes;
    return true;
  }
  xml::XmlFailure failure;
  failure.path = m_Path;
  failure.reason = L"its records take more than " + std::to_wstring(RecordBytesLimit >> 20) +
                   L" MiB, which is the limit";
  xml::ReportXmlFailure(std::move(failure));
  return false;
}

}  // namespace rastrel::readers
