#include "tests/cutting/output/gcode_interpreter.h"

#include <cctype>
#include <cmath>
#include <map>
#include <numbers>
#include <sstream>

#include "rastrel/platform/os/number_text.h"

namespace rastrel::cutting::test {
namespace {

class Controller {
 public:
  void Line(const std::string& line) {
    std::map<char, double> words;
    std::string rest = line.substr(0, line.find(';'));
    for (std::size_t at = 0; at < rest.size();) {
      const char letter = static_cast<char>(std::toupper(static_cast<unsigned char>(rest[at])));
      if (letter == ' ' || letter == '\r' || letter == '\t') {
        ++at;
      } else if (letter == '(') {
        at = rest.find(')', at);
        if (at == std::string::npos) return Fail(line);
        ++at;
      } else {
        const std::size_t end =
            std::min(rest.find_first_not_of("+-.0123456789 ", at + 1), rest.size());
        const std::string digits = rest.substr(at + 1, end - at - 1);
        if (!std::isalpha(static_cast<unsigned char>(letter)) ||
            digits.find_first_of("0123456789") == std::string::npos)
          return Fail(line);
        Word(letter, os::DoubleFromText(digits), words, line);
        at = end;
      }
    }
    Go(words);
  }

  Machine Take() {
    machine.on = on;
    return machine;
  }

 private:
  void Fail(const std::string& text) {
    if (machine.fault.empty()) machine.fault = text;
  }

  void Word(char letter, double value, std::map<char, double>& words, const std::string& line) {
    const int code = static_cast<int>(value);
    if (letter == 'G') {
      switch (code) {
        case 0:
        case 1:
        case 2:
        case 3: motion = code; break;
        case 20: unit = 25.4; break;
        case 21: unit = 1; break;
        case 90: absolute = true; break;
        case 91: absolute = false; break;
        default: Fail(line);
      }
    } else if (letter == 'M') {
      switch (code) {
        case 2: break;
        case 3:
        case 4: on = true; break;
        case 5: on = false; break;
        default: Fail(line);
      }
    } else if (letter == 'S') {
      power = value;
    } else if (letter == 'F') {
      feed = value * unit;
    } else if (std::string("XYIJ").find(letter) != std::string::npos) {
      words[letter] = value * unit;
    } else {
      Fail(line);
    }
  }

  void Go(const std::map<char, double>& words) {
    if (!words.contains('X') && !words.contains('Y')) return;
    const auto axis = [&](char letter, double now) {
      const auto found = words.find(letter);
      if (found == words.end()) return now;
      return absolute ? found->second : now + found->second;
    };
    const Point to{axis('X', position.x), axis('Y', position.y)};
    if (motion < 2) return Step(to);
    const auto offset = [&](char letter) { return words.contains(letter) ? words.at(letter) : 0; };
    Arc(to, {position.x + offset('I'), position.y + offset('J')});
  }

  void Arc(Point to, Point center) {
    const double radius = Distance(position, center);
    const double begin = std::atan2(position.y - center.y, position.x - center.x);
    double sweep = std::atan2(to.y - center.y, to.x - center.x) - begin;
    const double turn = 2 * std::numbers::pi;
    if (motion == 3 && sweep <= 0) sweep += turn;
    if (motion == 2 && sweep >= 0) sweep -= turn;
    constexpr int steps = 90;
    for (int i = 1; i < steps; ++i)
      Step({center.x + radius * std::cos(begin + sweep * i / steps),
            center.y + radius * std::sin(begin + sweep * i / steps)});
    Step(to);
  }

  void Step(Point to) {
    machine.moves.push_back({position, to, motion == 0, on, power, feed});
    position = to;
  }

  Machine machine;
  Point position;
  int motion = 0;
  double unit = 1;
  bool absolute = true;
  bool on = false;
  double power = 0;
  double feed = 0;
};

}  // namespace

Machine Follow(const std::string& program) {
  Controller controller;
  std::istringstream lines(program);
  for (std::string line; std::getline(lines, line);) controller.Line(line);
  return controller.Take();
}

}  // namespace rastrel::cutting::test
