#include "rastrel/readers/record_budget.h"

#include <string>
#include <utility>

#include "rastrel/platform/os/text.h"
#include "rastrel/xml/failure.h"

namespace rastrel::readers {

bool RecordBudget::Take(std::size_t bytes) {
  if (bytes <= m_Left) {
    m_Left -= bytes;
    return true;
  }
  Failure failure = FailureOf("its records take more than " +
                              std::to_string(RecordBytesLimit >> 20) + " MiB, which is the limit");
  failure.where = os::Utf8FromWide(m_Path);
  xml::ReportXmlFailure(std::move(failure));
  return false;
}

}  // namespace rastrel::readers
