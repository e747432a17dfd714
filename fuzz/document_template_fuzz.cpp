// CRO and LLX templates of any bytes, laid out: the document can be saved and read again, and
// drawn, and nothing of the import stays open.

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "host/document/document.h"
#include "host/document/document_application.h"
#include "host/document/document_file.h"
#include "host/document_host.h"
#include "host/layout/template_layout.h"
#include "host/render/document_images.h"
#include "rastrel/imports/cro_file_import.h"
#include "rastrel/imports/llx_file_import.h"
#include "rastrel/platform/host/view.h"
#include "tests/support/named_document.h"

namespace {

using namespace rastrel;

// Every file is a line and a hole; no other program is started.
void SetLoader(document::DocumentHost& host) {
  auto& application = dynamic_cast<document::DocumentApplication&>(*host.GetApplication());
  application.SetGraphicLoader([&host](const std::wstring&, bool) {
    document::Document& document = host.GetDocument();
    document::PathShape line;
    line.subPaths.push_back({{0, 0}, {{false, {{{}, {}, {2, 0}}}}}, false});
    for (const document::ObjectHandle object :
         {document.Create(line), document.Create(document::DrillShape{{1, 1}, 1})}) {
      document.Insert(object, host::DocumentRoot);
      document.Select(object);
    }
    return 1;
  });
}

void Check(document::DocumentHost& host, const Expected<void>& laidOut) {
  const document::Document& document = host.GetDocument();
  if (host.StillOpen() != document::DocumentHost::OpenWork()) std::abort();
  if (!laidOut) {
    if (laidOut.Error().why.empty() || document.ObjectCount() != 0) std::abort();
    return;
  }
  if (!document.Selection().empty()) std::abort();
  // Numbers that are none are refused there.
  if (!document::ReadDocumentText(document::DocumentText(document))) std::abort();
  render::ImageOptions options;
  options.page = 1;
  static_cast<void>(render::DrawDocument({document, host.GetFonts(), host.GetNotices()},
                                         render::ImageFormat::Svg, options));
}

// A host with a new document. Finding the machine's fonts takes longer than most templates, so one
// host has many, but not all: it keeps its notices.
document::DocumentHost& NewDocument() {
  constexpr int documentsPerHost = 1000;
  static std::unique_ptr<document::DocumentHost> host;
  static int documents = 0;
  if (documents++ % documentsPerHost == 0) host = std::make_unique<document::DocumentHost>();
  host->GetApplication()->UIGetActiveView()->OnNew();
  host->GetDocument().SetBlank({});
  SetLoader(*host);
  return *host;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  static test::NamedDocument croFile("file.cro");
  const CCROFileImport cro(croFile.Write(bytes).c_str(), nullptr);
  document::DocumentHost& croHost = NewDocument();
  Check(croHost, layout::ImportCro(cro, croHost, {}));

  static test::NamedDocument llxFile("file.llx");
  const CLLXFileImport llx(llxFile.Write(bytes).c_str(), nullptr);
  document::DocumentHost& llxHost = NewDocument();
  Check(llxHost, layout::ImportLlx(llx, llxHost, {}));
  return 0;
}
