#pragma once

#include <algorithm>
#include <cstring>
#include <map>
#include <string>

#include "rastrel/conversion/cut/generate_cut_data.h"
#include "tests/conversion/cut/recorded_objects.h"
#include "tests/conversion/queue_fixture.h"
#include "tests/support/checked_host.h"
#include "tests/support/cut_archive_bytes.h"
#include "tests/support/scripted_views.h"
#include "tests/support/tree_snapshot.h"

namespace rastrel::test {

/// A recording host whose dialogs act by a script.
class CutHost : public CheckedHost {
 public:
  CutHost() { m_Translations[L"(*v*)Cutting"] = L"Schneiden"; }
  host::DialogViews& GetDialogViews() override { return m_Views; }

  ScriptedViews m_Views;
};

/// Cut lines made of placed objects, with a queue program that is a shell script. It keeps a copy
/// of its file as `seen` and of its header's side file as `seen.jhdr`, and leaves the products that
/// a test wants.
class GenerateTest : public QueueTest {
 protected:
  GenerateTest() {
    m_Named.colorKind = CutColorNamed;
    m_Named.enabled = 1;
    m_Named.color = CVKFullColor(255, COLORSPACE_RGB, 0, 0);
    m_Named.color.SetColorName(L"Cut");
    m_Half = m_Named;
    m_Half.color.SetColorName(L"Half");
    m_Eps.m_Cut = m_Ps.m_Cut = m_Pdf.m_Cut = m_Named;
    Root().Write("job/sign.pdf", "%PDF-1.4\n");
    Products(true, true);
    // Both are made at first use, with reads of settings.
    m_Mark = m_Library.LogMark();
    m_Host.m_Calls.Clear();
  }

  static constexpr const char* MakeDirectory =
      "mkdir \"$stem.cfm\"; echo x > \"$stem.cfm/.info\"\n";
  static constexpr const char* Success = "echo 'INFO: CLQ_success' >&2\n";
  static constexpr const char* Begin =
      "name=${3##*\\\\}\n"
      "file=$(ls \"$RASTREL_HOME\"/Queue/rip/\"$name\")\n"
      "stem=${file%.*}\n"
      "printf '%s' \"$3\" > \"$RASTREL_HOME/path\"\n"
      "cp \"$file\" \"$RASTREL_HOME/seen\"\n"
      "if [ -e \"$stem.jhdr\" ]; then cp \"$stem.jhdr\" \"$RASTREL_HOME/seen.jhdr\"; fi\n";

  /// The queue program leaves a page directory, and an archive and a bitmap if wanted.
  void Products(bool archive, bool bitmap) {
    std::string body = std::string(Begin) + MakeDirectory;
    if (archive) body += "cp \"$RASTREL_HOME/archive\" \"$stem.cut\"\n";
    if (bitmap) body += "printf BM > \"${stem}_Color.bmp\"\n";
    Queue(body + Success);
  }
  /// The archive that it leaves.
  void Archive(const std::string& bytes) { Root().Write("archive", bytes); }
  void OneLine(const std::string& color = "Cut") {
    Archive(cut::ArchiveBytes({cut::ObjectBytes(color, {cut::LineBytes(1, -1)})}));
  }

  [[nodiscard]] std::wstring Source(const char* name = "job/sign.ps") { return Root().Wide(name); }
  unsigned long long Eps(int withPreview = 0, int resolution = 300) {
    return Watched(
        [&] { return GenerateEPSCutData(&m_Eps, resolution, withPreview, Source().c_str()); });
  }
  unsigned long long Ps(int withPreview = 0, int resolution = 300) {
    return Watched(
        [&] { return GeneratePSCutData(&m_Ps, resolution, withPreview, Source().c_str()); });
  }
  unsigned long long Pdf(int withPreview = 0, int resolution = 300,
                         const char* name = "job/sign.pdf") {
    return Watched(
        [&] { return GeneratePDFCutData(&m_Pdf, resolution, withPreview, Source(name).c_str()); });
  }

  /// The calls, without settings read and texts translated.
  [[nodiscard]] std::string Calls() {
    std::string text;
    for (const std::string& line : m_Host.m_Calls.All())
      if (!line.starts_with("Read(") && !line.starts_with("TString(")) text += line + '\n';
    return text;
  }
  /// The files in the RIP directory but the log, with the six characters of a temporary name left
  /// out: "vk.ps". Names in a directory follow it.
  [[nodiscard]] std::string Left() const {
    std::string names;
    for (const auto& [path, content] : TreeSnapshot(Root().Path("Queue/rip"))) {
      if (!path.starts_with("vk")) continue;
      names += (names.empty() ? "" : " ");
      names += path.starts_with("vktmp") ? "vktmp" : "vk" + path.substr(8);
    }
    return names;
  }
  /// The texts logged in the last run, without those of the queue program's supervisor.
  [[nodiscard]] std::string LogTexts() const {
    const std::string supervisors = "[CLQ]: Q exited";
    const std::string texts = m_Library.LogTextsBehind(m_Mark);
    const std::size_t end = texts.find(supervisors);
    return end == std::string::npos ? texts : texts.substr(end + supervisors.size());
  }
  /// The name of the file that the queue program was given, with its temporary part left out.
  [[nodiscard]] std::string GivenName() const {
    const std::string path = Root().Read("path");
    return "vk" + path.substr(std::min(path.size(), path.rfind("\\vk") + 9));
  }
  void KeepFiles() { m_Host.m_Settings[{L"RASTREL", L"Keep PS Files"}] = L"1"; }
  /// No file can be put in front of another from now on.
  static void RefuseHeaders() {
    static os::SystemCalls machine;
    machine = os::Calls();
    os::Calls().open = [](const char* path, int flags, mode_t mode) {
      if (std::strstr(path, "vktmp") != nullptr) return errno = EACCES, -1;
      return machine.open(path, flags, mode);
    };
  }

  CPS2CutData m_Named;
  CPS2CutData m_Half;
  CutHost m_Host;
  RecordedEps m_Eps{m_Host.m_Calls};
  RecordedPs m_Ps{m_Host.m_Calls};
  RecordedPdf m_Pdf{m_Host.m_Calls};

 private:
  /// Runs it, and sees that the user's own files stay as they are.
  template <class Run>
  unsigned long long Watched(Run run) {
    const auto before = TreeSnapshot(Root().Path("job"));
    m_Mark = m_Library.LogMark();
    const unsigned long long result = run();
    EXPECT_EQ(TreeSnapshot(Root().Path("job")), before);
    return result;
  }
};

}  // namespace rastrel::test
