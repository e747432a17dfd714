#pragma once

#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The command line: its commands and options as tables, from which the parser and the help are
/// made, and against which the manual page is checked.
namespace rastrel::cli {

enum class OptionId {
  Printer,
  Mode,
  Copies,
  Pages,
  Spool,
  KeepPs,
  Planar,
  Scale,
  Levels,
  LevelsRed,
  LevelsGreen,
  LevelsBlue,
  LevelsGray,
  CutColor,
  Preview,
  Dpi,
  Resolution,
  PageSize,
  Box,
  PasswordFile,
  ParallelPages,
  HalfCutColor,
  Dsc,
  CutOnly,
  Window,
  OutputSize,
  ChosenPage,
  CutPreview,
  Check,
  Heal,
  Joining,
  TinySize,
  SpikeWidth,
  Unite,
  DxfVersion,
  CutOrigin,
  Tolerance,
  AskWindow,
  AskTerminal,
  SaveTicket,
  Title,
  Output,
  OutputFile,
  PreviewOutput,
  ResultOutput,
  Json,
  Tsv,
  Painted,
  Mark,
  Quality,
  RingSize,
  Node,
  RingStyle,
  StyleSize,
  EngravingFont,
  Rows,
  FingerSize,
  Sheet,
  List,
  Faithful,
  AsShown,
  Format,
  Page,
  PictureDpi,
  SeparationDpi,
  PlanesOutput,
  CutRules,
  SheetSize,
  NestGap,
  NestTurns,
  NestEffort,
  NestSeconds,
  Bleed,
  Manifest,
  PanelSize,
  PanelOverlap,
  Blank,
  Outlines,
  Strict,
  AllowOutside,
  Data,
  OnlyBad,
  ListFields,
  PicturePixels,
  MergeTemplateFile,
  FontReplacement,
  CancelMissingFonts,
  AskInWindow,
  Kerf,
  CornerForm,
  Overcut,
  LeadIn,
  Bridges,
  WeedBox,
  WeedLines,
  NoOrder,
  CutMarks,
  CutPrint,
  CutOutput,
  Measured,
  Measurements,
  Residual,
  FitKind,
  Remove,
  CutDevice,
  CutPicture,
  CutShow,
  ListDevices,
  ShowDevice,
  CheckDevice,
  Force,
  Jobs,
  QueueDevice,
  QueueOwner,
  QueueState,
  QueueText,
  QueueFrom,
  QueueUntil,
  QueueSort,
  QueueAscending,
  QueueLimit,
  QueueOffset,
  QueuePriority,
  QueueHold,
  UserRole,
  NewPasswordFile,
  OpenBrowser,
  BatchOutput,
  PieceSeconds,
  Resume,
  BatchOn,
  BatchPartition,
  BatchAccount,
  BatchTimeLimit,
  BatchLicenses,
  Help,
  Version,
};

struct OptionRow {
  OptionId id;
  const char* name;         ///< with its dashes
  const char* value;        ///< the placeholder of the value in the help; empty for a switch
  const char* description;  ///< one sentence
  const char* choices =
      "";  ///< the values that it may have, separated by blanks; empty: others too
};

enum class CommandId {
  None,  ///< only options were given, or nothing at all
  Print,
  Preview,
  Prefix,
  Reprint,
  TicketShow,
  TicketHold,
  TicketRelease,
  SpoolList,
  SpoolShow,
  SpoolSize,
  SpoolRemove,
  SpoolRepair,
  SpoolOpen,
  Printers,
  Modes,
  Doctor,
  Inspect,
  PageSize,
  Queue,
  Header,
  Convert,
  Cut,
  RulesCheck,
  RulesList,
  RulesShow,
  Nest,
  Tile,
  Notes,
  Cars,
  ChartTrademark,
  ChartSymbol,
  ChartFont,
  ChartCopyright,
  ChartCaps,
  Sheet,
  Import,
  Merge,
  View,
  Separate,
  Send,
  Serve,
  JobsAdd,
  JobsList,
  JobsShow,
  JobsHold,
  JobsRelease,
  JobsCancel,
  JobsMove,
  JobsPriority,
  JobsReprint,
  JobsAccept,
  JobsRemove,
  JobsExport,
  UsersList,
  UsersAdd,
  UsersRole,
  UsersRemove,
  FolderList,
  FolderAdd,
  FolderRemove,
  BatchConvert,
  BatchPreview,
  BatchPageSize,
  BatchPrint,
  BatchMerge,
  Completion,
  Help,
};

struct CommandRow {
  CommandId id;
  const char* name;     ///< one or two words
  const char* operand;  ///< its placeholder in the help; empty if it takes none
  bool operandOptional;
  const char* description;  ///< one sentence
  std::span<const OptionId> options;
};

/// Every option. --help and --version belong to the program, and --help to each command too.
[[nodiscard]] std::span<const OptionRow> Options();
[[nodiscard]] const OptionRow& OptionOf(OptionId id);
/// Every command.
[[nodiscard]] std::span<const CommandRow> Commands();

/// The command line, parsed.
struct Invocation {
  CommandId command = CommandId::None;
  std::string group;    ///< first word of a command without its second word; else empty
  std::string operand;  ///< empty if none was given
  bool hasOperand = false;
  std::vector<std::string> operands;  ///< of a command that takes several; `operand` is the first
  std::map<OptionId, std::string> options;  ///< those that were given, with their values
  std::vector<std::string> fonts;           ///< the values of FontReplacement, in their order
  std::vector<std::string> measured;        ///< the values of Measured, in their order

  [[nodiscard]] bool Has(OptionId id) const { return options.contains(id); }
  /// The option's value, or `fallback` if it was not given.
  [[nodiscard]] std::string ValueOr(OptionId id, std::string_view fallback) const;
};

/// Reads the arguments of main. Throws CommandError(WrongUse) on anything that the tables don't
/// have and on a missing operand.
[[nodiscard]] Invocation ParseArguments(int count, const char* const* arguments);

}  // namespace rastrel::cli
