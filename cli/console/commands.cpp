// The table of commands, each with its options.

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "cli/console/options.h"

namespace rastrel::cli {
namespace {

using enum OptionId;

constexpr std::array PrintOptions{
    Printer,    Mode,     Copies,       Pages,           Spool,      KeepPs,     Planar,
    Scale,      Levels,   LevelsRed,    LevelsGreen,     LevelsBlue, LevelsGray, CutColor,
    SaveTicket, Box,      PasswordFile, ParallelPages,   Title,      Output,     Json,
    CutRules,   CutMarks, CutOutput,    OptionId::Bleed, ChosenPage, Help};
constexpr std::array PrefixOptions{
    Printer,  Mode,    Scale, Levels, LevelsRed, LevelsGreen, LevelsBlue, LevelsGray,
    CutColor, Preview, Dpi,   Planar, CutOnly,   Title,       OutputFile, Help};
constexpr std::array PreviewOptions{Dpi,       Planar,      CutOnly,      Scale,      Levels,
                                    LevelsRed, LevelsGreen, LevelsBlue,   LevelsGray, CutColor,
                                    KeepPs,    Box,         PasswordFile, Title,      PreviewOutput,
                                    Force,     Jobs,        Json,         Help};
constexpr std::array ReprintOptions{Pages, Copies, Printer, Output, Json, Help};
constexpr std::array ListingOptions{Json, Help};
constexpr std::array RepairOptions{Remove, Json, Help};
constexpr std::array InspectOptions{Json, Tsv, Painted, Jobs, Help};
constexpr std::array TrademarkOptions{Mark, Quality, Json, Help};
constexpr std::array SymbolOptions{RingSize, Json, Help};
constexpr std::array FontOptions{Node, Json, Help};
constexpr std::array CopyrightOptions{RingStyle,  StyleSize, EngravingFont, Rows,
                                      FingerSize, Json,      Help};
constexpr std::array SheetOptions{OutputFile, OptionId::Sheet, List, Faithful, AsShown, Json, Help};
constexpr std::array PageSizeOptions{Dsc, Box, PasswordFile, Jobs, Json, Help};
constexpr std::array QueueOptions{OptionId::PageSize,
                                  Resolution,
                                  CutColor,
                                  HalfCutColor,
                                  OptionId::Window,
                                  KeepPs,
                                  Box,
                                  PasswordFile,
                                  Title,
                                  Output,
                                  Force,
                                  Json,
                                  Help};
constexpr std::array ConvertOptions{ResultOutput, OutputSize,  Resolution, CutColor,     ChosenPage,
                                    AskWindow,    AskTerminal, Box,        PasswordFile, Title,
                                    Force,        Jobs,        Json,       Help};
constexpr std::array CutOptions{ResultOutput, CutColor, HalfCutColor, CutPreview, Resolution,
                                ChosenPage, Box, PasswordFile, Title, Force, Jobs,
                                // Those of rastrel-cutting, in the order of its stages.
                                CutRules, OptionId::Bleed, OptionId::Check, Heal, Joining, TinySize,
                                SpikeWidth, Unite, Kerf, CornerForm, Overcut, LeadIn,
                                OptionId::Bridges, WeedBox, WeedLines, NoOrder, CutMarks, CutPrint,
                                Mode, Measured, Measurements, Residual, FitKind, DxfVersion,
                                CutOrigin, Tolerance, CutPicture, CutShow, CutDevice, Json, Help};
constexpr std::array SendOptions{CutDevice, ListDevices, ShowDevice, CheckDevice, Json, Help};
constexpr std::array ShowOptions{Help};
constexpr std::array NestOptions{
    ResultOutput, Manifest,    SheetSize,  NestGap,    Copies,  OptionId::NestTurns,
    NestEffort,   NestSeconds, CutRules,   ChosenPage, Box,     PasswordFile,
    CutPrint,     Mode,        Resolution, CutMarks,   NoOrder, Json,
    Help};
constexpr std::array TileOptions{
    ResultOutput, Manifest, CutPicture, PanelSize,  PanelOverlap, CutRules, ChosenPage, Box,
    PasswordFile, CutPrint, Mode,       Resolution, CutMarks,     NoOrder,  Json,       Help};
constexpr std::array RulesOptions{ChosenPage, Box, PasswordFile, Json, Help};
constexpr std::array HeaderOptions{OptionId::PageSize, Resolution, CutColor,
                                   HalfCutColor,       OutputFile, Help};
constexpr std::array ImportOptions{Format,
                                   OutputFile,
                                   Page,
                                   PictureDpi,
                                   Blank,
                                   Outlines,
                                   Strict,
                                   AllowOutside,
                                   FontReplacement,
                                   CancelMissingFonts,
                                   AskInWindow,
                                   Force,
                                   Json,
                                   Help};
constexpr std::array MergeOptions{Data,
                                  OptionId::Sheet,
                                  Format,
                                  OutputFile,
                                  Page,
                                  PictureDpi,
                                  Blank,
                                  Outlines,
                                  Strict,
                                  OnlyBad,
                                  ListFields,
                                  PicturePixels,
                                  AllowOutside,
                                  FontReplacement,
                                  CancelMissingFonts,
                                  AskInWindow,
                                  Force,
                                  Json,
                                  Help};
constexpr std::array ViewOptions{
    Format,          OutputFile,         Page,        PictureDpi, Blank, Outlines, AllowOutside,
    FontReplacement, CancelMissingFonts, AskInWindow, Force,      Json,  Help};
constexpr std::array SeparateOptions{PlanesOutput, SeparationDpi, Box,  PasswordFile,
                                     Title,        Force,         Json, Help};
constexpr std::array HelpOptions{Help};
constexpr std::array JobsAddOptions{QueueDevice,
                                    Mode,
                                    Copies,
                                    Pages,
                                    Planar,
                                    Scale,
                                    Levels,
                                    LevelsRed,
                                    LevelsGreen,
                                    LevelsBlue,
                                    LevelsGray,
                                    CutColor,
                                    Box,
                                    Title,
                                    QueuePriority,
                                    QueueHold,
                                    MergeTemplateFile,
                                    Data,
                                    OptionId::Sheet,
                                    Blank,
                                    Json,
                                    Help};
constexpr std::array JobsListOptions{QueueState, QueueOwner,  QueueDevice, QueueText,
                                     QueueFrom,  QueueUntil,  QueueSort,   QueueAscending,
                                     QueueLimit, QueueOffset, Json,        Help};
constexpr std::array JobsExportOptions{
    QueueState,     QueueOwner, QueueDevice, QueueText,  QueueFrom, QueueUntil, QueueSort,
    QueueAscending, QueueLimit, QueueOffset, OutputFile, Force,     Help};
constexpr std::array JobsMoveOptions{QueueDevice, Json, Help};
constexpr std::array JobsPriorityOptions{QueuePriority, Json, Help};
constexpr std::array JobsReprintOptions{Pages, Json, Help};
constexpr std::array ServeOptions{OpenBrowser, Help};
constexpr std::array UsersAddOptions{UserRole, NewPasswordFile, Help};
constexpr std::array UsersRoleOptions{UserRole, Help};
// The options of every batch, after its own.
constexpr std::array OptionsOfBatches{Jobs,           PieceSeconds, Resume,         BatchOn,
                                      BatchPartition, BatchAccount, BatchTimeLimit, BatchLicenses,
                                      Json,           Help};

template <std::size_t Count>
constexpr auto WithBatchOptions(const std::array<OptionId, Count>& own) {
  std::array<OptionId, Count + OptionsOfBatches.size()> all{};
  std::copy(OptionsOfBatches.begin(), OptionsOfBatches.end(),
            std::copy(own.begin(), own.end(), all.begin()));
  return all;
}

constexpr auto BatchConvertOptions = WithBatchOptions(std::array{
    BatchOutput, OutputSize, Resolution, CutColor, ChosenPage, Box, PasswordFile, Force});
constexpr auto BatchPreviewOptions =
    WithBatchOptions(std::array{BatchOutput, Dpi, CutOnly, Scale, Levels, LevelsRed, LevelsGreen,
                                LevelsBlue, LevelsGray, CutColor, Box, PasswordFile, Force});
constexpr auto BatchPageSizeOptions =
    WithBatchOptions(std::array{BatchOutput, Dsc, Box, PasswordFile});
constexpr auto BatchPrintOptions = WithBatchOptions(
    std::array{Printer, Mode, Copies, Pages, Planar, Scale, Levels, LevelsRed, LevelsGreen,
               LevelsBlue, LevelsGray, CutColor, Box, PasswordFile, BatchOutput, Force});
constexpr auto BatchMergeOptions = WithBatchOptions(
    std::array{Data, OptionId::Sheet, Format, OutputFile, PictureDpi, Blank, Outlines, Strict,
               OnlyBad, AllowOutside, FontReplacement, CancelMissingFonts, Force});

constexpr std::array CommandRows{
    CommandRow{CommandId::Print, "print", "FILE...", false, "Print PostScript, EPS or PDF files.",
               PrintOptions},
    CommandRow{CommandId::Preview, "preview", "FILE...", false,
               "Make a picture of each file at a resolution of its own, or of its colour planes.",
               PreviewOptions},
    CommandRow{CommandId::Prefix, "prefix", "FILE", false,
               "Show the PostScript that goes to the RIP ahead of a file.", PrefixOptions},
    CommandRow{CommandId::Reprint, "reprint", "TICKET|NAME", false,
               "Deliver pages that `print --spool` kept, with no RIP.", ReprintOptions},
    CommandRow{CommandId::TicketShow, "ticket show", "TICKET", false, "Show a saved job ticket.",
               ListingOptions},
    CommandRow{CommandId::TicketHold, "ticket hold", "TICKET", false,
               "Hold a saved job: it does not print until it is released.", ListingOptions},
    CommandRow{CommandId::TicketRelease, "ticket release", "TICKET", false, "Release a held job.",
               ListingOptions},
    CommandRow{CommandId::SpoolList, "spool list", "", false, "List the jobs whose pages are kept.",
               ListingOptions},
    CommandRow{CommandId::SpoolShow, "spool show", "NAME", false, "Show the pages of a kept job.",
               ListingOptions},
    CommandRow{CommandId::SpoolSize, "spool size", "NAME", true,
               "Tell the size of a kept job, or of all of them.", ListingOptions},
    CommandRow{CommandId::SpoolRemove, "spool remove", "NAME", false,
               "Remove a kept job. Nothing is asked.", ListingOptions},
    CommandRow{CommandId::SpoolRepair, "spool repair", "NAME", true,
               "Finish an incomplete job of the spool, or all of them.", RepairOptions},
    CommandRow{CommandId::SpoolOpen, "spool open", "NAME", true,
               "Print the directory of a kept job, and show it in the desktop's file manager.",
               ListingOptions},
    CommandRow{CommandId::Printers, "printers", "", false, "List the printers.", ListingOptions},
    CommandRow{CommandId::Modes, "modes", "", false, "List the print modes.", ListingOptions},
    CommandRow{CommandId::Doctor, "doctor", "", false,
               "Say what is installed, found, writable and missing, and how to mend it.",
               ListingOptions},
    CommandRow{CommandId::Inspect, "inspect", "FILE...", false,
               "Tell kind, bounds and spot colours of PostScript and EPS files.", InspectOptions},
    CommandRow{CommandId::Notes, "notes", "FILE", false,
               "Show the companies and jobs of a job notes file.", ListingOptions},
    CommandRow{CommandId::Cars, "cars", "FILE", false,
               "Show the folders and files of a car data library as a tree.", ListingOptions},
    CommandRow{CommandId::ChartTrademark, "chart trademark", "FILE", false,
               "Tell which trademark file a chart has for a mark and a quality.", TrademarkOptions},
    CommandRow{CommandId::ChartSymbol, "chart symbol", "FILE", false,
               "Tell the heights of symbol, trademark and signature for a ring size.",
               SymbolOptions},
    CommandRow{CommandId::ChartFont, "chart font", "FILE", false,
               "Tell the font that a table has for a node.", FontOptions},
    CommandRow{CommandId::ChartCopyright, "chart copyright", "FILE", false,
               "Tell the font size of a copyright engraving.", CopyrightOptions},
    CommandRow{CommandId::ChartCaps, "chart caps", "FILE", false,
               "List the words that keep special capitals.", ListingOptions},
    CommandRow{
        CommandId::Sheet, "sheet", "FILE|FOLDER", false,
        "Make a tab-separated text of a spreadsheet (.xlsx, .ods, .fods, or an unpacked one).",
        SheetOptions},
    CommandRow{CommandId::PageSize, "pagesize", "FILE...", false,
               "Measure the first page of PostScript, EPS and PDF files.", PageSizeOptions},
    CommandRow{CommandId::Queue, "queue", "FILE", false,
               "Convert a file to planes, a picture and cut paths by the queue program.",
               QueueOptions},
    CommandRow{CommandId::Header, "header", "FILE", false,
               "Show a file's job header, or write one in front of a copy of it.", HeaderOptions},
    CommandRow{CommandId::Convert, "convert", "FILE...", false,
               "Make a bitmap of each PostScript, EPS or PDF file, and cut lines of one colour.",
               ConvertOptions},
    CommandRow{CommandId::Cut, "cut", "FILE...", false,
               "Take the paths of a cut colour out of each file, as lines for a cutter.",
               CutOptions},
    CommandRow{CommandId::RulesCheck, "rules check", "RULES JOB...", false,
               "Show which paths of a job, with their colours, each rule of a file takes.",
               RulesOptions},
    CommandRow{CommandId::Nest, "nest", "FILE...", false,
               "Place the pieces of cut jobs on sheets or a roll with little waste.", NestOptions},
    CommandRow{CommandId::Tile, "tile", "FILE", false,
               "Split a cut job that is larger than the cutter into panels.", TileOptions},
    CommandRow{CommandId::RulesList, "rules list", "", false,
               "List the rule files that have a name.", ListingOptions},
    CommandRow{CommandId::RulesShow, "rules show", "RULES", false, "Print a rule file.",
               ShowOptions},
    CommandRow{CommandId::Import, "import", "FILE", false,
               "Lay an engraving template out as a document, and draw or save it.", ImportOptions},
    CommandRow{CommandId::Merge, "merge", "TEMPLATE", false,
               "Make a plate of a template for each row of a table: names become badges.",
               MergeOptions},
    CommandRow{CommandId::View, "view", "FILE", false,
               "Show what a template or a document looks like.", ViewOptions},
    CommandRow{
        CommandId::Separate, "separate", "FILE", true,
        "Separate a file, or the job printed to 'Separation' last, into a plane for each ink.",
        SeparateOptions},
    CommandRow{CommandId::Send, "send", "FILE", true,
               "Bring a cut file, or a cut job, to a cutter: a port, a line, a directory.",
               SendOptions},
    CommandRow{CommandId::Serve, "serve", "", false,
               "Run the print shop's server: it interprets and delivers the jobs of the queue.",
               ServeOptions},
    CommandRow{
        CommandId::JobsAdd, "jobs add", "FILE...", true,
        "Put files into the server's queue, each as a job; with --template or --data as merges.",
        JobsAddOptions},
    CommandRow{CommandId::JobsList, "jobs list", "", false,
               "List the jobs of the server's queue, the newest first.", JobsListOptions},
    CommandRow{CommandId::JobsShow, "jobs show", "JOB", false, "Show a job with its story.",
               ListingOptions},
    CommandRow{CommandId::JobsHold, "jobs hold", "JOB...", false,
               "Hold jobs: they wait until they are released.", ListingOptions},
    CommandRow{CommandId::JobsRelease, "jobs release", "JOB...", false,
               "Release held jobs, and run failed, canceled and uncertain ones again.",
               ListingOptions},
    CommandRow{CommandId::JobsCancel, "jobs cancel", "JOB...", false,
               "Cancel jobs; one that runs ends soon.", ListingOptions},
    CommandRow{CommandId::JobsMove, "jobs move", "JOB...", false, "Move jobs to another device.",
               JobsMoveOptions},
    CommandRow{CommandId::JobsPriority, "jobs priority", "JOB...", false,
               "Give jobs another priority.", JobsPriorityOptions},
    CommandRow{CommandId::JobsReprint, "jobs reprint", "JOB", false,
               "Deliver kept pages of a job again, as a job of its own.", JobsReprintOptions},
    CommandRow{CommandId::JobsAccept, "jobs accept", "JOB...", false,
               "Say that an uncertain delivery came out: the job is done.", ListingOptions},
    CommandRow{CommandId::JobsRemove, "jobs remove", "JOB...", false,
               "Take jobs out of the queue, with their files and kept pages.", ListingOptions},
    CommandRow{CommandId::JobsExport, "jobs export", "", false,
               "Write jobs as a table (CSV) for spreadsheets.", JobsExportOptions},
    CommandRow{CommandId::UsersList, "users list", "", false,
               "List the users of the server's HTTP interface.", ListingOptions},
    CommandRow{CommandId::UsersAdd, "users add", "NAME", false,
               "Add a user of the HTTP interface, or give one another password and role.",
               UsersAddOptions},
    CommandRow{CommandId::UsersRole, "users role", "NAME", false,
               "Give a user of the HTTP interface another role.", UsersRoleOptions},
    CommandRow{CommandId::UsersRemove, "users remove", "NAME...", false,
               "Remove users of the HTTP interface.", HelpOptions},
    CommandRow{CommandId::FolderList, "folder list", "", false,
               "List the hot folders of the server, and what keeps one from working.",
               ListingOptions},
    CommandRow{CommandId::FolderAdd, "folder add", "DIR", false,
               "Make a directory a hot folder: files that are dropped into it become jobs.",
               HelpOptions},
    CommandRow{CommandId::FolderRemove, "folder remove", "DIR", false,
               "Let a directory be no hot folder any more; it stays with all in it.", HelpOptions},
    CommandRow{CommandId::BatchConvert, "batch convert", "FILE...", false,
               "Make a bitmap of each of many files, and go on after a kill.", BatchConvertOptions},
    CommandRow{CommandId::BatchPreview, "batch preview", "FILE...", false,
               "Make a preview of each of many files, and go on after a kill.",
               BatchPreviewOptions},
    CommandRow{CommandId::BatchPageSize, "batch pagesize", "FILE...", false,
               "Measure the first pages of many files, and go on after a kill.",
               BatchPageSizeOptions},
    CommandRow{CommandId::BatchPrint, "batch print", "FILE...", false,
               "Print many files to a printer whose pages are files, and go on after a kill.",
               BatchPrintOptions},
    CommandRow{CommandId::BatchMerge, "batch merge", "TEMPLATE", false,
               "Make the pages of a merge, many at a time, and go on after a kill.",
               BatchMergeOptions},
    CommandRow{CommandId::Completion, "completion", "SHELL", false,
               "Print a script that completes the command's arguments in a shell: bash, fish, zsh.",
               HelpOptions},
    CommandRow{CommandId::Help, "help", "COMMAND", true, "Print a summary, or tell of one command.",
               HelpOptions},
};

}  // namespace

std::span<const CommandRow> Commands() { return CommandRows; }

}  // namespace rastrel::cli
