#include "rastrel/platform/os/base64.h"

#include <gtest/gtest.h>

#include <utility>

using namespace rastrel::os;

TEST(Base64, the_standard_s_own_examples_hold_both_ways) {
  const std::pair<const char*, const char*> examples[] = {{"", ""},
                                                          {"f", "Zg=="},
                                                          {"fo", "Zm8="},
                                                          {"foo", "Zm9v"},
                                                          {"foob", "Zm9vYg=="},
                                                          {"fooba", "Zm9vYmE="},
                                                          {"foobar", "Zm9vYmFy"}};
  for (const auto& [bytes, text] : examples) {
    EXPECT_EQ(Base64FromBytes(bytes), text);
    EXPECT_EQ(BytesFromBase64(text), bytes);
  }
}

TEST(Base64, text_that_no_bytes_give_is_refused) {
  for (const char* text :
       {"Z", "Zg=", "Zg==Zg==", "Zh==", "Zm9=", "====", "Zm9 ", "Z===", "=Zm9"}) {
    EXPECT_FALSE(BytesFromBase64(text)) << text;
  }
}
