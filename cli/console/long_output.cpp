#include "cli/console/long_output.h"

#include "cli/console/standard_streams.h"
#include "rastrel/platform/os/shown_text.h"

namespace rastrel::cli {
namespace {

constexpr std::size_t PieceSize = std::size_t{64} << 10;

}  // namespace

LongOutput::~LongOutput() { WriteOutData(m_Held); }

void LongOutput::Append(std::string_view text) {
  m_Held += text;
  if (m_Held.size() < PieceSize) return;
  const std::size_t length = os::WholeCharacters(m_Held);
  WriteOutData(std::string_view(m_Held).substr(0, length));
  m_Held.erase(0, length);
}

}  // namespace rastrel::cli
