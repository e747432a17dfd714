#include "pages/sha256.h"

#include <gtest/gtest.h>

#include <string>

namespace rastrel::pages {
namespace {

std::string SumOf(const std::string& text) {
  pages::Sha256 sum;
  sum.Add(text.data(), text.size());
  return sum.Finish();
}

// The examples of FIPS 180-4's companion, and the empty message.
TEST(Sha256, sums_the_standards_examples) {
  EXPECT_EQ(SumOf(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(SumOf("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(SumOf("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
            "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
  EXPECT_EQ(SumOf(std::string(1000000, 'a')),
            "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Sha256, does_not_depend_on_the_pieces) {
  std::string text;
  for (int i = 0; i < 1000; ++i) text += static_cast<char>(i * 7 % 251);
  const std::string whole = SumOf(text);
  for (std::size_t piece = 1; piece < 200; ++piece) {
    pages::Sha256 sum;
    for (std::size_t at = 0; at < text.size(); at += piece) {
      sum.Add(text.data() + at, std::min(piece, text.size() - at));
    }
    EXPECT_EQ(sum.Finish(), whole) << piece;
  }
}

}  // namespace
}  // namespace rastrel::pages
