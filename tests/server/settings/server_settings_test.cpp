#include "server/settings/server_settings.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>

#include "rastrel/platform/os/private_directory.h"

namespace rastrel::server {
namespace {

std::string FaultOf(const std::string& text) {
  const auto settings = ReadSettings(text, "server.toml");
  return settings ? "" : Describe(settings.Error());
}

TEST(ServerSettings, AnEmptyFileHasTheDefaults) {
  const auto settings = ReadSettings("", "server.toml");
  ASSERT_TRUE(settings);
  EXPECT_EQ(settings->workers, 0);
  EXPECT_EQ(settings->readyJobs, 8);
  EXPECT_EQ(settings->quarantineAfter, 3);
  EXPECT_EQ(settings->retention.days, 30);
  EXPECT_EQ(settings->retention.jobs, 10000);
  EXPECT_TRUE(settings->devices.empty());
  const DeviceSettings device = settings->DeviceNamed("Plotter");
  EXPECT_EQ(device.name, "Plotter");
  EXPECT_EQ(device.way, DeviceWay::Files);
  EXPECT_FALSE(device.againAfterCutOff);
}

TEST(ServerSettings, TheNetworkPrinterListensOnThisMachineByDefault) {
  const NetworkPrinterSettings usual = ReadSettings("", "server.toml")->printer;
  EXPECT_FALSE(usual.on);
  EXPECT_TRUE(ReadSettings("[printer]\n", "server.toml")->printer.on);
  EXPECT_EQ(usual.address, "127.0.0.1");
  EXPECT_EQ(usual.port, 8631);
  const NetworkPrinterSettings other =
      ReadSettings("[printer]\non = false\naddress = '::'\nport = 1024\n", "server.toml")->printer;
  EXPECT_FALSE(other.on);
  EXPECT_EQ(other.address, "::");
  EXPECT_EQ(other.port, 1024);
  EXPECT_NE(FaultOf("[printer]\nport = 1023\n"), "");
  EXPECT_EQ(FaultOf("[printer]\nport = 65535\n"), "");
  EXPECT_NE(FaultOf("[printer]\nport = 65536\n"), "");
  EXPECT_NE(FaultOf("[printer]\naddress = ''\n"), "");
  EXPECT_NE(FaultOf("[printer]\naddress = 'a b'\n"), "");
  EXPECT_NE(FaultOf("[printer]\nother = 1\n"), "");
}

TEST(ServerSettings, the_http_interface_is_for_this_machine_unless_it_has_tls) {
  const WebSettings usual = ReadSettings("", "server.toml")->web;
  EXPECT_FALSE(usual.on);
  EXPECT_EQ(usual.address, "127.0.0.1");
  EXPECT_EQ(usual.port, 8632);
  EXPECT_TRUE(ReadSettings("[web]\n", "server.toml")->web.on);
  EXPECT_FALSE(ReadSettings("[web]\non = false\n", "server.toml")->web.on);
  const std::string tls = "certificate = '/c.pem'\nkey = '/k.pem'\n";
  for (const char* own : {"127.0.0.1", "127.8.8.8", "::1", "localhost"})
    EXPECT_EQ(FaultOf(std::string("[web]\naddress = '") + own + "'\n"), "") << own;
  for (const char* other : {"0.0.0.0", "::", "10.0.0.1", "shop.example", "127.example", "::2"}) {
    const std::string text = std::string("[web]\naddress = '") + other + "'\n";
    EXPECT_TRUE(FaultOf(text).starts_with("server.toml:2:11: ")) << other;
    EXPECT_EQ(FaultOf(text + tls), "") << other;
  }
}

TEST(ServerSettings, tls_has_a_certificate_and_a_key_by_full_paths) {
  EXPECT_EQ(ReadSettings("[web]\n", "server.toml")->web.templates, "");
  EXPECT_EQ(ReadSettings("[web]\ntemplates = '/shop/templates'\n", "server.toml")->web.templates,
            "/shop/templates");
  EXPECT_NE(FaultOf("[web]\ntemplates = 'templates'\n"), "");
  EXPECT_NE(FaultOf("[web]\ncertificate = '/c.pem'\n"), "");
  EXPECT_NE(FaultOf("[web]\nkey = '/k.pem'\n"), "");
  EXPECT_NE(FaultOf("[web]\ncertificate = 'c.pem'\nkey = '/k.pem'\n"), "");
  EXPECT_NE(FaultOf("[web]\ncertificate = '/c.pem'\nkey = 'k.pem'\n"), "");
}

TEST(ServerSettings, names_of_the_http_interface_are_host_names) {
  const auto settings =
      ReadSettings("[web]\nnames = ['Shop.Example', '10.0.0.1']\n", "server.toml");
  ASSERT_TRUE(settings);
  EXPECT_EQ(settings->web.names, (std::vector<std::string>{"shop.example", "10.0.0.1"}));
  EXPECT_NE(FaultOf("[web]\nnames = ['a b']\n"), "");
  EXPECT_NE(FaultOf("[web]\nnames = ['']\n"), "");
  EXPECT_NE(FaultOf("[web]\nnames = 'a'\n"), "");
  const auto count = [](int names) {
    std::string text = "[web]\nnames = [";
    for (int name = 0; name < names; ++name) text += "'a',";
    return FaultOf(text + "]\n");
  };
  EXPECT_EQ(count(99), "");
  EXPECT_EQ(count(100), "");
  EXPECT_NE(count(101), "");
  EXPECT_EQ(FaultOf("[web]\nport = 1024\n"), "");
  EXPECT_NE(FaultOf("[web]\nport = 1023\n"), "");
  EXPECT_EQ(FaultOf("[web]\nport = 65535\n"), "");
  EXPECT_NE(FaultOf("[web]\nport = 65536\n"), "");
}

TEST(ServerSettings, ADeviceHasWhatItsTableSays) {
  const auto settings = ReadSettings(
      "[[device]]\nname = 'Plotter'\nkind = 'socket'\naddress = 'plotter:9100'\ntimeout = 5\n"
      "retries = 1\npause = 2\nagain-after-cut-off = true\n",
      "server.toml");
  ASSERT_TRUE(settings) << Describe(settings.Error());
  const DeviceSettings device = settings->DeviceNamed("Plotter");
  EXPECT_EQ(device.way, DeviceWay::Socket);
  EXPECT_EQ(device.address, "plotter:9100");
  EXPECT_EQ(device.timeoutSeconds, 5);
  EXPECT_EQ(device.retries, 1);
  EXPECT_EQ(device.pauseSeconds, 2);
  EXPECT_EQ(settings->AgainAfterCutOff(), std::set<std::string>{"Plotter"});
}

TEST(ServerSettings, EachNumberIsTakenAtItsLimitsAndRefusedBeyond) {
  struct Row {
    const char* before;
    const char* key;
    long long least;
    long long greatest;
  };
  const std::string device = "[[device]]\nname = 'A'\n";
  for (const Row& row :
       {Row{"", "workers", 0, 256}, Row{"", "ready-jobs", 1, 1000},
        Row{"", "quarantine-after", 0, 1000}, Row{"", "job-megabytes", 0, 1000000000},
        Row{"[retention]\n", "days", 0, 36500}, Row{"[retention]\n", "jobs", 0, 1000000},
        Row{"[retention]\n", "megabytes", 0, 1000000000}, Row{device.c_str(), "timeout", 0, 604800},
        Row{device.c_str(), "retries", 0, 1000}, Row{device.c_str(), "pause", 0, 86400}}) {
    const auto with = [&](long long value) {
      return FaultOf(std::string(row.before) + row.key + " = " + std::to_string(value) + "\n");
    };
    for (const long long value : {row.least, row.least + 1, row.greatest - 1, row.greatest})
      EXPECT_EQ(with(value), "") << row.key << " " << value;
    EXPECT_NE(with(row.least - 1), "") << row.key;
    EXPECT_NE(with(row.greatest + 1), "") << row.key;
  }
}

TEST(ServerSettings, UnknownKeysAreFaultsWithTheirPlace) {
  EXPECT_NE(FaultOf("workers = 1\nworker = 2\n").find("server.toml:2:1"), std::string::npos);
  EXPECT_NE(FaultOf("[retention]\nyears = 2\n").find("server.toml:2:1"), std::string::npos);
  EXPECT_NE(FaultOf("[[device]]\nname = 'A'\nport = 2\n").find("server.toml:3:1"),
            std::string::npos);
}

TEST(ServerSettings, AnAddressFitsItsKind) {
  const auto with = [](const char* kind, const char* address) {
    return FaultOf(std::string("[[device]]\nname = 'A'\nkind = '") + kind + "'\n" + address);
  };
  EXPECT_EQ(with("files", ""), "");
  EXPECT_NE(with("files", "address = '/a'\n"), "");
  for (const char* kind : {"folder", "program"}) {
    EXPECT_EQ(with(kind, "address = '/a b'\n"), "");
    EXPECT_NE(with(kind, "address = 'a'\n"), "");
    EXPECT_NE(with(kind, ""), "");
  }
  for (const char* address : {"\"/a b\" -q", "\"/a b\"", "/a \"b c\""})
    EXPECT_EQ(with("program", (std::string("address = '") + address + "'\n").c_str()), "")
        << address;
  for (const char* address : {"\"a b\" -q", "\"/a b", "\"\"/a", "\""})
    EXPECT_NE(with("program", (std::string("address = '") + address + "'\n").c_str()), "")
        << address;
  EXPECT_NE(with("folder", "address = '\"/a\"'\n"), "");
  for (const char* address : {"a:1", "a:65535", "[::1]:9100"})
    EXPECT_EQ(with("socket", (std::string("address = '") + address + "'\n").c_str()), "");
  for (const char* address : {"a", "a:", ":9100", "a:0", "a:65536", "a:9x", "a:123456"})
    EXPECT_NE(with("socket", (std::string("address = '") + address + "'\n").c_str()), "")
        << address;
  EXPECT_EQ(with("queue", "address = 'office'\n"), "");
  EXPECT_NE(with("pigeon", "address = 'a'\n"), "");
}

TEST(ServerSettings, TwoDevicesOfOneNameAreRefused) {
  EXPECT_NE(FaultOf("[[device]]\nname = 'A'\n[[device]]\nname = 'A'\n").find("already"),
            std::string::npos);
  EXPECT_NE(FaultOf("[[device]]\nkind = 'files'\n"), "");
}

TEST(ServerSettings, ADataRootWithoutAFileHasTheDefaults) {
  const auto root = os::PrivateDirectory::Make("rastrel-settings-");
  ASSERT_TRUE(root);
  EXPECT_TRUE(SettingsOf(root->Path()));
  std::ofstream(root->Path() + "/server.toml") << "workers = 3\n";
  const auto settings = SettingsOf(root->Path());
  ASSERT_TRUE(settings) << Describe(settings.Error());
  EXPECT_EQ(settings->workers, 3);
}

TEST(ServerSettings, AFileThatOthersMayChangeIsRefused) {
  const auto root = os::PrivateDirectory::Make("rastrel-settings-");
  ASSERT_TRUE(root);
  const std::string path = root->Path() + "/server.toml";
  std::ofstream(path) << "workers = 3\n";
  std::filesystem::permissions(path, std::filesystem::perms(0666));
  EXPECT_FALSE(SettingsOf(root->Path()));
}

// The page has a row for each key, and the reader knows no other.
TEST(ServerSettings, PageAndReaderAgreeOnTheKeys) {
  std::ifstream page(RASTREL_SOURCE_DIR "/docs/formats/server-settings.md");
  const std::regex row("^\\| `([a-z-]+)` \\|.*");
  const std::regex section("^## `\\[+([a-z]+)\\]+`.*");
  std::string table;
  std::set<std::string> keys;
  for (std::string line; std::getline(page, line);) {
    std::smatch match;
    if (std::regex_match(line, match, section)) table = match[1].str() + ".";
    if (std::regex_match(line, match, row)) keys.insert(table + match[1].str());
  }
  std::ifstream reader(RASTREL_SOURCE_DIR "/server/settings/server_settings.cpp");
  const std::string code{std::istreambuf_iterator<char>(reader), {}};
  const std::regex taken(
      "(?:TakeWhole\\(\\*?(\\w+), |(\\w+)(?:\\.|->)(?:Text|Texts|Truth|Choice)\\()\"([a-z-]+)\"");
  std::set<std::string> known;
  for (std::sregex_iterator one(code.begin(), code.end(), taken), last; one != last; ++one) {
    const std::string object = (*one)[1].str() + (*one)[2].str();
    const std::size_t place = static_cast<std::size_t>(one->position());
    const bool ofDevice = code.rfind("DeviceSettings DeviceOf", place) != code.npos &&
                          code.find("void TakeDevices", 0) > place;
    const bool ofPrinter = code.find("void TakePrinter") < place &&
                           place < code.find("bool IsThisMachine") && object == "table";
    const bool ofWeb = code.find("void TakeNames") < place &&
                       place < code.find("ServerSettings::DeviceNamed") && object == "table";
    const bool ofRetention =
        code.find("void TakeRetention") < place && object == "table" && !ofPrinter && !ofWeb;
    known.insert((object == "root" ? ""
                  : ofPrinter      ? "printer."
                  : ofWeb          ? "web."
                  : ofRetention    ? "retention."
                  : ofDevice       ? "device."
                                   : "?.") +
                 (*one)[3].str());
  }
  EXPECT_EQ(keys, known);
}

}  // namespace
}  // namespace rastrel::server
