#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>

#include "rastrel/conversion/bitmap/convert_ps_to_bmp.h"
#include "rastrel/job/exe_paths.h"
#include "rastrel/platform/host/base_dir.h"
#include "tests/conversion/bitmap/bitmap_transcript.h"
#include "tests/conversion/queue_fixture.h"
#include "tests/support/checked_host.h"
#include "tests/support/cut_archive_bytes.h"
#include "tests/support/scripted_views.h"
#include "tests/support/tree_snapshot.h"

namespace rastrel::test {

/// A recording host whose dialogs are answered by a script.
class ConvertHost : public CheckedHost {
 public:
  ConvertHost() { MayStay(L"Images", L"EPS dialog data"); }
  host::DialogViews& GetDialogViews() override { return m_Otherwise ? *m_Otherwise : m_Views; }
  host::Application* GetApplication() override {
    return m_HasApplication ? CheckedHost::GetApplication() : nullptr;
  }

  ScriptedViews m_Views;
  host::DialogViews* m_Otherwise = nullptr;  ///< in place of the scripted ones
  bool m_HasApplication = true;
};

/// A conversion of `job/sign.ps`, 1 by 2 inches, with a queue program that makes a page directory
/// and, if the data root's file `archive` exists, a cut archive. Its copies of the file before the
/// page was made are in `seen`.
class ConvertTest : public QueueTest {
 protected:
  static constexpr const char* Stem =
      "name=$(basename \"$(printf %s \"$3\" | tr '\\\\' /)\" .ps)\n"
      "stem=\"$RASTREL_HOME/Queue/rip/$name\"\n"
      "mkdir -p \"$RASTREL_HOME/seen\"; cp \"$stem.ps\" \"$RASTREL_HOME/seen/given.ps\"\n";
  static constexpr const char* Page =
      "mkdir \"$stem.cfm\"; echo info > \"$stem.cfm/.info\"\n"
      "if [ -f \"$RASTREL_HOME/archive\" ]; then cp \"$RASTREL_HOME/archive\" \"$stem.cut\"; fi\n";
  static constexpr const char* Success = "echo 'INFO: CLQ_success' >&2\n";

  ConvertTest() {
    Root().Write("job/sign.ps", Sign);
    Queue(std::string(Stem) + Page + Success);
    m_Host.m_BaseDirectories[PATH_PROGRAMS] = L"/base";
    m_Host.m_Views.PressAt("run", host::OkCommand);
    m_Mark = m_Library.LogMark();
    m_Before = TreeSnapshot(Root().Path());
  }
  ~ConvertTest() override { ExpectNothingLeft(); }

  /// Puts another queue program there before the conversion.
  void ReplaceQueue(const std::string& body) {
    Queue(body);
    m_Before = TreeSnapshot(Root().Path());
  }

  int Convert(int kind = PS2BMP_POSTSCRIPT, const std::string& name = "job/sign.ps") {
    std::wstring path = Root().Wide(name);
    return ConvertPStoBmp(path.data(), 0, kind, 0, 0, nullptr);
  }

  /// Checks the cut line's box in the dialog; its color is RGB black then.
  void WantCutLine() {
    m_Host.m_Views.m_Actions.insert(
        m_Host.m_Views.m_Actions.begin(),
        {"run", [this](host::DialogLogic& dialog) { m_Host.m_Views.Fill(dialog, 2023, true); }});
  }

