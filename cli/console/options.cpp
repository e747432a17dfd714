#include "cli/console/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <span>

#include "cli/console/exit_status.h"

namespace rastrel::cli {
namespace {

using enum OptionId;

constexpr std::array OptionTable{
    OptionRow{Printer, "--printer", "NAME",
              "Deliver to this printer; see `rastrel printers`. 'Separation' keeps the job."},
    OptionRow{Mode, "--mode", "FOLDER/NAME",
              "Use this print mode; see `rastrel modes`. Screen/preview is quick."},
    OptionRow{Copies, "--copies", "N", "Deliver the pages N times, one whole run after the other."},
    OptionRow{Pages, "--pages", "LIST", "Deliver these pages only, for instance 1,3-5."},
    OptionRow{Spool, "--spool", "", "Keep the pages after printing, for `rastrel reprint`."},
    OptionRow{KeepPs, "--keep-ps", "", "Keep the working copy of the job and its prefix."},
    OptionRow{Planar, "--planar", "", "Deliver each colour plane as a file of its own."},
    OptionRow{Scale, "--scale", "none|NAME|WxH", "Scale to a target, as A4, or a size, as 10x5in."},
    OptionRow{Levels, "--levels", "LOW,GAMMA,HIGH", "Adjust all colours, for instance 10,1.2,250."},
    OptionRow{LevelsRed, "--levels-red", "LOW,GAMMA,HIGH", "Adjust red by itself."},
    OptionRow{LevelsGreen, "--levels-green", "LOW,GAMMA,HIGH", "Adjust green by itself."},
    OptionRow{LevelsBlue, "--levels-blue", "LOW,GAMMA,HIGH", "Adjust blue by itself."},
    OptionRow{LevelsGray, "--levels-gray", "LOW,GAMMA,HIGH", "Adjust gray by itself."},
    OptionRow{CutColor, "--cut-color", "rgb:R,G,B|cmyk:C,M,Y,K|spot:NAME",
              "Take what has this colour as cut data, not as print."},
    OptionRow{Preview, "--preview", "", "Of a preview, not of a print."},
    OptionRow{Dpi, "--dpi", "N",
              "Pixels per inch of the preview, from 1 to 4800; 72 if not given. Not of planes."},
    OptionRow{Resolution, "--dpi", "N", "Dots per inch of the conversion, from 1 to 4800."},
    OptionRow{OptionId::PageSize, "--page-size", "WxH", "Size of the page, as 21x29.7cm."},
    OptionRow{Box, "--box", "BOX",
              "The box of a PDF's page that counts: crop (the default), media, trim or bleed.",
              "crop media trim bleed"},
    OptionRow{PasswordFile, "--password-file", "FILE",
              "Open locked PDFs with the password in this file's first line."},
    OptionRow{ParallelPages, "--parallel-pages", "",
              "Make pages of PostScript at the same time, where its comments name them."},
    OptionRow{HalfCutColor, "--half-cut-color", "COLOR",
              "Take what has this colour as lines that are cut half through."},
    OptionRow{Dsc, "--dsc", "", "Tell what the file's comments say of its bounds, too."},
    OptionRow{CutOnly, "--cut-only", "", "Ask for cut data only."},
    OptionRow{OptionId::Window, "--window", "", "Show progress in a window, not on the terminal."},
    OptionRow{OutputSize, "--size", "WxH",
              "Size of the picture, as 10x5cm; of one side alone as 10xcm or x5cm."},
    OptionRow{ChosenPage, "--page", "N", "Which page of the file; 1 if not given."},
    OptionRow{CutPreview, "--preview", "", "Put the picture of the file below the lines."},
    OptionRow{Check, "--check", "",
              "Report faults of the paths, with their places; -o draws them as SVG."},
    OptionRow{Heal, "--heal", "",
              "Join ends, drop copies, crumbs and needles, and say what was done."},
    OptionRow{Joining, "--joining", "LENGTH",
              "With --check or --heal: how far apart ends that belong together lie; 0.1 mm if not "
              "given."},
    OptionRow{TinySize, "--tiny", "LENGTH",
              "With --check or --heal: a smaller piece is tiny; 0.3 mm if not given."},
    OptionRow{SpikeWidth, "--spike", "LENGTH",
              "With --check or --heal: a needle is at most so wide; 0.05 mm if not given."},
    OptionRow{Unite, "--unite", "", "With --heal: make one outline of areas that overlap."},
    OptionRow{DxfVersion, "--dxf-version", "r12|r2000",
              "Version of a DXF file: r2000 (the default), with splines, or r12, with lines alone.",
              "r12 r2000"},
    OptionRow{CutOrigin, "--origin", "CORNER|center|first-mark",
              "The place that the cutter counts from; lower-left if not given.",
              "lower-left lower-right upper-left upper-right center first-mark"},
    OptionRow{Tolerance, "--tolerance", "LENGTH",
              "How far a line may lie beside the curve that it replaces; 0.02mm if not given."},
    OptionRow{AskWindow, "--window", "",
              "Ask for size, resolution and cut line in a window, and show progress there."},
    OptionRow{AskTerminal, "--ask", "",
              "Ask for size, resolution and cut line on the terminal, line by line."},
    OptionRow{SaveTicket, "--save-ticket", "TICKET", "Save the printed job as a ticket file."},
    OptionRow{Title, "--title", "NAME", "Name the job that comes on standard input."},
    OptionRow{Output, "--output", "DIR", "Put the finished files into this directory."},
    OptionRow{OutputFile, "--output", "FILE", "Write to this file, as it is; -o for short."},
    OptionRow{PreviewOutput, "--output", "FILE|DIR",
              "Write to this file, or for each FILE to NAME.png in DIR, or to '{name}.tif'."},
    OptionRow{
        ResultOutput, "--output", "FILE|DIR",
        "Write to this file, or for each FILE to a file of its name in DIR, or to '{name}.svg'."},
    OptionRow{Json, "--json", "", "Print one JSON object a line in place of text."},
    OptionRow{Tsv, "--tsv", "", "Print a table with tabs between its columns."},
    OptionRow{Painted, "--painted", "",
              "Have Ghostscript paint the pages, and tell which spot colours they use."},
    OptionRow{Mark, "--mark", "TEXT", "The trademark's mark, as the chart has it."},
    OptionRow{Quality, "--quality", "TEXT", "The quality, or a part of it: Fine finds Extra Fine."},
    OptionRow{RingSize, "--size", "TEXT", "The ring's size, as the chart writes it."},
    OptionRow{Node, "--node", "NAME", "The node whose font is asked for."},
    OptionRow{RingStyle, "--style", "TEXT", "The ring's style, as the chart has it."},
    OptionRow{StyleSize, "--style-size", "TEXT", "The size of the style, as the chart writes it."},
    OptionRow{EngravingFont, "--font", "NAME", "The font of the engraving."},
    OptionRow{Rows, "--rows", "N", "The number of rows, as the chart writes it."},
    OptionRow{FingerSize, "--finger", "N", "The finger size, for instance 5.5."},
    OptionRow{Sheet, "--sheet", "NAME|N", "Read this sheet only, by its name or its place from 1."},
    OptionRow{List, "--list", "", "List the sheets: place, name, visibility, size."},
    OptionRow{Faithful, "--faithful", "",
              "Make the text that the library makes: stored numbers, sheets joined. The default."},
    OptionRow{AsShown, "--as-shown", "",
              "Make a text of what a person sees in the cells, sheet by sheet."},
    OptionRow{Format, "--format", "NAME", "Read the file as this format, whatever it looks like.",
              "abb bright-star cro llx cr2 zml document"},
    OptionRow{Page, "--page", "N", "Draw this page only; from 1."},
    OptionRow{PictureDpi, "--dpi", "N",
              "Pixels per inch of a picture, from 1 to 2400; 96 if not given."},
    OptionRow{SeparationDpi, "--dpi", "N",
              "Dots per inch of the planes, from 1 to 4800; 300 if not given."},
    OptionRow{PlanesOutput, "--output", "DIR|FILE",
              "Write the planes to a directory, or to a .tif, .pdf, .svg, .png or .rdoc file."},
    OptionRow{SheetSize, "--sheet", "WxH|roll:W",
              "Place the pieces on sheets of this size with its unit, or on a roll so wide."},
    OptionRow{NestGap, "--gap", "LENGTH", "Keep pieces so far from each other; 0 if not given."},
    OptionRow{
        OptionId::NestTurns, "--rotate", "none|90|any",
        "Turn pieces not at all, by quarters (the default), or by any multiple of 45 degrees.",
        "none 90 any"},
    OptionRow{NestEffort, "--effort", "N",
              "Try so many layouts besides rows of boxes, 0 to 10000; 8 if not given."},
    OptionRow{NestSeconds, "--seconds", "N",
              "Look for better layouts so long, 1 to 3600; 60 at most if not given."},
    OptionRow{PanelSize, "--panel", "WxH", "Split the job into panels of this size with its unit."},
    OptionRow{PanelOverlap, "--overlap", "LENGTH",
              "Let panels beside each other share so much; 0 if not given."},
    OptionRow{CutRules, "--rules", "RULES",
              "Let these rules say which paint means which operation: a file, or a name that "
              "`rules list` has."},
    OptionRow{Blank, "--blank", "WxH",
              "Lay out on a blank of this size, for instance 60x40cm or 24x16in; merges also take "
              "'plate', as large as the plates of a row."},
    OptionRow{Outlines, "--outlines", "",
              "Draw letters as outlines, so that no font is needed to see them."},
    OptionRow{Manifest, "--manifest", "FILE",
              "Write what lies where, and in which files, as JSON to this file, .json."},
    OptionRow{OptionId::Bleed, "--bleed", "LENGTH",
              "Say where the print reaches less than this over a cut; with --rules."},
    OptionRow{CutMarks, "--marks", "SHAPE:SIZE,...",
              "Put registration marks around the page: corner, cross or circle; then gap=, count=, "
              "spacing=, edge=, ink=."},
    OptionRow{
        CutPrint, "--print", "FILE",
        "Write the page without its cut paths, and with its marks: .pdf, which prints, or .tif."},
    OptionRow{CutOutput, "--cut-output", "FILE",
              "Write what the rules take for the cutter; the file's ending says the form."},
    OptionRow{Measured, "--measured", "X,Y",
              "Where the cutter has found a mark, in mm; once for each mark, in their order."},
    OptionRow{Measurements, "--measurements", "FILE",
              "Read these places from a file, a line for each mark."},
    OptionRow{Residual, "--residual", "MM",
              "How far a mark may be from its place, from 0.01 to 10; 0.3 if not given."},
    OptionRow{FitKind, "--fit", "KIND",
              "The map that the marks give; the widest that their number fixes if not given.",
              "similar affine projective"},
    OptionRow{Remove, "--remove", "", "Remove what can't be finished."},
    OptionRow{CutDevice, "--device", "NAME",
              "The cutter: a name that `send --list` has, or the path of a device file."},
    OptionRow{
        CutPicture, "--picture", "FILE",
        "Draw how the job is cut, with order and direction, or which panel goes where: .svg or "
        ".png."},
    OptionRow{CutShow, "--show", "",
              "Show print and knife in a window, and go on when it is closed."},
    OptionRow{ListDevices, "--list", "", "List the devices: name, form, way, title."},
    OptionRow{ShowDevice, "--show", "NAME", "Print the file of a device."},
    OptionRow{CheckDevice, "--check", "DEVICE", "Read a device file, and report its first fault."},
    OptionRow{Force, "--force", "", "Replace files that have the name of a result."},
    OptionRow{Jobs, "--jobs", "N",
              "Work on so many files at a time; as many as there are processors if not given."},
    OptionRow{Strict, "--strict", "",
              "Tell of all that the format does not know, lacks, or can't have as asked."},
    OptionRow{AllowOutside, "--allow-outside", "",
              "Place graphics of other directories than the template's, too."},
    OptionRow{Data, "--data", "TABLE",
              "The table: .csv, .xlsx, .ods or .fods; a plate for each row."},
    OptionRow{MergeTemplateFile, "--template", "FILE",
              "The template that a table's rows fill: each job is a merge."},
    OptionRow{OnlyBad, "--only-bad", "REPORT",
              "Merge those rows alone that are bad in this report, the output of `merge --json`."},
    OptionRow{ListFields, "--fields", "",
              "List the fields of the template, with what goes into each; no table is needed."},
    OptionRow{PicturePixels, "--pixels", "N",
              "Draw pictures as large as fits into N by N pixels, at 300 per inch at most; 1 to "
              "20000."},
    OptionRow{FontReplacement, "--font", "NAME=FONT",
              "Use this font where the one of that name is missing; may be given several times."},
    OptionRow{CancelMissingFonts, "--cancel-missing-fonts", "",
              "Ask for no font in place of a missing one: give the text or the import up."},
    OptionRow{AskInWindow, "--window", "", "Ask for missing fonts in a window."},
    OptionRow{Kerf, "--kerf", "LENGTH",
              "Width of the cut, as 0.2mm: outlines move out by half of it, and holes in."},
    OptionRow{CornerForm, "--corners", "FORM",
              "Outer corners that the kerf makes: round (the default), square or pointed.",
              "round square pointed"},
    OptionRow{Overcut, "--overcut", "LENGTH", "Go on past the start of closed paths by so much."},
    OptionRow{LeadIn, "--lead-in", "LENGTH", "Begin closed paths so far off, in the waste."},
    OptionRow{Bridges, "--bridges", "N,LENGTH",
              "Leave N places of each closed path uncut, each so wide, as 4,1mm."},
    OptionRow{WeedBox, "--weed-box", "LENGTH", "Cut a box around all paths, so far from them."},
    OptionRow{WeedLines, "--weed-lines", "LENGTH",
              "Cut the waste into pieces, by lines so far from each other."},
    OptionRow{NoOrder, "--no-order", "", "Leave the paths in their order."},
    OptionRow{QueueDevice, "--device", "NAME",
              "The device: its name in the server's settings or in `printers`."},
    OptionRow{QueueOwner, "--owner", "NAME", "Jobs of this user alone."},
    OptionRow{QueueState, "--state", "LIST",
              "Jobs in these states alone, with commas: queued, held, interpreting, ready, "
              "delivering, done, failed, canceled, uncertain, quarantined."},
    OptionRow{QueueText, "--text", "TEXT", "Jobs with this text in their titles, in any case."},
    OptionRow{QueueFrom, "--from", "DATE", "Jobs of this day, as 2026-03-31, or later."},
    OptionRow{QueueUntil, "--until", "DATE", "Jobs of this day or earlier."},
    OptionRow{QueueSort, "--sort", "COLUMN", "Sort by this column; by id if not given.",
              "id submitted ended title owner device state priority pages"},
    OptionRow{QueueAscending, "--ascending", "", "Sort from the least to the greatest."},
    OptionRow{QueueLimit, "--limit", "N",
              "At most so many jobs, from 1 to 1000000; 100 if not given."},
    OptionRow{QueueOffset, "--offset", "N", "Pass over so many jobs first."},
    OptionRow{QueuePriority, "--priority", "N",
              "From 1, the last, to 100, the first; 50 if not given."},
    OptionRow{QueueHold, "--hold", "", "Let the job wait until it is released."},
    OptionRow{UserRole, "--role", "ROLE",
              "What the user may do: see its own jobs, print too, or manage all.",
              "see print manage"},
    OptionRow{NewPasswordFile, "--password-file", "FILE",
              "Take the password from this file's first line."},
    OptionRow{OpenBrowser, "--open", "", "Open the page of the server in the browser."},
    OptionRow{BatchOutput, "--output", "DIR",
              "The directory of the results, and of the batch's record until all are there."},
    OptionRow{PieceSeconds, "--piece-seconds", "N",
              "Cut the work into pieces of about so many seconds, from 1 to 3600; 5 if not given."},
    OptionRow{Resume, "--resume", "",
              "Go on with a batch that was cut off: the same files and options."},
    OptionRow{BatchOn, "--on", "WHERE",
              "Do the pieces on this machine (the default), or on those of a Slurm cluster.",
              "local slurm"},
    OptionRow{BatchPartition, "--partition", "NAME", "With --on slurm: that part of the cluster."},
    OptionRow{BatchAccount, "--account", "NAME", "With --on slurm: whose time it is."},
    OptionRow{BatchTimeLimit, "--time-limit", "TIME",
              "With --on slurm: end a piece that takes longer, in minutes or as H:MM:SS."},
    OptionRow{BatchLicenses, "--licenses", "LIST",
              "With --on slurm: each piece holds these meanwhile, as cutter:1,printer:1."},
    OptionRow{Help, "--help", "", "Print this help."},
    OptionRow{Version, "--version", "", "Print the version."},
};

constexpr const char* Place = "operand";

// With the comma that comes before its long name; empty for an option that has none.
std::string ShortNameOf(OptionId id) {
  switch (id) {
    case Help: return "-h,";
    case BatchOutput:
    case OutputFile:
    case PlanesOutput:
    case PreviewOutput:
    case ResultOutput: return "-o,";
    default: return {};
  }
}

void AddOption(CLI::App& app, OptionId id, Invocation& result) {
  const OptionRow& row = OptionOf(id);
  const bool isSwitch = *row.value == '\0';
  const std::string names = ShortNameOf(id) + row.name;
  if (isSwitch) {
    app.add_flag_callback(
        names, [&result, id] { result.options[id]; }, row.description);
    return;
  }
  if (id == FontReplacement || id == Measured) {
    app.add_option_function<std::vector<std::string>>(
           names,
           [&result, id](const std::vector<std::string>& values) {
             result.options[id] = values.back();
             (id == FontReplacement ? result.fonts : result.measured) = values;
           },
           row.description)
        ->allow_extra_args(false);
    return;
  }
  app.add_option_function<std::string>(
      names, [&result, id](const std::string& value) { result.options[id] = value; },
      row.description);
}

CLI::App& GroupOf(CLI::App& program, const std::string& word, Invocation& result) {
  const auto known =
      program.get_subcommands([&word](const CLI::App* one) { return one->get_name() == word; });
  if (!known.empty()) return *known.front();
  CLI::App* group = program.add_subcommand(word);
  AddOption(*group, Help, result);
  // No more than one command, so that an operand may have a command's name.
  group->require_subcommand(0, 1);
  group->callback([&result, word] {
    if (result.command == CommandId::None) result.group = word;
  });
  return *group;
}

void AddCommand(CLI::App& program, const CommandRow& row, Invocation& result) {
  const std::string name = row.name;
  const std::size_t blank = name.find(' ');
  CLI::App* command = nullptr;
  if (blank == name.npos) {
    command = program.add_subcommand(name, row.description);
  } else {
    CLI::App& group = GroupOf(program, name.substr(0, blank), result);
    command = group.add_subcommand(name.substr(blank + 1), row.description);
  }
  for (const OptionId id : row.options) AddOption(*command, id, result);
  if (row.id == CommandId::Help) {
    command->add_option_function<std::vector<std::string>>(
        Place, [&result](const std::vector<std::string>& values) {
          for (const std::string& word : values)
            result.operand += (result.operand.empty() ? "" : " ") + word;
          result.hasOperand = true;
        });
  } else if (std::string_view(row.operand).ends_with("...")) {
    command->add_option_function<std::vector<std::string>>(
        Place, [&result](const std::vector<std::string>& values) {
          result.operands = values;
          result.operand = values.front();
          result.hasOperand = true;
        });
  } else if (*row.operand != '\0') {
    command->add_option_function<std::string>(Place, [&result](const std::string& value) {
      result.operand = value;
      result.hasOperand = true;
    });
  }
  command->preparse_callback([&result, id = row.id](std::size_t) { result.command = id; });
}

// The parser's messages come after its class names now and then; users have no use for
// those.
std::string MessageOf(const CLI::ParseError& error) {
  std::string message = error.what();
  while (!message.empty() && (message.back() == '\n' || message.back() == '.')) message.pop_back();
  return message;
}

// The part of the help that concerns the arguments, and the fault if it is the command
// itself.
std::string HintFor(const CLI::ParseError& error, const Invocation& result,
                    std::span<const char* const> arguments) {
  const auto row = std::ranges::find(Commands(), result.command, &CommandRow::id);
  if (row != Commands().end() && result.command != CommandId::None)
    return MessageOf(error) + "; see `rastrel help " + row->name + "`";
  if (arguments.size() < 2 || *arguments[1] == '-')
    return MessageOf(error) + "; see `rastrel help`";
  const std::string group = arguments[1];
  const bool isGroup = std::ranges::any_of(Commands(), [&group](const CommandRow& one) {
    return std::string_view(one.name).starts_with(group + " ");
  });
  if (!isGroup) return "there is no command '" + group + "'; see `rastrel help`";
  if (arguments.size() > 2 && *arguments[2] != '-')
    return "there is no command '" + group + " " + arguments[2] + "'; see `rastrel help " + group +
           "`";
  return MessageOf(error) + "; see `rastrel help " + group + "`";
}

void CheckOperand(const Invocation& result) {
  if (result.Has(Help)) return;
  for (const CommandRow& row : Commands()) {
    if (row.id != result.command || row.operandOptional || *row.operand == '\0') continue;
    if (!result.hasOperand || result.operand.empty())
      throw CommandError(ExitStatus::WrongUse, std::string("`rastrel ") + row.name + "` needs " +
                                                   row.operand + "; see `rastrel help " + row.name +
                                                   "`");
  }
}

}  // namespace

std::span<const OptionRow> Options() { return OptionTable; }

const OptionRow& OptionOf(OptionId id) {
  return *std::ranges::find(OptionTable, id, &OptionRow::id);
}

std::string Invocation::ValueOr(OptionId id, std::string_view fallback) const {
  const auto found = options.find(id);
  return found == options.end() ? std::string(fallback) : found->second;
}

Invocation ParseArguments(int count, const char* const* arguments) {
  Invocation result;
  CLI::App program;
  program.set_help_flag();
  program.require_subcommand(0, 1);
  AddOption(program, Help, result);
  AddOption(program, Version, result);
  for (const CommandRow& row : Commands()) AddCommand(program, row, result);
  try {
    program.parse(count, arguments);
  } catch (const CLI::ParseError& error) {
    const std::span all(arguments, static_cast<std::size_t>(count));
    throw CommandError(ExitStatus::WrongUse, HintFor(error, result, all));
  }
  CheckOperand(result);
  return result;
}

}  // namespace rastrel::cli
