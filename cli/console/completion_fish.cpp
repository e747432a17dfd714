#include <string>
#include <string_view>

#include "cli/console/completion_tables.h"

namespace rastrel::cli {
namespace {

// The part that knows no command.
constexpr std::string_view Functions = R"fish(
# Whether these and no more come before the cursor.
function __rastrel_after
    set -l words (commandline -opc)
    test "$words[2..-1]" = "$argv"
end

# Whether the line begins with this command.
function __rastrel_is
    set -l words (commandline -opc)
    string match -q -- "$argv *" "$words[2..-1] "
end

# Files with these endings, and directories; all files if there are none.
function __rastrel_files
    set -l word (commandline -ct | string replace -r -- '^--[a-z0-9-]+=' '')
    set -l all (complete -C "__fish_command_without_completions $word")
    set -l endings (string join '|' $argv)
    set -l chosen (string match -ri -- '^.*(?:/|\.(?:'$endings'))$' $all)
    if set -q chosen[1]
        printf '%s\n' $chosen
    else if set -q all[1]
        printf '%s\n' $all
    end
end

# The first column of a listing, without its title.
function __rastrel_listing
    command rastrel $argv 2>/dev/null | cut -f 1 | string match -rv '^(\*|job|user|folder)$'
end

complete -c rastrel -e
complete -c rastrel -f
)fish";

// In single quotes, as fish reads them.
std::string Quoted(std::string_view text) {
  std::string quoted = "'";
  for (const char letter : text) {
    if (letter == '\'' || letter == '\\') quoted += '\\';
    quoted += letter;
  }
  return quoted + "'";
}

std::string Begin(std::string_view condition) {
  return "complete -c rastrel -n " + Quoted(condition);
}

// The argument of `complete -a` for one alternative of a kind; empty for any file.
std::string Arguments(const std::string& alternative) {
  if (alternative == "files") return "";
  if (alternative.starts_with("files ")) return "(__rastrel_files " + alternative.substr(6) + ")";
  if (alternative == "directories") return "(__fish_complete_directories)";
  if (alternative.starts_with("one of ")) return alternative.substr(7);
  return "(__rastrel_listing " + alternative + ")";
}

// Options of `complete` for a kind. No file is offered but where it says so.
std::string Offers(const std::string& kind) {
  std::string offered;
  bool anyFile = false;
  for (const std::string& alternative : AlternativesOf(kind)) {
    const std::string one = Arguments(alternative);
    if (one.empty()) anyFile = true;
    if (!one.empty()) offered += (offered.empty() ? "" : " ") + one;
  }
  return (anyFile ? " -F" : " -f") + (offered.empty() ? "" : " -a " + Quoted(offered));
}

std::string WordLines() {
  std::string lines;
  for (const std::string& name : FirstWords())
    lines += Begin("__rastrel_after") + " -a " + name + " -d " + Quoted(DescriptionOf(name)) + "\n";
  lines += Begin("__rastrel_after") + " -l help -d 'Print this help.'\n" +
           Begin("__rastrel_after") + " -l version -d 'Print the version.'\n";
  for (const std::string& group : CommandGroups()) {
    const std::string condition = "__rastrel_after " + group;
    for (const CommandRow* row : CommandsOf(group))
      lines += Begin(condition) + " -a " + std::string(row->name).substr(group.size() + 1) +
               " -d " + Quoted(row->description) + "\n";
    lines += Begin(condition) + " -l help -d 'Print this help.'\n";
  }
  return lines;
}

std::string CommandLines(const CommandRow& row) {
  const std::string begin = Begin(std::string("__rastrel_is ") + row.name);
  std::string lines;
  if (const std::string kind = KindOfOperand(row); !kind.empty())
    lines += begin + Offers(kind) + "\n";
  for (const OptionId id : row.options) {
    const OptionRow& option = OptionOf(id);
    lines += begin + (HasShortOutput(id) ? " -s o" : "") + " -l " + (option.name + 2);
    if (*option.value != '\0') lines += " -r" + Offers(KindOfValue(option));
    lines += " -d " + Quoted(option.description) + "\n";
  }
  return lines;
}

}  // namespace

std::string FishCompletions() {
  std::string script = "# Completions of rastrel for fish, from `rastrel completion fish`.\n" +
                       std::string(Functions) + "\n" + WordLines();
  for (const CommandRow& row : Commands()) script += "\n" + CommandLines(row);
  return script;
}

}  // namespace rastrel::cli
