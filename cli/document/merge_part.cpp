#include "cli/document/merge_part.h"

#include <limits>
#include <span>
#include <string_view>
#include <vector>

#include "cli/console/exit_status.h"
#include "cli/console/run_program.h"
#include "cli/console/values.h"
#include "cli/document/merge_command.h"

namespace rastrel::cli {
namespace {

constexpr std::string_view OperandsFollow = "--";

MergePart::Kind KindOf(std::string_view word) {
  if (word == MergeCountWord) return MergePart::Kind::Count;
  if (word == MergePageWord) return MergePart::Kind::Page;
  return word == MergeReportWord ? MergePart::Kind::Report : MergePart::Kind::Whole;
}

int PageOf(std::string_view text) {
  const std::string_view prefix = MergePagePrefix;
  if (!text.starts_with(prefix))
    throw CommandError(ExitStatus::WrongUse, "the page of a merge has no number");
  return OrEnd(ExitStatus::WrongUse, WholeNumberOf("page", std::string(text.substr(prefix.size())),
                                                   1, std::numeric_limits<int>::max()));
}

}  // namespace

int RunMergePart(int count, const char* const* arguments) {
  const std::span given(arguments, static_cast<std::size_t>(count));
  MergePart part;
  if (given.size() > 1) part.kind = KindOf(given[1]);
  if (part.kind == MergePart::Kind::Whole) return -1;
  std::vector<const char*> words{given[0]};
  if (given.size() > 3) words.insert(words.end(), given.begin() + 3, given.end());
  std::string page;
  if (part.kind == MergePart::Kind::Page && words.size() > 2 &&
      words[words.size() - 2] == OperandsFollow) {
    page = words.back();
    words.resize(words.size() - 2);
  }
  if (given.size() > 2) (part.kind == MergePart::Kind::Count ? part.file : part.sum) = given[2];
  return RunProgram(static_cast<int>(words.size()), words.data(),
                    [&](const Invocation& invocation) {
                      if (part.kind == MergePart::Kind::Page) part.page = PageOf(page);
                      if (invocation.command != CommandId::Merge)
                        throw CommandError(ExitStatus::WrongUse, "only a merge has parts");
                      return MergeCommand(invocation, part);
                    });
}

}  // namespace rastrel::cli
