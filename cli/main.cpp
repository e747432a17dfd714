// The command `rastrel`: reads its arguments and hands them to the command that they name.

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/batch/array_task.h"
#include "cli/batch/batch_command.h"
#include "cli/batch/batch_piece.h"
#include "cli/console/completion.h"
#include "cli/console/error_message.h"
#include "cli/console/exit_status.h"
#include "cli/console/help.h"
#include "cli/console/merge_parts.h"
#include "cli/console/options.h"
#include "cli/console/run_program.h"
#include "cli/console/standard_streams.h"
#include "cli/converting/header_command.h"
#include "cli/converting/page_size_command.h"
#include "cli/converting/queue_command.h"
#include "cli/cutting_program.h"
#include "cli/doctor.h"
#include "cli/document_program.h"
#include "cli/input/standard_input.h"
#include "cli/installation/installation.h"
#include "cli/installation/installed_lists.h"
#include "cli/installation/job_directory.h"
#include "cli/printing/prefix_command.h"
#include "cli/printing/preview_command.h"
#include "cli/printing/print_command.h"
#include "cli/printing/reprint_command.h"
#include "cli/printing/spool_command.h"
#include "cli/printing/spool_repair.h"
#include "cli/printing/ticket_command.h"
#include "cli/reading/cars_command.h"
#include "cli/reading/chart_command.h"
#include "cli/reading/inspect_command.h"
#include "cli/reading/notes_command.h"
#include "cli/server_program.h"
#include "cli/sheet/sheet_command.h"

