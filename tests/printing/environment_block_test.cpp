#include "rastrel/printing/environment_block.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <type_traits>

#include "tests/support/failing_memory.h"

namespace {

using PrintingThread::Args;
using rastrel::test::FailingMemory;
using namespace std::string_literals;

std::string BlockOf(const Args& args) { return {args.Data(), args.Used() + 1}; }

TEST(Args, has_a_virtual_destructor_and_nothing_else_virtual) {
  EXPECT_TRUE(std::has_virtual_destructor_v<Args>);
  EXPECT_EQ(4 * sizeof(void*), sizeof(Args));
}

TEST(Args, a_fresh_block_is_one_null) {
  const Args args;
  EXPECT_EQ(args.Used(), 0U);
  EXPECT_EQ(BlockOf(args), "\0"s);
}

TEST(Args, each_text_has_a_null_behind_it_and_the_block_one_more) {
  Args args;
  args.Add("A=1");
  EXPECT_EQ(BlockOf(args), "A=1\0\0"s);
  EXPECT_EQ(args.Used(), 4U);
  args.Add("B=two");
  EXPECT_EQ(BlockOf(args), "A=1\0B=two\0\0"s);
  EXPECT_EQ(args.Used(), 10U);
}

TEST(Args, grows_by_each_texts_length_and_one) {
  static std::size_t asked;
  struct Watched {
    static void* Reallocate(void* block, std::size_t bytes) {
      asked = bytes;
      return std::realloc(block, bytes);
    }
  };
  const auto old = Args::s_Reallocate;
  Args::s_Reallocate = Watched::Reallocate;
  {
    Args args;
    EXPECT_EQ(asked, 1U);
    args.Add("abc");
    EXPECT_EQ(asked, 5U);
    args.Add("");
    EXPECT_EQ(asked, 6U);
  }
  Args::s_Reallocate = old;
}

TEST(Args, without_memory_the_block_is_null_and_later_texts_are_dropped) {
  Args args;
  args.Add("A=1");
  {
    const FailingMemory failing;
    args.Add("B=2");
  }
  EXPECT_EQ(args.Data(), nullptr);
  args.Add("C=3");
  EXPECT_EQ(args.Data(), nullptr);
}

TEST(Args, without_any_memory_there_is_no_block_at_all) {
  const FailingMemory failing;
  Args args;
  EXPECT_EQ(args.Data(), nullptr);
  args.Add("A=1");
  EXPECT_EQ(args.Data(), nullptr);
}

}  // namespace