  /// A text with the data root as ROOT and temporary names as vkNAME.
  [[nodiscard]] std::string Normal(std::string text) const {
    const std::string root = Root().Path();
    const std::string lowered = os::Utf8FromWide(os::LowerAscii(os::WideFromUtf8(root)));
    for (const std::string& spelled : {root, lowered})
      for (std::size_t at; (at = text.find(spelled)) != std::string::npos;)
        text.replace(at, spelled.size(), "ROOT");
    return WithoutNames(text);
  }
  /// The host's calls but for translations and settings of the progress dialog.
  [[nodiscard]] std::string Calls() {
    std::string text;
    for (const std::string& line : m_Host.m_Calls.All())
      if (!line.starts_with("TString(")) text += Normal(line) + "\n";
    return text;
  }
  [[nodiscard]] std::string LogTexts() { return Normal(m_Library.LogTextsBehind(m_Mark)); }
  /// Whether the log has a line, normalized.
  [[nodiscard]] bool LogHas(const std::string& line) {
    return LogTexts().find("[CLQ] " + line + "\r\n") != std::string::npos;
  }
  /// The files and directories that there are more than at the beginning ("+"), that are gone ("-")
  /// and that changed ("*"), but for the log and the copies of the queue program.
  [[nodiscard]] Lines Changes() const {
    const auto now = TreeSnapshot(Root().Path());
    Lines changes;
    const auto add = [&](const char* mark, const std::string& path) {
      if (path != LibraryRoot::LogName() && !path.starts_with("seen"))
        changes.push_back(mark + Normal(path));
    };
    for (const auto& [path, content] : now) {
      const auto before = m_Before.find(path);
      if (before == m_Before.end())
        add("+", path);
      else if (before->second != content)
        add("*", path);
    }
    for (const auto& [path, content] : m_Before)
      if (!now.contains(path)) add("-", path);
    std::sort(changes.begin(), changes.end());
    return changes;
  }

  /// The same with "vkNAME" for each name of six letters and digits after "vk" or "vktmp".
  static std::string WithoutNames(std::string_view text) {
    constexpr std::string_view NameCharacters = "abcdefghijklmnopqrstuvwxyz012345";
    constexpr std::size_t NameLength = 6;
    std::string result;
    while (!text.empty()) {
      const std::string_view mark = text.starts_with("vktmp") ? "vktmp" : "vk";
      const std::string_view name = text.substr(std::min(mark.size(), text.size()));
      const std::size_t length = std::min(name.find_first_not_of(NameCharacters), name.size());
      const bool isName = text.starts_with(mark) && length == NameLength;
      result += isName ? std::string(mark) + "NAME" : std::string(1, text.front());
      text.remove_prefix(isName ? mark.size() + NameLength : 1);
    }
    return result;
  }

  /// The PostScript file of the job: 1 by 2 inches, which are 2.54 by 5.08 cm.
  static constexpr const char* Sign =
      "%!PS-Adobe-3.0\n%%BoundingBox: 72 72 144 216\n%%EndComments\nshowpage\n%%EOF\n";
  /// The page directory and the PostScript file.
  const Lines PageLeft{"+Queue/rip/vkNAME.cfm", "+Queue/rip/vkNAME.cfm/.info",
                       "+Queue/rip/vkNAME.ps"};
  const Lines PostScriptLeft{"+Queue/rip/vkNAME.ps"};

  ConvertHost m_Host;
  std::map<std::string, std::string> m_Before;
};

// The host's calls of a conversion, in order, each line ended by a line feed.

/// Up to the answered dialog.
inline const std::string AskedCalls =
    "UNOpenStep(\"Converting to Bitmap\")\n"
    "Read(\"Images\", \"EPS dialog data\") -> null\n"
    "GetCurrentUnits() -> 0\n"
    "Read(\"Preferences\", \"PS CMYK Color\") -> null\n";
/// From there to the job header.
inline const std::string BegunCalls =
    "Write(\"Images\", \"EPS dialog data\", \"2,72\")\n"
    "SetUpdateAllowed(false)\n"
    "BeginWaitCursor()\n";
/// The page directory as an object.
inline const std::string LoadedCalls =
    LoadedBitmap("ROOT/queue\\rip\\vkNAME.cfm\\.info", "2.54, 5.08", "#2");
/// The cleared directory, without "Keep PS Files".
inline const std::string ClearedCalls = "Read(\"RASTREL\", \"Keep PS Files\") -> null\n";
/// The end of a conversion that has a bitmap.
inline const std::string EndCalls = "SetUpdateAllowed(true)\nDBSelect(#2)\n";
inline const std::string ClosedCalls = "UNCloseStep()\n";

}  // namespace rastrel::test
