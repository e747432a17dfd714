#include "cli/server/queued_input.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "rastrel/platform/os/private_directory.h"

namespace rastrel::cli {
namespace {

using std::string_literals::operator""s;

// A pixel of gray, as the PNG format's pages have it: header, one row of filter 0, end.
const std::string Pixel =
    "\x89PNG\r\n\x1a\n"
    "\0\0\0\rIHDR\0\0\0\1\0\0\0\1\x08\0\0\0\0\x3a\x7e\x9b\x55"
    "\0\0\0\nIDAT\x78\x9c\x63\x68\0\0\0\x82\0\x81\x77\xcd\x72\xb6"
    "\0\0\0\0IEND\xae\x42\x60\x82"s;

class QueuedInputTest : public testing::Test {
 protected:
  std::string Store(const std::string& name, const std::string& content) const {
    std::ofstream(PathOf(name), std::ios::binary) << content;
    return PathOf(name);
  }
  [[nodiscard]] std::string PathOf(const std::string& name) const {
    return m_Place.Path() + "/" + name;
  }

  os::PrivateDirectory m_Place = *os::PrivateDirectory::Make("rastrel-queued-");
};

std::string ContentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST_F(QueuedInputTest, a_picture_becomes_a_page_that_goes_with_it) {
  const std::string page = PathOf("page.pdf");
  {
    const auto input = QueuedInput::Prepare(Store("sign", Pixel), page);
    ASSERT_TRUE(input) << Describe(input.Error());
    EXPECT_EQ(input->Path(), page);
    const std::string pdf = ContentOf(page);
    EXPECT_TRUE(pdf.starts_with("%PDF-"));
    EXPECT_NE(pdf.find("\x78\x9c\x63\x68\0\0\0\x82\0\x81"s), pdf.npos) << "its pixels are there";
  }
  EXPECT_FALSE(std::filesystem::exists(page));
}

TEST_F(QueuedInputTest, any_other_file_is_taken_as_it_is) {
  const std::string file = Store("sign.png", "%!PS\nshowpage\n");
  const auto input = QueuedInput::Prepare(file, PathOf("page.pdf"));
  ASSERT_TRUE(input);
  EXPECT_EQ(input->Path(), file);
  EXPECT_FALSE(std::filesystem::exists(PathOf("page.pdf")));
}

TEST_F(QueuedInputTest, a_damaged_picture_is_bad_input_and_leaves_no_page) {
  std::string cut = Pixel;
  cut.resize(cut.size() - 13);
  const auto input = QueuedInput::Prepare(Store("sign.png", cut), PathOf("page.pdf"));
  ASSERT_FALSE(input);
  EXPECT_EQ(input.Error().code, FailureCode::BadInput);
  EXPECT_NE(Describe(input.Error()).find("cut off"), std::string::npos) << Describe(input.Error());
  EXPECT_FALSE(std::filesystem::exists(PathOf("page.pdf")));
}

TEST_F(QueuedInputTest, pictures_and_documents_pass_and_other_files_do_not) {
  EXPECT_TRUE(CheckQueuedInput(Store("a", Pixel)));
  EXPECT_TRUE(CheckQueuedInput(Store("b", "\xFF\xD8\xFF\xE0 and more")));
  EXPECT_TRUE(CheckQueuedInput(Store("c", "%PDF-1.4\n")));
  EXPECT_FALSE(CheckQueuedInput(Store("d", "plain text")));
  EXPECT_FALSE(CheckQueuedInput(Store("e", "")));
  EXPECT_FALSE(CheckQueuedInput(PathOf("none")));
  EXPECT_EQ(PictureKindOf(PathOf("a")), "png");
  EXPECT_EQ(PictureKindOf(PathOf("b")), "jpg");
  EXPECT_EQ(PictureKindOf(PathOf("none")), "");
}

}  // namespace
}  // namespace rastrel::cli
