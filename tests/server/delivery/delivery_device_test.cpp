#include "server/delivery/delivery_device.h"

#include <gtest/gtest.h>

namespace rastrel::server {
namespace {

DeliveryDevice Made(DeviceKind kind, const std::string& address) {
  auto device = DeviceWithAddress("x", kind, address);
  EXPECT_TRUE(device) << address;
  return device ? *device : DeliveryDevice{};
}

std::string Refusal(DeviceKind kind, const std::string& address) {
  const auto device = DeviceWithAddress("x", kind, address);
  return device ? "taken" : device.Error().why;
}

TEST(DeviceWithAddress, a_folder_is_a_full_path) {
  EXPECT_EQ(Made(DeviceKind::Folder, "/a b/c").path, "/a b/c");
  EXPECT_EQ(Refusal(DeviceKind::Folder, "a/b"), "the address of a folder is a full path");
  EXPECT_EQ(Refusal(DeviceKind::Folder, ""), "the address of a folder is a full path");
  EXPECT_EQ(Refusal(DeviceKind::Folder, std::string("/a\0b", 4)), "an address has a zero byte");
}

TEST(DeviceWithAddress, a_socket_is_a_host_and_a_port) {
  const DeliveryDevice device = Made(DeviceKind::Socket, "plotter.shop:9100");
  EXPECT_EQ(device.host, "plotter.shop");
  EXPECT_EQ(device.port, 9100);
  EXPECT_EQ(Made(DeviceKind::Socket, "[::1]:1").host, "::1");
  EXPECT_EQ(Made(DeviceKind::Socket, "h:65535").port, 65535);
  for (const char* bad : {"h", "h:", ":9", "h:0", "h:65536", "h:1x", "::1:9", "a b:9", "u@h:9",
                          "[]:9", "h:99999999999999999999"}) {
    EXPECT_EQ(Refusal(DeviceKind::Socket, bad), "the address of a socket is host:port") << bad;
  }
}

TEST(DeviceWithAddress, a_queue_may_name_another_machine) {
  const DeliveryDevice here = Made(DeviceKind::Queue, "sign");
  EXPECT_EQ(here.queue, "sign");
  EXPECT_EQ(here.host, "");
  const DeliveryDevice usual = Made(DeviceKind::Queue, "sign@server");
  EXPECT_EQ(usual.host, "server");
  EXPECT_EQ(usual.port, 631);
  EXPECT_EQ(Made(DeviceKind::Queue, "sign@[::1]:8632").port, 8632);
  for (const char* bad : {"", "@h", "a b", "a/b", "a@", "a@h:x", "a#b"}) {
    EXPECT_EQ(Refusal(DeviceKind::Queue, bad),
              "the address of a queue is NAME, NAME@host or NAME@host:port")
        << bad;
  }
}

TEST(DeviceWithAddress, a_program_has_words_and_quotation_marks_keep_blanks) {
  using Words = std::vector<std::string>;
  EXPECT_EQ(Made(DeviceKind::Program, "/bin/send  -v\t-x").command,
            (Words{"/bin/send", "-v", "-x"}));
  EXPECT_EQ(Made(DeviceKind::Program, R"("/a b/c" --to="x y" "")").command,
            (Words{"/a b/c", "--to=x y", ""}));
  for (const char* bad : {"", "  ", "\"open", "\"\" x"}) {
    EXPECT_EQ(Refusal(DeviceKind::Program, bad),
              "the address of a program is its name and its arguments")
        << bad;
  }
}

}  // namespace
}  // namespace rastrel::server
