// Random documents: however they are read, they equal the parser's own tree.

#include <gtest/gtest.h>

#include "tests/support/library_fixture.h"
#include "tests/support/xml_oracle.h"

namespace {

using rastrel::test::DifferencesFromLiteral;

class XmlOracle : public rastrel::test::LibraryTest {};

TEST_F(XmlOracle, random_documents_are_read_as_they_are) {
  rastrel::test::XmlDocuments documents(20261121);
  int sound = 0;
  constexpr int count = 6000;
  for (int index = 0; index < count; ++index) {
    const std::string document = documents.Next();
    ASSERT_EQ(DifferencesFromLiteral(document, 1 + static_cast<std::size_t>(index) % 9), "")
        << index << "\n"
        << document;
    sound += rastrel::test::LiteralDump(document) ? 1 : 0;
  }
  // A generator of faults alone, or of none, would show nothing.
  EXPECT_GT(sound, count / 3);
  EXPECT_LT(sound, count * 19 / 20);
}

TEST_F(XmlOracle, sees_a_difference_where_there_is_one) {
  EXPECT_EQ(rastrel::test::LiteralDump("<a n='1'> x </a>"), "(a n=[1]|x|(|x|))");
  EXPECT_NE(rastrel::test::LiteralDump("<a>x<b/></a>"), rastrel::test::LiteralDump("<a><b/>x</a>"));
  EXPECT_FALSE(rastrel::test::LiteralDump("<a>").has_value());
  EXPECT_FALSE(rastrel::test::LiteralDump("<p:a/>").has_value());
}

}  // namespace
