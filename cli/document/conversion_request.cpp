#include "cli/document/conversion_request.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <span>
#include <tuple>
#include <utility>

#include "cli/console/standard_streams.h"
#include "cli/converting/conversion_settings.h"
#include "cli/input/result_names.h"

namespace rastrel::cli {
namespace {

constexpr int MaximumPage = 1'000'000;

struct Extension {
  const char* name;
  ResultKind kind;
};

// The first is the usual one.
constexpr std::array Pictures{
    Extension{".png", ResultKind::Png},   Extension{".tif", ResultKind::Tiff},
    Extension{".tiff", ResultKind::Tiff}, Extension{".pdf", ResultKind::Pdf},
    Extension{".svg", ResultKind::Svg},   Extension{".rdoc", ResultKind::Document}};
constexpr std::array Lines{
    Extension{".svg", ResultKind::Svg},      Extension{".dxf", ResultKind::Exchange},
    Extension{".hpgl", ResultKind::Plotter}, Extension{".plt", ResultKind::Plotter},
    Extension{".pdf", ResultKind::Pdf},      Extension{".json", ResultKind::Json},
    Extension{".rdoc", ResultKind::Document}};

std::span<const Extension> ExtensionsOf(const Invocation& invocation) {
  if (invocation.command == CommandId::Cut) return Lines;
  return Pictures;
}

std::string ListOf(std::span<const Extension> extensions) {
  std::string list;
  for (const Extension& extension : extensions) {
    if (!list.empty()) list += &extension == &extensions.back() ? " or " : ", ";
    list += extension.name;
  }
  return list;
}

Expected<ResultFile> ReadResult(const Invocation& invocation) {
  const std::span<const Extension> extensions = ExtensionsOf(invocation);
  ResultFile result;
  result.path = invocation.ValueOr(OptionId::ResultOutput, "");
  result.isOutput = result.path == StandardOutputName;
  const Extension* found = extensions.data();
  const std::string given = IsResultDirectory(result.path) ? std::string() : result.path;
  if (NamesEachResult(result.path)) result.pattern = std::exchange(result.path, {});
  if (!given.empty() && !result.isOutput) {
    const std::string name = std::filesystem::path(given).extension();
    const auto named = std::ranges::find(extensions, name, &Extension::name);
    if (named == extensions.end())
      return FailureOf("-o " + given + ": its name has to end in " + ListOf(extensions));
    found = &*named;
  }
  result.kind = found->kind;
  result.extension = found->name;
  return result;
}

Expected<void> ReadCutColors(const Invocation& invocation, ConversionRequest& request) {
  for (const auto& [id, option, cut] :
       {std::tuple(OptionId::CutColor, "--cut-color", &request.cut),
        std::tuple(OptionId::HalfCutColor, "--half-cut-color", &request.halfCut)}) {
    if (!invocation.Has(id)) continue;
    auto read = ParseCutData(option, invocation.ValueOr(id, ""));
    if (!read) return read.Error();
    *cut = *std::move(read);
  }
  if (invocation.command == CommandId::Cut && request.cut.enabled == 0 &&
      request.halfCut.enabled == 0)
    return FailureOf("a cut colour is needed, as in --cut-color spot:CutContour");
  return {};
}

Expected<void> ReadNumbers(const Invocation& invocation, ConversionRequest& request) {
  if (invocation.Has(OptionId::OutputSize)) {
    const auto size = ParsePartSize("--size", invocation.ValueOr(OptionId::OutputSize, ""));
    if (!size) return size.Error();
    request.size = *size;
  }
  if (invocation.Has(OptionId::Resolution)) {
    const auto dpi = ParseDpi(invocation.ValueOr(OptionId::Resolution, ""));
    if (!dpi) return dpi.Error();
    request.resolution = *dpi;
  }
  if (invocation.Has(OptionId::ChosenPage)) {
    const auto page =
        WholeNumberOf("--page", invocation.ValueOr(OptionId::ChosenPage, ""), 1, MaximumPage);
    if (!page) return page.Error();
    request.page = *page;
  }
  return {};
}

// A person who is asked says all of it.
Expected<void> CheckAsked(const Invocation& invocation, const ConversionRequest& request) {
  if (!request.window && !request.ask) return {};
  const std::string asking = request.window ? "--window" : "--ask";
  if (request.ask && request.window) return FailureOf("--ask and --window exclude each other");
  if (request.ask && request.json) return FailureOf("--ask: --json has no questions");
  for (const OptionId id : {OptionId::OutputSize, OptionId::Resolution, OptionId::CutColor}) {
    if (invocation.Has(id))
      return FailureOf(asking + " asks for size, resolution and cut line: give it without " +
                       OptionOf(id).name);
  }
  return {};
}

}  // namespace

Expected<ConversionRequest> ReadConversionRequest(const Invocation& invocation) {
  ConversionRequest request;
  request.preview = invocation.Has(OptionId::CutPreview);
  request.window = invocation.Has(OptionId::AskWindow);
  request.ask = invocation.Has(OptionId::AskTerminal);
  request.json = invocation.Has(OptionId::Json);
  auto result = ReadResult(invocation);
  if (!result) return result.Error();
  request.result = *std::move(result);
  if (const auto read = ReadNumbers(invocation, request); !read) return read.Error();
  if (const auto read = ReadCutColors(invocation, request); !read) return read.Error();
  if (const auto checked = CheckAsked(invocation, request); !checked) return checked.Error();
  return request;
}

}  // namespace rastrel::cli
