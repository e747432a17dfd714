#include "cutting/device/connection.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <termios.h>

#include <utility>
#include <vector>

namespace rastrel::cutting {
namespace {

TEST(OpenSerial, gives_the_line_the_speed_of_its_device) {
  for (const auto& [baud, speed] : std::vector<std::pair<int, speed_t>>{{1200, B1200},
                                                                        {2400, B2400},
                                                                        {4800, B4800},
                                                                        {9600, B9600},
                                                                        {19200, B19200},
                                                                        {38400, B38400},
                                                                        {57600, B57600},
                                                                        {115200, B115200},
                                                                        {230400, B230400},
                                                                        {460800, B460800},
                                                                        {500000, B500000},
                                                                        {576000, B576000},
                                                                        {921600, B921600},
                                                                        {1000000, B1000000}}) {
    int device = -1;
    int port = -1;
    char name[128];
    ASSERT_EQ(::openpty(&device, &port, name, nullptr, nullptr), 0);
    const os::FileDescriptor cutter(device);
    const os::FileDescriptor kept(port);
    DeviceReach reach;
    reach.by = Reach::Serial;
    reach.path = name;
    reach.baud = baud;
    ASSERT_TRUE(OpenSerial(reach));
    termios settings{};
    ASSERT_EQ(::tcgetattr(port, &settings), 0);
    EXPECT_EQ(::cfgetospeed(&settings), speed) << baud;
  }
}

}  // namespace
}  // namespace rastrel::cutting
