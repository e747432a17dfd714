#include "host/document/bitmap.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

#include "host/document/document_application.h"
#include "host/document/document_store.h"

namespace rastrel::document {
namespace {

std::vector<std::byte> Bytes(const std::vector<int>& values) {
  std::vector<std::byte> bytes;
  for (const int value : values) bytes.push_back(static_cast<std::byte>(value));
  return bytes;
}

BITMAPINFOHEADER Header(std::int32_t width, std::int32_t height, std::uint16_t bits) {
  BITMAPINFOHEADER header;
  header.biWidth = width;
  header.biHeight = height;
  header.biBitCount = bits;
  return header;
}

// Two rows of two pixels, 2 bytes of padding each.
const std::vector<std::byte> FourPixels =
    Bytes({1, 2, 3, 4, 5, 6, 0, 0, 11, 12, 13, 14, 15, 16, 0, 0});

TEST(Bitmap, rows_of_a_negative_height_come_from_the_top) {
  const auto pixels = PixelsOf(Header(2, -2, 24), FourPixels);
  ASSERT_NE(pixels, nullptr);
  EXPECT_EQ(pixels->width, 2);
  EXPECT_EQ(pixels->height, 2);
  EXPECT_FALSE(pixels->gray);
  EXPECT_EQ(pixels->bytes, FourPixels);
  EXPECT_EQ(pixels->Row(1)[0], std::byte{11});
  EXPECT_EQ(pixels->Row(1).size(), 6U) << "without the padding";
}

TEST(Bitmap, rows_of_a_positive_height_come_from_the_bottom) {
  const auto pixels = PixelsOf(Header(2, 2, 24), FourPixels);
  ASSERT_NE(pixels, nullptr);
  EXPECT_EQ(pixels->bytes, Bytes({11, 12, 13, 14, 15, 16, 0, 0, 1, 2, 3, 4, 5, 6, 0, 0}));
}

TEST(Bitmap, eight_bits_are_levels_of_gray_in_rows_of_whole_four_bytes) {
  const auto bytes = Bytes({0, 128, 255, 9, 7, 0, 0, 0, 1, 2, 3, 4, 5, 0, 0, 0});
  const auto pixels = PixelsOf(Header(5, -2, 8), bytes);
  ASSERT_NE(pixels, nullptr);
  EXPECT_TRUE(pixels->gray);
  EXPECT_EQ(pixels->RowBytes(), 8U);
  EXPECT_EQ(pixels->Row(1)[4], std::byte{5});
}

TEST(Bitmap, a_header_that_does_not_agree_with_the_bytes_makes_none) {
  const auto make = [](const BITMAPINFOHEADER& header, std::size_t size) {
    return PixelsOf(header, std::vector<std::byte>(size)) != nullptr;
  };
  EXPECT_TRUE(make(Header(2, -2, 24), 16));
  EXPECT_FALSE(make(Header(2, -2, 24), 15));
  EXPECT_FALSE(make(Header(2, -2, 24), 17));
  EXPECT_FALSE(make(Header(2, -2, 24), 0));
  BITMAPINFOHEADER header = Header(2, -2, 24);
  for (const auto& [size, good] : {std::pair(15U, false), {16U, true}, {17U, false}}) {
    header.biSizeImage = size;
    EXPECT_EQ(make(header, 16), good) << size;
  }
}

TEST(Bitmap, forms_that_are_not_taken_make_none) {
  const auto make = [](const BITMAPINFOHEADER& header) {
    return PixelsOf(header, FourPixels) != nullptr;
  };
  for (const std::uint16_t bits : std::vector<std::uint16_t>{0, 1, 4, 16, 32})
    EXPECT_FALSE(make(Header(2, -2, bits))) << bits;
  for (const auto& [width, height] : {std::pair(0, -2),
                                      {-2, -2},
                                      {2, 0},
                                      {2, INT32_MIN},
                                      {INT32_MAX, -INT32_MAX},
                                      {INT32_MAX, INT32_MAX},
                                      {INT32_MIN, 2}}) {
    EXPECT_FALSE(make(Header(width, height, 24))) << width << " by " << height;
  }
  BITMAPINFOHEADER header = Header(2, -2, 24);
  header.biCompression = 1;
  EXPECT_FALSE(make(header));
  header.biCompression = 0;
  header.biPlanes = 2;
  EXPECT_FALSE(make(header));
  header.biPlanes = 1;
  header.biSize = 12;
  EXPECT_FALSE(make(header));
}

class BitmapObjects : public testing::Test {
 protected:
  CVKBitmap* Made() {
    CVKBitmap* bitmap = m_Application.NewVKBitmap();
    EXPECT_EQ(bitmap->Create(Header(2, -2, 24), FourPixels), 1);
    return bitmap;
  }