namespace {

using namespace rastrel::cli;

ExitStatus HelpCommand(const std::string& name) {
  const std::string text = name.empty() ? SummaryText() : HelpText(name);
  if (text.empty())
    throw CommandError(ExitStatus::WrongUse,
                       "there is no command '" + name + "'; see `rastrel help`");
  WriteOutLines(text);
  return ExitStatus::Done;
}

ExitStatus CompletionCommand(const std::string& shell) {
  WriteOutLines(OrEnd(ExitStatus::WrongUse, CompletionScript(shell)));
  return ExitStatus::Done;
}

// Options alone, or nothing, or the first word of a command.
ExitStatus RunWithoutCommand(const Invocation& invocation) {
  if (invocation.Has(OptionId::Help)) return HelpCommand(invocation.group);
  if (invocation.Has(OptionId::Version)) {
    WriteOutLine("rastrel " RASTREL_VERSION);
    return ExitStatus::Done;
  }
  WriteErrorLines(invocation.group.empty() ? SummaryText() : HelpText(invocation.group));
  return ExitStatus::WrongUse;
}

const CommandRow& RowOf(CommandId id) {
  return *std::ranges::find(Commands(), id, &CommandRow::id);
}

std::string NameOf(CommandId id) { return RowOf(id).name; }

bool TakesFiles(CommandId id) { return std::string_view(RowOf(id).operand).starts_with("FILE"); }

bool IsStandardInput(const std::string& operand) { return operand == StandardInputOperand; }

// Puts a copy of standard input, which the directory holds, in the place of its operand.
void ReadStandardInput(Invocation& invocation, std::optional<JobDirectory>& directory) {
  const auto count = invocation.operands.empty()
                         ? static_cast<std::ptrdiff_t>(IsStandardInput(invocation.operand))
                         : std::ranges::count_if(invocation.operands, IsStandardInput);
  // A queued job may have any title.
  if (!TakesFiles(invocation.command) || invocation.command == CommandId::JobsAdd ||
      invocation.command == CommandId::BatchConvert ||
      invocation.command == CommandId::BatchPreview ||
      invocation.command == CommandId::BatchPageSize || invocation.command == CommandId::BatchPrint)
    return;
  if (count == 0 && invocation.Has(OptionId::Title))
    throw CommandError(ExitStatus::WrongUse,
                       "--title names a job from standard input: give - in place of the file");
  // A program of its own takes these in.
  if (invocation.command == CommandId::Convert || invocation.command == CommandId::Cut ||
      invocation.command == CommandId::Import || invocation.command == CommandId::Separate ||
      invocation.command == CommandId::Send || invocation.command == CommandId::View)
    return;
  if (count == 0) return;
  if (count > 1) throw CommandError(ExitStatus::WrongUse, "standard input can be read only once");
  // Each file is a run of its own, and takes it in itself.
  if (invocation.command == CommandId::Preview && invocation.operands.size() > 1) return;
  OrEnd(ExitStatus::NotInstalled, LayOutQuietly());
  directory.emplace(OrEnd(ExitStatus::NotInstalled, JobDirectory::Create(false)));
  const std::string path =
      OrEnd(ExitStatus::BadInput,
            TakeStandardInput(directory->Path(), invocation.ValueOr(OptionId::Title, "")));
  std::ranges::replace_if(invocation.operands, IsStandardInput, path);
  if (IsStandardInput(invocation.operand)) invocation.operand = path;
}

ExitStatus RunCommand(const Invocation& invocation, const std::vector<std::string>& arguments) {
  switch (invocation.command) {
    case CommandId::Print:
      if (PrintsByRules(invocation)) return RunCuttingProgram(arguments);
      return PrintCommand(invocation);
    case CommandId::Preview: return PreviewCommand(invocation);
    case CommandId::Prefix: return PrefixCommand(invocation);
    case CommandId::Reprint: return ReprintCommand(invocation);
    case CommandId::TicketShow: return ShowTicketCommand(invocation);
    case CommandId::TicketHold: return HoldTicketCommand(invocation, true);
    case CommandId::TicketRelease: return HoldTicketCommand(invocation, false);
    case CommandId::SpoolList: return ListSpoolCommand(invocation);
    case CommandId::SpoolShow: return ShowSpoolCommand(invocation);
    case CommandId::SpoolSize: return SpoolSizeCommand(invocation);
    case CommandId::SpoolRemove: return RemoveSpoolCommand(invocation);
    case CommandId::SpoolRepair: return RepairSpoolCommand(invocation);
    case CommandId::SpoolOpen: return OpenSpoolCommand(invocation);
    case CommandId::Printers: return ListPrintersCommand(invocation);
    case CommandId::Modes: return ListModesCommand(invocation);
    case CommandId::Doctor: return DoctorCommand(invocation);
    case CommandId::Inspect: return InspectCommand(invocation);
    case CommandId::Notes: return NotesCommand(invocation);
    case CommandId::Cars: return CarsCommand(invocation);
    case CommandId::ChartTrademark: return TrademarkChartCommand(invocation);
    case CommandId::ChartSymbol: return SymbolChartCommand(invocation);
    case CommandId::ChartFont: return FontTableCommand(invocation);
    case CommandId::ChartCopyright: return CopyrightChartCommand(invocation);
    case CommandId::ChartCaps: return CapRulesCommand(invocation);
    case CommandId::Sheet: return SheetCommand(invocation);
    case CommandId::PageSize: return PageSizeCommand(invocation);
    case CommandId::Queue: return QueueCommand(invocation);
    case CommandId::Header: return HeaderCommand(invocation);
    case CommandId::Cut:
      if (WantsCuttingProgram(invocation)) return RunCuttingProgram(arguments);
      return RunDocumentProgram(arguments);
    case CommandId::Send: return RunCuttingProgram(arguments);
    case CommandId::Nest:
    case CommandId::Tile:
    case CommandId::RulesCheck:
    case CommandId::RulesList:
    case CommandId::RulesShow: return RunCuttingProgram(arguments);
    case CommandId::Convert:
    case CommandId::Import:
    case CommandId::Merge:
    case CommandId::Separate:
    case CommandId::View: return RunDocumentProgram(arguments);
    case CommandId::Serve:
    case CommandId::JobsAdd:
    case CommandId::JobsList:
    case CommandId::JobsShow:
    case CommandId::JobsHold:
    case CommandId::JobsRelease:
    case CommandId::JobsCancel:
    case CommandId::JobsMove:
    case CommandId::JobsPriority:
    case CommandId::JobsReprint:
    case CommandId::JobsAccept:
    case CommandId::JobsRemove:
    case CommandId::JobsExport:
    case CommandId::UsersList:
    case CommandId::UsersAdd:
    case CommandId::UsersRole:
    case CommandId::UsersRemove:
    case CommandId::FolderList:
    case CommandId::FolderAdd:
    case CommandId::FolderRemove: return RunServerProgram(arguments);
    case CommandId::BatchConvert:
    case CommandId::BatchPreview:
    case CommandId::BatchPageSize:
    case CommandId::BatchPrint:
    case CommandId::BatchMerge: return BatchCommand(invocation);
    case CommandId::Completion: return CompletionCommand(invocation.operand);
    case CommandId::Help: return HelpCommand(invocation.operand);
    case CommandId::None: break;
  }
  return ExitStatus::WrongUse;
}

ExitStatus Run(Invocation invocation, const std::vector<std::string>& arguments) {
  if (invocation.command == CommandId::None) return RunWithoutCommand(invocation);
  if (invocation.Has(OptionId::Help)) return HelpCommand(NameOf(invocation.command));
  std::optional<JobDirectory> standardInput;
  ReadStandardInput(invocation, standardInput);
  return RunCommand(invocation, arguments);
}

bool IsMergePart(std::string_view word) {
  return word == MergeCountWord || word == MergePageWord || word == MergeReportWord;
}

// Returns only if the program that opens documents can't be started.
int StartMergePart(const std::vector<std::string>& arguments) {
  try {
    return static_cast<int>(RunDocumentProgram(arguments));
  } catch (const CommandError& error) {
    WriteErrorMessage(error, false);
    return static_cast<int>(error.Status());
  }
}

}  // namespace

int main(int count, char** arguments) {
  if (count > 1 && std::string_view(arguments[1]) == BatchPieceWord)
    return RunBatchPiece(count, arguments);
  if (count > 1 && std::string_view(arguments[1]) == ArrayTaskWord)
    return RunArrayTask(count, arguments);
  const std::vector<std::string> copy(arguments, arguments + count);
  if (count > 1 && IsMergePart(arguments[1])) return StartMergePart(copy);
  return RunProgram(count, arguments,
                    [&](const Invocation& invocation) { return Run(invocation, copy); });
}
