#pragma once

#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "rastrel/platform/values/color.h"
#include "rastrel/platform/values/document_values.h"
#include "rastrel/platform/values/paragraph.h"
#include "rastrel/platform/values/rect.h"
#include "rastrel/platform/values/tm.h"
#include "rastrel/platform/values/world.h"

class CWnd;

namespace rastrel::test {

/// An object's handle, so that it is not written as a number. #1 is the document.
struct ObjectText {
  host::ObjectHandle handle = 0;
};

/// A name that is written as it is, without quotes.
struct NameText {
  std::string name;
};

// Arguments and results as a line has them. Numbers have as many digits as bring them back, texts
// are in double quotes with \r, \n, \" and \\ escaped, in UTF-8.
std::string TextOf(double value);
std::string TextOf(const wchar_t* text);
std::string TextOf(const ObjectText& object);
std::string TextOf(host::ListHandle list);
std::string TextOf(ObjFilter filter);
std::string TextOf(const CVKColor& color);
std::string TextOf(const CVKFullColor& color);
std::string TextOf(const CWorldRect& rectangle);
std::string TextOf(const CWorldPoint& point);
std::string TextOf(const NewWorldPt& point);
std::string TextOf(const BOUNDS& bounds);
std::string TextOf(const TM& matrix);
std::string TextOf(const VK_PAGE_RANGE& pages);
std::string TextOf(const LINESTYLE& style);
std::string TextOf(const CPropertyLocks& locks);
std::string TextOf(const ParagraphInfo& info);
std::string TextOf(const ParagraphEle& paragraph);
std::string TextOf(const FontRecord* font);
inline std::string TextOf(const std::wstring& text) { return TextOf(text.c_str()); }
inline std::string TextOf(const NameText& name) { return name.name; }
inline std::string TextOf(bool value) { return value ? "true" : "false"; }
inline std::string TextOf(std::nullptr_t) { return "null"; }
inline std::string TextOf(const CWnd* window) { return window != nullptr ? "window" : "null"; }
template <class Whole>
requires std::is_integral_v<Whole> std::string TextOf(Whole value) { return std::to_string(value); }

/// The calls that a host was given, one line each, and the answers that a test sets for it.
class HostCalls {
 public:
  using Lines = std::vector<std::string>;

  /// Writes `name(argument, ...)`.
  template <class... Arguments>
  void Told(std::string_view name, const Arguments&... arguments) {
    Write(Line(name, arguments...));
  }
  /// Writes `name(argument, ...) -> result` and returns the result.
  template <class Result, class... Arguments>
  Result Answered(const Result& result, std::string_view name, const Arguments&... arguments) {
    Write(Line(name, arguments...) + " -> " + TextOf(result));
    return result;
  }
  /// Writes a line as it is.
  void Write(std::string line);
  /// Called before each line is written, to write changes that were made without a call.
  void BeforeLines(std::function<void()> callback) { m_Before = std::move(callback); }

  /// The answer of an operation from now on.
  void Always(const std::string& name, double answer) { m_Standing[name] = answer; }
  /// Its answers at the next calls, one after the other; then the standing one counts again.
  void Next(const std::string& name, std::initializer_list<double> answers);
  /// The script's answer to this call; nothing if it has none.
  std::optional<double> Scripted(const std::string& name);
  /// The script's answer to this call, or `otherwise`.
  int Answer(const std::string& name, int otherwise);
  double AnswerNumber(const std::string& name, double otherwise);

  /// All lines so far, and the fields written without a call since the last.
  const Lines& All();
  /// The lines as one text, each ended by a line feed.
  std::string Text();
  /// The lines whose operation is one of these: the text before the parenthesis, after the last
  /// point. So "Add" finds `P1.Add(1, 1, 0) -> #2`.
  Lines Of(std::initializer_list<std::string_view> names);
  /// Whether a line is among them, in full.
  bool Has(std::string_view line);
  /// How often an operation was called.
  std::size_t Count(std::string_view name) { return Of({name}).size(); }
  /// Forgets the lines, not the script.
  void Clear();
  /// How many lines are kept; a run that calls more often is still answered.
  void Limit(std::size_t mostLines) { m_MaximumLines = mostLines; }

 private:
  template <class... Arguments>
  static std::string Line(std::string_view name, const Arguments&... arguments) {
    std::string line(name);
    line += '(';
    std::string_view separator;
    ((line.append(separator).append(TextOf(arguments)), separator = ", "), ...);
    line += ')';
    return line;
  }

  Lines m_Lines;
  std::map<std::string, double> m_Standing;
  std::map<std::string, std::deque<double>> m_Next;
  std::function<void()> m_Before;
  std::size_t m_MaximumLines = 1'000'000;
  bool m_Writing = false;
};

}  // namespace rastrel::test
