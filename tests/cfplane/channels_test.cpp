#include "cfplane/channels.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/page_files.h"

using rastrel::planes::SwapRedAndBlue;
using rastrel::planes::TakeChannel;

namespace {

std::vector<std::byte> Bytes(std::size_t count) {
  std::vector<std::byte> bytes;
  for (const char byte : rastrel::test::CountingBytes(count))
    bytes.push_back(static_cast<std::byte>(byte));
  return bytes;
}

TEST(SwapRedAndBlue, turns_each_pixel_of_any_number_and_writes_no_byte_after_the_last) {
  for (std::size_t pixels = 0; pixels <= 70; ++pixels) {
    const auto from = Bytes(3 * pixels);
    std::vector<std::byte> to(3 * pixels + 32, std::byte{0xEE});
    SwapRedAndBlue(from.data(), to.data(), pixels);
    for (std::size_t i = 0; i < pixels; ++i) {
      EXPECT_EQ(to[3 * i], from[3 * i + 2]) << pixels << ": " << i;
      EXPECT_EQ(to[3 * i + 1], from[3 * i + 1]) << pixels << ": " << i;
      EXPECT_EQ(to[3 * i + 2], from[3 * i]) << pixels << ": " << i;
    }
    for (std::size_t i = 3 * pixels; i < to.size(); ++i)
      EXPECT_EQ(to[i], std::byte{0xEE}) << pixels << ": " << i;
  }
}

TEST(TakeChannel, takes_one_sample_of_each_pixel) {
  const auto from = Bytes(9);
  std::vector<std::byte> to(4, std::byte{0xEE});
  TakeChannel(from.data() + 1, 3, to.data(), 3);
  EXPECT_EQ(to, (std::vector{std::byte{2}, std::byte{5}, std::byte{8}, std::byte{0xEE}}));
}

}  // namespace
