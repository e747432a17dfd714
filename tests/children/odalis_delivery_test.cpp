#include "children/coreodalis/delivery.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "pages/page_info.h"
#include "tests/children/odalis_fixture.h"
#include "tests/support/forked_child.h"
#include "tests/support/wait_until.h"

// An end of the engine between the name of a file and its report: who started it knows of no file.
namespace rastrel::odalis {
namespace {

using namespace testing;
using Names = std::vector<std::string>;

class EndedDelivery : public ::testing::Test {
 protected:
  EndedDelivery() { WriteRgbPage(Page(), "Sign"); }

  std::string Page() const { return m_Directory.Path() + "/page"; }
  std::string Output() const { return m_Directory.Path() + "/output"; }

  /// Delivers the page in a process of its own, which may end before the report has returned.
  void Deliver(bool overwrite, bool endsBeforeReport) const {
    test::ForkedChild child([&](test::ForkedChild::Side&) {
      const auto devices = devices::ReadDevices(
          std::string("[*]\nkind = file\nformat = tiff\npattern = {output}/{job}.tif\n") +
          (overwrite ? "overwrite = yes\n" : ""));
      auto guardian = interpreter::Guardian::Start(interpreter::HeldStreams::None);
      const auto info = pages::ReadPageInfo(Page());
      if (!devices || !guardian || !info) return 1;
      auto source = PageSource::Open(Page(), *info);
      if (!source) return 2;
      DeliveryOrder order;
      order.device = &devices->front();
      order.values.output = Output();
      order.values.job = "Sign";
      order.progress = [](double) {};
      order.flushing = [] {};
      order.delivered = [&](const Names& paths) {
        if (paths != Names{Output() + "/Sign.tif"}) ::_exit(3);
        if (endsBeforeReport) ::_exit(0);
      };
      if (!Delivery(*guardian).Deliver(*source, order)) return 4;
      return 0;  // the guardian clears up first
    });
    EXPECT_EQ(child.Exit(), 0);
  }

 private:
  TemporaryDirectory m_Directory;
};

TEST_F(EndedDelivery, before_its_report_leaves_no_file) {
  Deliver(false, true);
  EXPECT_TRUE(test::WaitUntil([&] { return NamesIn(Output()).empty(); }));
}

TEST_F(EndedDelivery, after_its_report_leaves_the_file) {
  Deliver(false, false);
  EXPECT_EQ(NamesIn(Output()), Names{"Sign.tif"});
}

TEST_F(EndedDelivery, leaves_a_file_that_took_anothers_place) {
  WriteFile(Output() + "/Sign.tif", "old");
  Deliver(true, true);
  EXPECT_TRUE(test::WaitUntil([&] { return NamesIn(Output()) == Names{"Sign.tif"}; }));
  EXPECT_NE(ReadFile(Output() + "/Sign.tif"), "old");
}

}  // namespace
}  // namespace rastrel::odalis
