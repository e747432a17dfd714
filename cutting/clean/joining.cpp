#include "cutting/clean/joining.h"

#include <limits>

namespace rastrel::cutting::clean {
namespace {

constexpr std::size_t None = std::numeric_limits<std::size_t>::max();

// The start of a contour has an even number in the list, and its end the next.
constexpr std::size_t OtherEnd(std::size_t end) { return end ^ 1U; }

class Walk {
 public:
  Walk(const std::vector<OpenEnd>& ends, const std::vector<EndPair>& pairs)
      : m_Ends(ends), m_Partner(ends.size(), None), m_Walked(ends.size() / 2) {
    for (const EndPair& pair : pairs) {
      m_Partner[pair.first] = pair.second;
      m_Partner[pair.second] = pair.first;
    }
  }

  std::vector<Chain> Run() {
    // Open chains first, from their loose ends: all that is left closes.
    for (std::size_t end = 0; end < m_Ends.size(); ++end) {
      if (m_Partner[end] == None && m_Partner[OtherEnd(end)] != None) Follow(end, false);
    }
    for (std::size_t end = 0; end < m_Ends.size(); end += 2) {
      if (m_Partner[end] != None) Follow(end, true);
    }
    return std::move(m_Chains);
  }

 private:
  void Follow(std::size_t end, bool closes) {
    if (m_Walked[end / 2]) return;
    Chain chain{.links = {}, .closes = closes};
    while (end != None && !m_Walked[end / 2]) {
      m_Walked[end / 2] = true;
      chain.links.push_back({m_Ends[end].contour, m_Ends[end].isLast});
      end = m_Partner[OtherEnd(end)];
    }
    m_Chains.push_back(std::move(chain));
  }

  const std::vector<OpenEnd>& m_Ends;
  std::vector<std::size_t> m_Partner;
  std::vector<bool> m_Walked;
  std::vector<Chain> m_Chains;
};

}  // namespace

std::vector<Chain> ChainsOf(const std::vector<OpenEnd>& ends, const std::vector<EndPair>& pairs) {
  return Walk(ends, pairs).Run();
}

}  // namespace rastrel::cutting::clean
