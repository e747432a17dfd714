// Separated planes in the embedded document: their pixels, their file, their layer.

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <utility>

#include "host/document/document_application.h"
#include "host/document/document_file.h"
#include "host/document/document_store.h"
#include "host/document/notices.h"
#include "host/document/separation_item.h"
#include "rastrel/platform/host/sheet_layer.h"

namespace rastrel::document {
namespace {

PlaneBytes Unpacked(const std::string& packed, std::size_t count) {
  const auto kept = KeptPixels::FromPacked(packed, count);
  if (!kept) return {};
  return *kept->Read();
}

TEST(PlanePixels, are_packed_into_runs_and_single_bytes) {
  const PlaneBytes pixels{7, 7, 7, 1, 2, 9, 9, 9, 9};
  EXPECT_EQ(PackPixels(pixels), std::string("\xfe\x07\x01\x01\x02\xfd\x09", 7));
}

TEST(PlanePixels, come_back_from_packed_ones_at_every_length_around_a_piece) {
  std::mt19937 random(20261122);
  for (std::size_t length = 1; length <= 400; ++length) {
    PlaneBytes same(length, 255);
    PlaneBytes counted(length);
    std::iota(counted.begin(), counted.end(), std::uint8_t{0});
    PlaneBytes mixed(length);
    std::ranges::generate(mixed, [&] { return static_cast<std::uint8_t>(random() % 2 * 255); });
    for (const PlaneBytes& pixels : {same, counted, mixed})
      ASSERT_EQ(Unpacked(PackPixels(pixels), length), pixels) << length;
  }
}

TEST(PlanePixels, that_are_cut_or_too_many_or_too_few_are_refused) {
  const std::string packed("\xfe\x07\x01\x01\x02", 5);  // three sevens, 1, 2
  EXPECT_TRUE(KeptPixels::FromPacked(packed, 5));
  EXPECT_FALSE(KeptPixels::FromPacked(packed, 4));
  EXPECT_FALSE(KeptPixels::FromPacked(packed, 6));
  for (std::size_t length = 0; length < packed.size(); ++length)
    EXPECT_FALSE(KeptPixels::FromPacked(packed.substr(0, length), 5)) << length;
  // A head that says nothing is passed over.
  EXPECT_EQ(Unpacked("\x80" + packed, 5), (PlaneBytes{7, 7, 7, 1, 2}));
}

TEST(PlanePixels, of_a_lie_about_their_number_take_no_memory) {
  EXPECT_FALSE(KeptPixels::FromPacked("\x81\x07", std::uint64_t{1} << 40U));
}

SeparationShape Plane(const PlaneBytes& pixels, int width, int height) {
  SeparationShape plane;
  plane.ink.SetColor(1.0, 0.0, 0.0, 0.0, COLORSPACE_CMYK);
  plane.ink.SetColorName(L"Cyan");
  plane.page = 2;
  plane.pixelWidth = width;
  plane.pixelHeight = height;
  plane.xResolution = 100;
  plane.yResolution = 50;
  plane.pixels = KeptPixels::Of(pixels);
  return plane;
}

TEST(SeparationShape, has_its_true_size_with_the_lower_left_corner_at_the_origin) {
  // 100 pixels at 100 per inch and 25 at 50.
  const SeparationShape plane = Plane(PlaneBytes(2500, 255), 100, 25);
  const BOUNDS bounds = BoundsOf(plane, TM());
  EXPECT_EQ(bounds.xmin, 0);
  EXPECT_EQ(bounds.ymin, 0);
  EXPECT_DOUBLE_EQ(bounds.xmax, 2.54);
  EXPECT_DOUBLE_EQ(bounds.ymax, 1.27);
}

TEST(SeparationShape, comes_back_from_a_document_file) {
  Document document;
  const SeparationShape plane = Plane({255, 255, 255, 0, 128, 7}, 3, 2);
  document.Insert(document.Create(plane), host::DocumentRoot);
  const auto read = ReadDocumentText(DocumentText(document));
  ASSERT_TRUE(read) << Describe(read.Error());
  const Object& back = *(*read)->Find((*read)->Members(host::DocumentRoot).front());
  EXPECT_EQ(std::get<SeparationShape>(back.shape), plane);
}

// Pixels that are not there any more.
class LostPixels : public PlanePixels {
 public:
  Expected<PlaneBytes> Read() const override { return FailureOf("the plane is gone"); }
};

TEST(SeparationShape, whose_pixels_are_gone_can_not_be_saved) {
  Document document;
  SeparationShape plane = Plane({0}, 1, 1);
  plane.pixels = std::make_shared<LostPixels>();
  document.Insert(document.Create(plane), host::DocumentRoot);
  const auto text = WriteDocumentText(document);
  ASSERT_FALSE(text);
  EXPECT_EQ(Describe(text.Error()), "the plane is gone");
}

std::string With(std::string text, const std::string& part, const std::string& other) {
  const std::size_t at = text.find(part);
  EXPECT_NE(at, std::string::npos) << part;
  return text.replace(at, part.size(), other);
}

std::string RefusalOf(const std::string& text) {
  const auto read = ReadDocumentText(text);
  return read ? "" : Describe(read.Error());
}

TEST(SeparationShape, of_a_hostile_file_is_refused_with_its_place) {
  Document document;
  document.Insert(document.Create(Plane({255, 255, 255, 0, 128, 7}, 3, 2)), host::DocumentRoot);
  const std::string text = DocumentText(document);
  const std::string pixels = "\"pixels\": [\n    3,\n    2\n   ]";
  EXPECT_NE(RefusalOf(With(text, pixels, "\"pixels\": [3, 3]"))
                .find("/objects/0/packed: does not hold the plane's pixels"),
            std::string::npos);
  EXPECT_NE(RefusalOf(With(text, pixels, "\"pixels\": [400000, 4001]"))
                .find("/objects/0/pixels: are more than 1600000000"),
            std::string::npos);
  for (const char* wrong : {"[0, 2]", "[400001, 1]", "[-3, 2]", "[3]", "[\"3\", 2]"})
    EXPECT_NE(RefusalOf(With(text, pixels, std::string("\"pixels\": ") + wrong)), "") << wrong;
  EXPECT_NE(RefusalOf(With(text, "\"packed\": \"", "\"packed\": \"!")), "");
  EXPECT_NE(RefusalOf(With(text, "\"page\": 2", "\"page\": 0")), "");
}

// Planes of two pages, by names.
class FakeSet : public PlaneSet {
 public:
  int LayerCount() override { return 2; }
  int PlaneCount(int layer) override { return layer == 0 ? 2 : layer == 1 ? 1 : 0; }
  std::optional<SeparationShape> Plane(int layer, int plane) override {
    if (plane < 0 || plane >= PlaneCount(layer)) return std::nullopt;
    SeparationShape shape = document::Plane({0}, 1, 1);
    if (layer == 1) shape.pixels = std::make_shared<LostPixels>();
    return shape;
  }
};

class SeparationLayers : public testing::Test {
 protected:
  SeparationLayers() {
    m_Application.SetPlaneOpener(
        [](const std::wstring& info) -> Expected<std::unique_ptr<PlaneSet>> {
          if (info.empty()) return FailureOf("no such planes");
          return std::unique_ptr<PlaneSet>(std::make_unique<FakeSet>());
        });
  }
  void AddLayer(int number, int type) {
    EXPECT_EQ(m_Application.GetSheetLayerPalette()->AddSheetToPalette({number, L"", type, false}),
              1);
  }
  host::ObjectHandle AddPlane() {
    host::ObjectHandle object = 0;
    auto plane = m_Application.NewGenericCFPlane(L"/a/.info", 0, 0);
    EXPECT_EQ(plane->Add(1, 1, 0, object), 1);
    static_cast<void>(plane.release());
    return object;
  }

