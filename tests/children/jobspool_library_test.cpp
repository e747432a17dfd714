#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "rastrel/conversion/clq_ticket.h"
#include "rastrel/conversion/job_header_writer.h"
#include "rastrel/conversion/page_size.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/mfc/archive.h"
#include "rastrel/platform/os/text.h"
#include "tests/children/queue_fixture.h"
#include "tests/support/library_fixture.h"

namespace rastrel::jobspool::testing {
namespace {

namespace fs = std::filesystem;

// A ticket that keeps the codes of its messages.
class KeepingTicket : public CLQTicket {
 public:
  KeepingTicket() : CLQTicket(CExePaths::Instance().m_QueueExe) {}
  ~KeepingTicket() override { CLQTicket::Join(); }

  void Info(JT_INFO code, JT_ORIGINATOR) override {
    const std::scoped_lock lock(m_Lock);
    m_Codes.push_back(static_cast<int>(code));
  }

  std::vector<int> m_Codes;

 private:
  std::mutex m_Lock;
};

// The library with the real queue program in its data root.
class LibraryQueue : public ::testing::Test {
 protected:
  void SetUp() override {
    REQUIRE_GHOSTSCRIPT();
    PutQueueProgram(m_Root.Directory());
  }

  // Puts the header in front of a file of that content and converts it.
  std::vector<int> Convert(const std::string& content, const CPS2CutData& cut,
                           const CPS2CutData& halfCut) {
    m_Root.Directory().Write("Queue/rip/vkaaaaaa.ps", content);
    const std::wstring file = m_Root.RipDirectory() + L"vkaaaaaa.ps";
    const PageSize page{2.54, 5.08};
    EXPECT_TRUE(conversion::WriteJobHeader(file.c_str(), &page, &cut, &halfCut, &cut.resolution));
    KeepingTicket ticket;
    EXPECT_TRUE(ticket.Start(file.c_str()));
    ticket.Join();
    return ticket.m_Codes;
  }

  [[nodiscard]] std::string Product(const std::string& ending) const {
    return m_Root.Directory().Path("Queue/rip/vkaaaaaa" + ending);
  }

  test::LibraryRoot m_Root;
};

const std::string Art =
    "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 144 72\n1 0.5019608 0 setrgbcolor 10 10 20 20 "
    "rectstroke [ /Separation (D\xE9"
    "coupe) /DeviceCMYK { 0 exch 0 0 } ] setcolorspace 1 setcolor "
    "40 10 20 20 rectstroke 0 1 1 0 setcmykcolor 70 10 20 20 rectstroke\n";

TEST_F(LibraryQueue, hears_the_states_in_order_and_success_last) {
  CPS2CutData cut;
  EXPECT_EQ(Convert(Art, cut, {}), (std::vector<int>{256, 257, 258, 259, 260, 10}));
  EXPECT_TRUE(fs::exists(Product(".cfm/.info")));
  EXPECT_TRUE(fs::exists(Product("_Color.bmp")));
  EXPECT_FALSE(fs::exists(Product(".cut")));
  const auto info = corerast::testing::CheckedInfo(Product(".cfm"));
  EXPECT_EQ(info.width, 144U);
  EXPECT_EQ(info.height, 72U);
}

TEST_F(LibraryQueue, hears_of_a_failure) {
  const auto codes = Convert("%!PS\n%%BoundingBox: 0 0 9 9\nno.such.name\n", {}, {});
  ASSERT_FALSE(codes.empty());
  EXPECT_EQ(codes.back(), 11);
  EXPECT_FALSE(fs::exists(Product(".cfm")));
}

// The texts of an archive's colors, by the framework's own reader of wide text.
std::vector<std::wstring> Colors(const std::string& path) {
  CFile file;
  EXPECT_TRUE(file.Open(os::WideFromUtf8(path).c_str(), CFile::modeRead));
  CArchive archive(&file, CArchive::load);
  std::vector<std::wstring> colors;
  std::int32_t number = 0;
  std::int32_t count = 0;
  archive >> number >> count;
  for (std::int32_t object = 0; object < count; ++object) {
    CString color;
    double real = 0;
    std::int64_t polygons = 0;
    archive >> number >> color >> real >> polygons;
    colors.push_back(color);
    EXPECT_EQ(number, 1);
    for (; polygons > 0; --polygons) {
      std::int64_t parts = 0;
      for (archive >> parts; parts > 0; --parts) {
        std::int64_t vertices = 0;
        archive >> vertices;
        for (std::int64_t i = 0; i < 5 * vertices; ++i) archive >> real;
        bool closed = false;
        std::int64_t value = 0;
        archive >> closed >> value;
      }
      for (int i = 0; i < 4; ++i) archive >> number;
      bool flag = false;
      archive >> flag;
    }
    archive >> number;
  }
  return colors;
}

TEST_F(LibraryQueue, finds_its_cut_colors_in_the_archive) {
  CPS2CutData rgb;
  rgb.enabled = 1;
  rgb.color = CVKFullColor(255 | 128 << 8, COLORSPACE_RGB, 0, 0);
  CPS2CutData named;
  named.enabled = 1;
  named.colorKind = CutColorNamed;
  named.color.SetColorName(
      L"D\xE9"
      L"coupe");
  EXPECT_EQ(Convert(Art, rgb, named).back(), 10);
  const auto colors = Colors(Product(".cut"));
  ASSERT_EQ(colors.size(), 2U);
  EXPECT_TRUE(rgb.IsColorMatchKVI(colors[0])) << os::Utf8FromWide(colors[0]);
  EXPECT_FALSE(named.IsColorMatchKVI(colors[0]));
  EXPECT_TRUE(named.IsColorMatchKVI(colors[1])) << os::Utf8FromWide(colors[1]);
}

TEST_F(LibraryQueue, measures_real_files_by_the_interface) {
  const std::string eps = CorpusFile("eps/ai88-cr-only.eps");
  const std::string dos = CorpusFile("doseps/coreldraw-x7-cutcontour.eps");
  if (eps.empty() || dos.empty()) GTEST_SKIP() << "The shared files are not here.";
  BOUNDS bounds;
  ASSERT_EQ(GetPSPageSize(os::WideFromUtf8(eps).c_str(), bounds), 1);
  EXPECT_NEAR(bounds.xmin, 133.861777 / 72 * 2.54, 0.002);
  EXPECT_NEAR(bounds.ymin, 265.337992 / 72 * 2.54, 0.002);
  EXPECT_NEAR(bounds.xmax, 374.513825 / 72 * 2.54, 0.002);
  EXPECT_NEAR(bounds.ymax, 505.979985 / 72 * 2.54, 0.002);
  ASSERT_EQ(GetPSPageSize(os::WideFromUtf8(dos).c_str(), bounds), 1);
  EXPECT_NEAR(bounds.xmin, 72.071998 / 72 * 2.54, 0.002);
  EXPECT_NEAR(bounds.ymax, 696.023979 / 72 * 2.54, 0.002);
}

}  // namespace
}  // namespace rastrel::jobspool::testing
