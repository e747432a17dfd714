#pragma once

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "server/web/templates/run_merge.h"

namespace rastrel::server::web {

inline void WriteTemplate(const std::string& directory, const std::string& name) {
  std::filesystem::create_directories(directory);
  std::ofstream(directory + "/" + name, std::ios::binary) << "<ABB/>";
}

inline std::string ContentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// A program that has the fields "Name" (at most 255 characters) and "Width" (a number) for each
/// template but "broken.xml", and draws pictures whose bytes are the table. Copies share their
/// state.
struct FakeMerge {
  struct State {
    std::mutex mutex;
    std::vector<std::vector<std::string>> runs;
    /// Called before a picture is drawn.
    std::function<void()> before;
    std::string lines = R"({"event":"merge-row","row":2,"placed":true,"overflowed":[]})"
                        "\n"
                        R"({"event":"document","pages":1,"width_cm":7.62,"height_cm":2.54})"
                        "\n";
    bool draws = true;
    int fields = 0;  ///< not 0: so many fields in place of those
    bool fails = false;
  };
  std::shared_ptr<State> state = std::make_shared<State>();

  static std::string ManyFields(int count) {
    std::string lines;
    for (int i = 0; i < count; ++i)
      lines += R"({"event":"merge-field","kind":"text","name":"F)" + std::to_string(i) + "\"}\n";
    return lines;
  }

  [[nodiscard]] int Count(const std::string& option) const {
    const std::lock_guard lock(state->mutex);
    return static_cast<int>(std::ranges::count_if(
        state->runs, [&](const auto& run) { return std::ranges::find(run, option) != run.end(); }));
  }

  Expected<MergeRun> operator()(const std::vector<std::string>& arguments,
                                std::chrono::milliseconds) const {
    {
      const std::lock_guard lock(state->mutex);
      state->runs.push_back(arguments);
    }
    if (std::ranges::find(arguments, "--fields") != arguments.end()) {
      if (arguments[1].ends_with("broken.xml"))
        return MergeRun{3, R"({"event":"failed","text":"/root/x/broken.xml:3: it has a fault."})"};
      if (state->fields > 0) return MergeRun{0, ManyFields(state->fields)};
      return MergeRun{0, R"({"event":"merge-field","name":"Name","kind":"text","maximum":255})"
                         "\n"
                         R"({"event":"merge-field","name":"Width","kind":"number","maximum":0})"
                         "\n"};
    }
    if (state->before) state->before();
    if (state->fails) return FailureOf("rastrel-document has not ended in time");
    const auto after = [&](const char* option) {
      return *(std::ranges::find(arguments, option) + 1);
    };
    if (state->draws)
      std::ofstream(after("-o"), std::ios::binary) << "PNG of " << ContentOf(after("--data"));
    return MergeRun{0, state->lines};
  }
};

}  // namespace rastrel::server::web