  Document m_Document;
  DocumentStore m_Store{m_Document};
  Notices m_Notices;
  DocumentApplication m_Application{m_Document, m_Store, m_Notices};
};

TEST_F(BitmapObjects, an_object_keeps_the_pixels_when_the_bitmap_is_given_back) {
  CVKBitmap* bitmap = Made();
  const ObjectHandle object = m_Store.DBInsertBitmap(*bitmap, 10, 5);
  EXPECT_EQ(bitmap->Create(Header(1, 1, 8), Bytes({7, 0, 0, 0})), 1);
  m_Application.DeleteVKBitmap(bitmap);
  ASSERT_NE(object, 0U);
  const auto& shape = std::get<BitmapShape>(m_Document.Find(object)->shape);
  EXPECT_EQ(shape.pixels->bytes, FourPixels);
  EXPECT_FALSE(m_Document.Holds(object));
  const BOUNDS bounds = m_Document.Bounds(object);
  EXPECT_EQ(bounds.xmin, 0);
  EXPECT_EQ(bounds.ymin, 0);
  EXPECT_EQ(bounds.xmax, 10);
  EXPECT_EQ(bounds.ymax, 5);
  EXPECT_FALSE(m_Store.DBGetObjectElement(object)->IsFilled());
}

TEST_F(BitmapObjects, a_bitmap_keeps_its_pixels_when_it_can_t_take_others) {
  CVKBitmap* bitmap = Made();
  EXPECT_EQ(bitmap->Create(Header(3, -2, 24), FourPixels), 0);
  const ObjectHandle object = m_Store.DBInsertBitmap(*bitmap, 1, 1);
  ASSERT_NE(object, 0U);
  EXPECT_EQ(std::get<BitmapShape>(m_Document.Find(object)->shape).pixels->bytes, FourPixels);
}

TEST_F(BitmapObjects, bitmaps_without_pixels_without_size_or_of_others_make_no_object) {
  class Other : public CVKBitmap {
    int Create(const BITMAPINFOHEADER&, std::span<const std::byte>) override { return 1; }
  };
  EXPECT_EQ(m_Store.DBInsertBitmap(Other(), 1, 1), 0U);
  EXPECT_EQ(m_Store.DBInsertBitmap(*m_Application.NewVKBitmap(), 1, 1), 0U);
  CVKBitmap* bitmap = Made();
  for (const double none : {0.0, -1.0, std::nan(""), std::numeric_limits<double>::infinity()}) {
    EXPECT_EQ(m_Store.DBInsertBitmap(*bitmap, none, 1), 0U);
    EXPECT_EQ(m_Store.DBInsertBitmap(*bitmap, 1, none), 0U);
  }
}

TEST_F(BitmapObjects, giving_back_a_bitmap_twice_or_none_changes_nothing) {
  CVKBitmap* bitmap = Made();
  m_Application.DeleteVKBitmap(bitmap);
  m_Application.DeleteVKBitmap(bitmap);
  m_Application.DeleteVKBitmap(nullptr);
}

TEST_F(BitmapObjects, a_color_that_is_set_on_a_bitmap_is_said_not_to_show) {
  const ObjectHandle object = m_Store.DBInsertBitmap(*Made(), 1, 1);
  m_Store.ReportTo(&m_Notices);
  m_Store.DBSetLayer(object, CVKColor());
  m_Store.DBSetLineColor(object, CVKColor());
  EXPECT_EQ(m_Notices.Texts(), std::vector<std::wstring>{L"a bitmap keeps its own colours"});
}

// Objects without a place end with their document, pixels included.
TEST(BitmapLife, an_object_that_was_never_put_into_the_document_ends_with_it) {
  std::weak_ptr<const BitmapPixels> pixels;
  {
    Document document;
    DocumentStore store(document);
    Bitmap bitmap;
    ASSERT_EQ(bitmap.Create(Header(2, -2, 24), FourPixels), 1);
    pixels = bitmap.Pixels();
    ASSERT_NE(store.DBInsertBitmap(bitmap, 1, 1), 0U);
  }
  EXPECT_TRUE(pixels.expired());
}

}  // namespace
}  // namespace rastrel::document
