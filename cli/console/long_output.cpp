#include "cli/console/long_output.h"

#include "cli/console/standard_streams.h"

namespace rastrel::cli {
namespace {

constexpr std::size_t PieceSize = std::size_t{64} << 10;

}  // namespace

LongOutput::~LongOutput() { WriteOut(m_Held); }

void LongOutput::Append(std::string_view text) {
  m_Held += text;
  if (m_Held.size() < PieceSize) return;
  WriteOut(m_Held);
  m_Held.clear();
}

}  // namespace rastrel::cli
