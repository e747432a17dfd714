#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace rastrel::test {

/// A pointer to a private member, for the tests of a field's place: an explicit instantiation may
/// name a member that its writer may not use.
///
/// (Tags are in this namespace too.)
///
///   struct Progress { using Type = int Ticket::*; friend Type PrivateMember(Progress); };
///   template struct rastrel::test::Reveal<Progress, &Ticket::m_Progress>;
///   ticket.*PrivateMember(Progress())
template <typename Tag, typename Tag::Type Member>
struct Reveal {
  friend typename Tag::Type PrivateMember(Tag) { return Member; }
};

/// Place of a member in memory.
template <typename Member>
std::uintptr_t PlaceOf(const Member& member) {
  return reinterpret_cast<std::uintptr_t>(&member);
}

/// Fails unless the fields are in this order in memory.
inline void ExpectInOrder(const std::vector<std::uintptr_t>& places) {
  for (std::size_t field = 1; field < places.size(); ++field)
    EXPECT_LT(places[field - 1], places[field]) << "fields " << field - 1 << " and " << field;
}

}  // namespace rastrel::test