  Document m_Document;
  DocumentStore m_Store{m_Document};
  Notices m_Notices;
  DocumentApplication m_Application{m_Document, m_Store, m_Notices};
};

TEST_F(SeparationLayers, the_first_without_objects_is_the_empty_one) {
  EXPECT_EQ(m_Application.GetEmptySeparationLayer(), std::nullopt);
  AddLayer(3, 0);
  EXPECT_EQ(m_Application.GetEmptySeparationLayer(), std::nullopt);
  AddLayer(7, 1);
  AddLayer(5, 1);
  EXPECT_EQ(m_Application.GetEmptySeparationLayer(), 5);

  const host::ObjectHandle object = AddPlane();
  m_Store.DBSetSheetLayer(object, 5);
  EXPECT_EQ(m_Application.GetEmptySeparationLayer(), 5) << "the object is not in the document";
  EXPECT_EQ(m_Store.DSAddObject(object), 1);
  EXPECT_EQ(m_Application.GetEmptySeparationLayer(), 7);
  m_Store.DBSetSheetLayer(object, 7);
  EXPECT_EQ(m_Application.GetEmptySeparationLayer(), 5);
}

TEST_F(SeparationLayers, an_object_in_a_group_is_on_its_layer) {
  AddLayer(5, 1);
  const host::ObjectHandle group = m_Document.Create(GroupShape());
  const host::ObjectHandle object = AddPlane();
  m_Store.DBSetSheetLayer(object, 5);
  EXPECT_TRUE(m_Document.Insert(group, host::DocumentRoot));
  EXPECT_TRUE(m_Document.Insert(object, group));
  EXPECT_EQ(m_Application.GetEmptySeparationLayer(), std::nullopt);
}

TEST_F(SeparationLayers, new_objects_go_to_the_current_one_while_it_is_there) {
  m_Application.SetCurrentSheetLayer(5);
  EXPECT_EQ(m_Store.DBGetSheetLayer(AddPlane()), 0) << "no such layer";
  AddLayer(5, 1);
  EXPECT_EQ(m_Store.DBGetSheetLayer(AddPlane()), 5);
  m_Application.GetSheetLayerPalette()->RemoveSheetFromPalette(5);
  EXPECT_EQ(m_Store.DBGetSheetLayer(AddPlane()), 0);
}

TEST_F(SeparationLayers, a_plane_counts_those_of_its_set_and_reads_itself_to_be_valid) {
  const auto plane = m_Application.NewGenericCFPlane(L"/a/.info", 0, 1);
  ASSERT_TRUE(plane);
  EXPECT_EQ(plane->GetNumberofLayers(), 2);
  EXPECT_EQ(plane->GetNumberofPlanes(0), 2);
  EXPECT_EQ(plane->GetNumberofPlanes(2), 0);
  EXPECT_EQ(plane->IsStateValid(), 1);
  EXPECT_EQ(m_Application.NewGenericCFPlane(L"/a/.info", 0, 2)->IsStateValid(), 0) << "no such";
  EXPECT_EQ(m_Application.NewGenericCFPlane(L"/a/.info", 1, 0)->IsStateValid(), 0) << "unreadable";
}

TEST_F(SeparationLayers, a_plane_that_is_not_there_is_not_added) {
  host::ObjectHandle object = 99;
  EXPECT_EQ(m_Application.NewGenericCFPlane(L"/a/.info", 0, 2)->Add(1, 1, 0, object), 0);
  EXPECT_EQ(object, 99U);
}

TEST_F(SeparationLayers, planes_that_can_not_be_opened_are_a_loss) {
  EXPECT_EQ(m_Application.NewGenericCFPlane(L"", 0, 0), nullptr);
  ASSERT_EQ(m_Notices.Losses().size(), 1U);
  EXPECT_EQ(m_Notices.Losses().front(), L"the planes: no such planes");
  EXPECT_EQ(m_Application.NewGenericCFPlane(nullptr, 0, 0), nullptr);
}

TEST_F(SeparationLayers, an_added_plane_is_on_the_page_on_show) {
  m_Document.SetDisplayPage(3);
  const VK_PAGE_RANGE pages = m_Store.DBGetPageRange(AddPlane());
  EXPECT_EQ(pages.first, 3);
  EXPECT_EQ(pages.last, 3);
}

}  // namespace
}  // namespace rastrel::document
