// Runs a command with one of its system calls failing, or writes down which calls it makes and how
// it changes files. The tests of faults start it; see usage below.

#include <charconv>
#include <chrono>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/faults/injector/tracer.h"

namespace {

constexpr std::string_view Usage =
    "usage: fault_injector --report FILE --ours DIRECTORY... [--calls]\n"
    "         [--fail TASK CALL NUMBER ERRNO] [--journal FILE --below DIRECTORY]\n"
    "         [--limit SECONDS] -- PROGRAM [ARGUMENT...]\n"
    "exit status: 0 the report is complete, 1 the command can't be followed here, 2 wrong use\n";

std::optional<int> NumberOf(const std::string& text) {
  int number = 0;
  const auto end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end || number <= 0) return {};
  return number;
}

/// Reads the arguments one by one; m_Failed once one is missing or no number.
class Words {
 public:
  explicit Words(std::vector<std::string> words) : m_Words(std::move(words)) {}

  [[nodiscard]] bool AtEnd() const { return m_Next == m_Words.size(); }
  [[nodiscard]] bool Failed() const { return m_Failed; }

  std::string Text() {
    if (!AtEnd()) return m_Words[m_Next++];
    m_Failed = true;
    return {};
  }

  int Number() {
    const auto number = NumberOf(Text());
    if (!number) m_Failed = true;
    return number.value_or(0);
  }

  std::vector<std::string> Rest() {
    std::vector<std::string> rest(m_Words.begin() + static_cast<std::ptrdiff_t>(m_Next),
                                  m_Words.end());
    m_Next = m_Words.size();
    return rest;
  }

 private:
  std::vector<std::string> m_Words;
  std::size_t m_Next = 0;
  bool m_Failed = false;
};

bool TakeOption(const std::string& option, Words& words, faults::Plan& plan) {
  if (option == "--report") {
    plan.report = words.Text();
  } else if (option == "--ours") {
    plan.ours.push_back(words.Text());
  } else if (option == "--calls") {
    plan.listCalls = true;
  } else if (option == "--fail") {
    const std::string task = words.Text();
    const std::string name = words.Text();
    plan.failing = faults::CallAddress{task, name, words.Number()};
    plan.error = words.Number();
  } else if (option == "--journal") {
    plan.journal = words.Text();
  } else if (option == "--below") {
    plan.changedDirectory = words.Text();
  } else if (option == "--limit") {
    plan.limit = std::chrono::seconds(words.Number());
  } else {
    return false;
  }
  return true;
}

std::optional<faults::Plan> ReadPlan(Words words) {
  faults::Plan plan;
  while (!words.AtEnd()) {
    const std::string option = words.Text();
    if (option == "--") break;
    if (!TakeOption(option, words, plan)) return {};
  }
  plan.command = words.Rest();
  if (words.Failed() || plan.command.empty() || plan.report.empty()) return {};
  return plan;
}

}  // namespace

int main(int count, char** arguments) {
  const auto plan = ReadPlan(Words(std::vector<std::string>(arguments + 1, arguments + count)));
  if (!plan) {
    std::cerr << Usage;
    return 2;
  }
  faults::Tracer tracer(*plan);
  return tracer.Run() ? 0 : 1;
}
