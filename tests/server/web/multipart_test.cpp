#include "server/web/http/multipart.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace rastrel::server::web {
namespace {

// All that a form brought, as one text a part.
struct Taken {
  std::vector<std::string> parts;
  std::string bytes;
  std::string failure;
};

Taken Take(const std::string& form, std::size_t piece, const std::string& boundary = "B") {
  Taken taken;
  MultipartReader::Sink sink;
  sink.field = [&](const std::string& name, const std::string& value) -> Expected<void> {
    taken.parts.push_back(name + "=" + value);
    return {};
  };
  sink.file = [&](const std::string& name, const std::string& file) -> Expected<void> {
    taken.parts.push_back(name + ":" + file);
    return {};
  };
  sink.bytes = [&](std::string_view bytes) -> Expected<void> {
    taken.bytes += bytes;
    return {};
  };
  auto reader = MultipartReader::Create(boundary, sink);
  if (!reader) return {{}, "", reader.Error().why};
  for (std::size_t at = 0; at < form.size(); at += piece)
    if (auto fed = reader->Feed(std::string_view(form).substr(at, piece)); !fed) {
      taken.failure = fed.Error().why;
      return taken;
    }
  if (auto done = reader->Finish(); !done) taken.failure = done.Error().why;
  return taken;
}

const std::string Form =
    "--B\r\nContent-Disposition: form-data; name=\"title\"\r\n\r\nsign\r\n"
    "--B\r\ncontent-disposition: form-data; name=\"file\"; filename=\"a b.ps\"\r\n"
    "Content-Type: application/postscript\r\n\r\n%!PS\r\n--\r\n-B\r\n--C\r\n\r\n"
    "--B--\r\nafter";

TEST(MultipartReader, reads_the_same_in_pieces_of_any_size) {
  for (const std::size_t piece : {1UL, 2UL, 3UL, 7UL, 64UL, 10000UL}) {
    const Taken taken = Take(Form, piece);
    EXPECT_EQ(taken.failure, "") << piece;
    ASSERT_EQ(taken.parts.size(), 2U) << piece;
    EXPECT_EQ(taken.parts[0], "title=sign");
    EXPECT_EQ(taken.parts[1], "file:a b.ps");
    EXPECT_EQ(taken.bytes, "%!PS\r\n--\r\n-B\r\n--C\r\n");
  }
}

TEST(MultipartReader, takes_text_before_the_first_boundary) {
  EXPECT_EQ(Take("hello\r\n" + Form, 5).parts.size(), 2U);
}

TEST(MultipartReader, reports_a_form_that_is_cut_off_anywhere) {
  const std::size_t end = Form.rfind("--\r\nafter") + 2;
  for (std::size_t size = 0; size < end; ++size)
    EXPECT_NE(Take(Form.substr(0, size), 16).failure, "") << size;
  EXPECT_EQ(Take(Form.substr(0, end), 16).failure, "");
}

TEST(MultipartReader, refuses_parts_without_names) {
  EXPECT_NE(Take("--B\r\n\r\nx\r\n--B--", 8).failure, "");
  EXPECT_NE(Take("--B\r\nContent-Disposition: form-data\r\n\r\nx\r\n--B--", 8).failure, "");
  EXPECT_NE(Take("--B\r\nContent-Disposition: attachment; name=a\r\n\r\nx\r\n--B--", 8).failure,
            "");
  EXPECT_NE(Take("--Bx\r\n", 8).failure, "");
  const std::string head = "--B\r\nContent-Disposition: form-data; name=a\r\n\r\n";
  EXPECT_EQ(Take(head + "v\r\n--B--", 8).failure, "");
  EXPECT_NE(Take(head + std::string("v\0\r\n--B--", 9), 8).failure, "");
  EXPECT_NE(Take(head + "\xff\r\n--B--", 8).failure, "");
}

TEST(MultipartReader, holds_its_limits) {
  const std::string head = "--B\r\nContent-Disposition: form-data; name=a\r\n\r\n";
  const auto value = [&](std::size_t size) {
    return Take(head + std::string(size, 'x') + "\r\n--B--", 4096).failure;
  };
  EXPECT_EQ(value(MultipartReader::ValueLimit - 1), "");
  EXPECT_EQ(value(MultipartReader::ValueLimit), "");
  EXPECT_NE(value(MultipartReader::ValueLimit + 1), "");

  const auto headers = [&](std::size_t size) {
    const std::string begin = "\r\nContent-Disposition: form-data; name=a\r\nX: ";
    return Take("--B" + begin + std::string(size - begin.size(), 'x') + "\r\n\r\nv\r\n--B--", 100)
        .failure;
  };
  EXPECT_EQ(headers(MultipartReader::HeadLimit - 1), "");
  EXPECT_EQ(headers(MultipartReader::HeadLimit), "");
  EXPECT_NE(headers(MultipartReader::HeadLimit + 1), "");

  std::string parts;
  for (std::size_t index = 0; index < MultipartReader::PartLimit; ++index) parts += head + "v\r\n";
  EXPECT_EQ(Take(parts + "--B--", 4096).failure, "");
  EXPECT_NE(Take(parts + head + "v\r\n--B--", 4096).failure, "");
  EXPECT_NE(Take(Form, 16, "").failure, "");
  EXPECT_NE(Take(Form, 16, std::string(MultipartReader::BoundaryLimit + 1, 'b')).failure, "");
}

}  // namespace
}  // namespace rastrel::server::web
