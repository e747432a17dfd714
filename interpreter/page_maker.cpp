#include "interpreter/page_maker.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "interpreter/separations.h"

namespace rastrel::interpreter {
namespace {

constexpr std::size_t InkLimit = 64;
constexpr double SeparationBytesPerPixel = 8;  // four planes and the composite of four

std::string Whole(double value) { return std::to_string(static_cast<long long>(value)); }

}  // namespace

PageMaker::PageMaker(const PageTask& task, const RunDirectory& directory, const Settings& settings,
                     JobUse& use, std::size_t number, RunListener& listener, Expected<void>& result)
    : m_Task(task),
      m_Directory(directory),
      m_Settings(settings),
      m_Use(use),
      m_Number(number),
      m_Listener(listener),
      m_Result(result) {
  m_Description.cuts = &m_Cuts;
}

void PageMaker::Announce(double width, double height) {
  CheckPageSize(width, height);
  TakeSeparations(m_Ended);
  m_PagePixels = width * height;
  m_PageBytes = m_PagePixels * SeparationBytesPerPixel;
}

void PageMaker::EndReported() {
  ShowConverting();
  m_Cuts.EndPage();
  // The interpreter may still be writing the files of the page that it has just begun to put out.
  TakeSeparations(m_Ended++);
}

void PageMaker::AddInk(const SpotInk& ink) {
  auto& inks = m_Description.inks;
  if (inks.size() < InkLimit || inks.contains(ink.name)) inks[ink.name] = ink.color;
}

void PageMaker::TakeLastSeparations() { TakeSeparations(std::numeric_limits<unsigned>::max()); }

Expected<void> PageMaker::DropPresent() {
  if (!m_Page) return {};
  auto removed = m_Page->Remove();
  m_Page.reset();
  return removed;
}

bool PageMaker::BeginPage(const PageSize& size) {
  if (m_Pages >= m_Task.maximum) return false;
  ShowConverting();
  CheckPageSize(size.width, size.height);
  if (!m_Result || !m_Task.keeps) return static_cast<bool>(m_Result);
  auto page = PageDirectory::Create(m_Directory.Path(), m_Pages + 1, size, m_Description);
  if (!page) return Fail(page.Error());
  m_Page = std::move(*page);
  return true;
}

bool PageMaker::AddPixels(std::span<const std::byte> bytes) {
  if (!CheckTotal(bytes.size())) return false;
  if (!m_Page) return true;
  if (const auto added = m_Page->AddPixels(bytes); !added) return Fail(added.Error());
  // The name of the printer may come after the first pixels.
  if (m_Description.takesTiff && m_Description.takesTiff(m_Description.printer))
    m_Page->BeginFlush();
  return true;
}

bool PageMaker::EndPage() {
  if (m_Page) {
    const auto finished = m_Page->Finish(m_Description);
    m_Page.reset();
    if (!finished) return Fail(finished.Error());
  }
  m_Listener.PageMade(++m_Pages);
  return true;
}

// Takes over the separations of the first `complete` pages, as far as they lie there.
bool PageMaker::TakeSeparations(unsigned complete) {
  while (m_Result && m_Separated < complete &&
         HasSeparations(m_Directory.Planes(), m_Separated + 1)) {
    ShowConverting();
    if (!CheckTotal(static_cast<std::uint64_t>(m_PageBytes))) return false;
    if (m_Pages != m_Separated) {
      return Fail(FailureOf("The job changes between separations and other pages"));
    }
    ++m_Separated;
    if (m_Task.keeps) {
      const auto made = MakeSeparationPage(m_Directory.Planes(), m_Directory.Path(), m_Separated,
                                           m_Description, m_Settings.pagePixels);
      if (!made) return Fail(made.Error());
    }
    m_Description.inks.clear();  // those of the next page come after them
    m_Listener.PageMade(++m_Pages);
  }
  return static_cast<bool>(m_Result);
}

void PageMaker::CheckPageSize(double width, double height) {
  const auto pixels = static_cast<double>(m_Settings.pagePixels);
  const auto side = static_cast<double>(SidePixels);
  if (width * height <= pixels && width <= side && height <= side) return;
  const double shown = 1e15;
  Fail(FailureOf("Page " + std::to_string(std::max(m_Ended, m_Pages) + 1) + " would be " +
                 Whole(std::min(width, shown)) + " x " + Whole(std::min(height, shown)) +
                 " pixels; the limit is " + std::to_string(m_Settings.pagePixels) +
                 " pixels (RASTREL_RIP_PIXELS) and " + std::to_string(SidePixels) + " on a side"));
}

bool PageMaker::CheckTotal(std::uint64_t bytes) {
  m_Use.AddPages(m_Number, bytes);
  // Only its own count for the first interpreter of a job, which could make all pages: where they
  // are too large, it is the one to meet the limit, as if it were alone.
  const bool isFirst = m_Description.pagesBefore == 0;
  const std::uint64_t total = isFirst ? m_Use.PagesOf(m_Number) : m_Use.PagesOfAll();
  if (total <= m_Settings.totalMebibytes << 20) return true;
  return Fail(FailureOf("The job's pages take more than " +
                        std::to_string(m_Settings.totalMebibytes) + " MiB (RASTREL_RIP_SIZE)"));
}

// False, for the callers to return.
bool PageMaker::Fail(Failure failure) {
  KeepFirst(m_Result, std::move(failure));
  return false;
}

void PageMaker::ShowConverting() {
  if (!m_Converting) m_Listener.StateReached(RunState::Converting);
  m_Converting = true;
}

}  // namespace rastrel::interpreter
