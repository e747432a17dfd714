#include "server/printer/printer_record.h"

#include <gtest/gtest.h>

namespace rastrel::server {
namespace {

TEST(PrinterRecordTest, JobsUnderWayWait) {
  EXPECT_EQ(RecordWithWaitingJobs("<Printer id=\"1\">\nJob id=\"1\" state=\"5\" username=\"a\"\n"
                                  "Job id=\"2\" state=\"9\"\nJob id=\"3\" state=\"5\""),
            "<Printer id=\"1\">\nJob id=\"1\" state=\"3\" username=\"a\"\n"
            "Job id=\"2\" state=\"9\"\nJob id=\"3\" state=\"3\"");
}

TEST(PrinterRecordTest, OtherLinesStay) {
  EXPECT_EQ(RecordWithWaitingJobs(""), "");
  EXPECT_EQ(RecordWithWaitingJobs("\n"), "\n");
  EXPECT_EQ(RecordWithWaitingJobs("Printer state=\"5\"\n"), "Printer state=\"5\"\n");
}

}  // namespace
}  // namespace rastrel::server
