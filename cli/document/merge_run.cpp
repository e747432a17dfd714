#include "cli/document/merge_run.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "cli/console/exit_status.h"
#include "cli/document/open_template.h"
#include "host/document/document.h"
#include "host/document/notices.h"
#include "host/graphics/native_graphics.h"
#include "rastrel/platform/host/host.h"
#include "rastrel/platform/os/file.h"
#include "rastrel/platform/os/path.h"
#include "rastrel/platform/os/text.h"

namespace rastrel::cli {
namespace {

class MergeRun {
 public:
  MergeRun(const MergeTask& task, std::vector<RowReport>& reports)
      : m_Task(task), m_Reports(reports), m_Source(SourceOf(task.invocation.operand)) {
    m_Source.isPrivate = true;
    m_Source.allowOutside = task.invocation.Has(OptionId::AllowOutside);
    m_Source.strict = task.invocation.Has(OptionId::Strict);
    const std::filesystem::path name(task.invocation.operand);
    std::string extension = name.extension();
    if (!HasReaderExtension(task.format, task.invocation.operand))
      extension = "." + std::string(ReaderExtensions(task.format));
    m_Source.file = OrEnd(ExitStatus::JobFailed, task.workspace.MakeFolder(task.folder)) + "/" +
                    name.stem().string() + extension;
  }

  OpenedFile Run() { return m_Task.merge.IsDocumentARow() ? RowAfterRow() : AllRows(); }

 private:
  // Imports the template with the values of rows into a document of its own.
  OpenedFile Import(const std::vector<MergeRow>& rows, std::vector<RowReport*> reports) {
    OpenedFile file = NewDocument(m_Task.format, m_Task.invocation);
    const MergeTemplate::Merged merged = m_Task.merge.Write(rows);
    OrEnd(ExitStatus::JobFailed,
          os::ReplaceFile(os::FromNative(m_Source.file), merged.text, os::Access::Private));
    if (auto done = ImportTemplate(m_Source, file); !done) {
      if (rows.size() > 1) FindRefusedRow(rows);
      OrEndByCode(ExitStatus::NotInstalled, InTable(done.Error(), rows));
    }
    HandOut(file.findings, merged, reports);
    return file;
  }

  // Ends the command if one of the rows is refused by itself.
  void FindRefusedRow(const std::vector<MergeRow>& rows) {
    for (const MergeRow& row : rows) {
      RowReport scratch;
      Import({row}, {&scratch});
    }
  }

  // The merged file's lines are none of the user's, but its rows are.
  [[nodiscard]] Expected<void> InTable(Failure failure, const std::vector<MergeRow>& rows) const {
    failure.line = 0;
    failure.column = 0;
    if (rows.size() > 1 || failure.code != FailureCode::BadInput) return failure;
    return FailureOf(m_Task.tablePath + ": row " + std::to_string(rows.front().number) + ": " +
                         Describe(failure),
                     failure.code);
  }

  // Findings at the lines of rows become notes of these; others lose their line, which is none of
  // the template's.
  static void HandOut(Findings& findings, const MergeTemplate::Merged& merged,
                      const std::vector<RowReport*>& reports) {
    Findings others;
    for (Finding& finding : findings) {
      const int at = finding.line - merged.firstLine;
      if (finding.line > 0 && at >= 0 && at < static_cast<int>(reports.size())) {
        auto& notes = reports[static_cast<std::size_t>(at)]->notes;
        if (std::ranges::find(notes, finding.text) == notes.end())
          notes.push_back(std::move(finding.text));
      } else {
        others.push_back({0, std::move(finding.text)});
      }
    }
    findings = std::move(others);
  }

  OpenedFile AllRows() {
    std::vector<RowReport*> reports;
    for (RowReport& report : m_Reports) reports.push_back(&report);
    m_Task.progress.Enter("importing");
    OpenedFile file = Import(m_Task.rows, reports);
    const std::size_t plates = m_Task.merge.PlatesARow();
    if (!PlaceRows(file.host->GetDocument(), plates, reports)) {
      reports = FindPlacedRows();
      static_cast<void>(PlaceRows(file.host->GetDocument(), plates, reports));
      host::SetHost(file.host.get());
    }
    m_Task.progress.Enter("checking");
    CheckTexts(*file.host, plates, reports, m_Task.progress);
    return file;
  }

  // Some plates were refused: the rows that are placed when they are alone are placed among the
  // others, too, since a plate is refused for its size.
  std::vector<RowReport*> FindPlacedRows() {
    std::vector<RowReport*> placed;
    m_Task.progress.Enter("looking for the rows that are not placed");
    for (std::size_t i = 0; i < m_Task.rows.size(); ++i) {
      RowReport scratch;
      const OpenedFile file = Import({m_Task.rows[i]}, {&scratch});
      std::vector<RowReport*> one{&scratch};
      if (PlaceRows(file.host->GetDocument(), m_Task.merge.PlatesARow(), one))
        placed.push_back(&m_Reports[i]);
      else
        TakeReasons(*file.host, m_Reports[i]);
      m_Task.progress.Reach(i, m_Task.rows.size());
    }
    return placed;
  }

  static void TakeReasons(document::DocumentHost& host, RowReport& report) {
    for (const std::wstring& loss : host.GetNotices().Losses())
      report.notes.push_back(os::Utf8FromWide(loss));
  }

  OpenedFile RowAfterRow() {
    OpenedFile all = NewDocument(m_Task.format, m_Task.invocation);
    m_Task.progress.Enter("importing");
    for (std::size_t i = 0; i < m_Task.rows.size(); ++i) {
      RowReport& report = m_Reports[i];
      OpenedFile one = Import({m_Task.rows[i]}, {&report});
      CheckTextsOfRow(*one.host, report);
      Append(one, i == 0, *all.host, report);
      for (Finding& finding : one.findings) {
        if (i == 0) all.findings.push_back(std::move(finding));
      }
      m_Task.progress.Reach(i, m_Task.rows.size());
    }
    host::SetHost(all.host.get());
    return all;
  }

  // Puts a row's document, which has one page, on the next page of the whole.
  void Append(OpenedFile& one, bool first, document::DocumentHost& whole, RowReport& report) {
    const document::Document& source = one.host->GetDocument();
    document::Document& target = whole.GetDocument();
    for (const std::wstring& text : one.host->GetNotices().Texts()) whole.GetNotices().Add(text);
    for (const std::wstring& text : one.host->GetNotices().Losses()) {
      whole.GetNotices().AddLoss(text);
      report.notes.push_back(os::Utf8FromWide(text));
    }
    if (first) target.SetBlank(source.Blank());
    if (source.Blank() != target.Blank()) {
      report.notes.emplace_back("its blank is not that of the first row");
      whole.GetNotices().AddLoss(L"row " + std::to_wstring(report.row) +
                                 L": its blank is not that of the first row");
      return;
    }
    ++m_Pages;
    static_cast<void>(graphics::CopyObjects(source, target, m_Pages));
    report.pages.push_back(m_Pages);
    report.placed = true;
  }

  const MergeTask& m_Task;
  std::vector<RowReport>& m_Reports;
  TemplateSource m_Source;
  int m_Pages = 0;  // of the rows before
};

}  // namespace

OpenedFile RunMerge(const MergeTask& task, std::vector<RowReport>& reports) {
  return MergeRun(task, reports).Run();
}

}  // namespace rastrel::cli
