// A host that lives long: prints, aborts, measures, scans and imports by the public interface
// alone, in rounds. Between two rounds nothing runs, and it writes its holdings:
//
//   held <TAB> jobs <TAB> descriptors <TAB> threads <TAB> resident bytes <TAB> children
//   job <TAB> kind <TAB> outcome       for each job
//   fault <TAB> number <TAB> sentence  for each job that ended as it must not
//
//   soak_client JOBS SEED INPUTS WORK
//
// INPUTS holds good.ps, bad.ps, endless.ps, notes.xml, cars.xml, capitals.xml, plates.xml and the
// folder workbook; WORK is a directory of its own. Tickets print on two threads, each with its own;
// page sizes and imports are the main thread's, as a host's would be.

#include <rastrel/rastrel.h>

#include <atomic>
#include <chrono>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

constexpr int Printers = 2;         // threads that print
constexpr int JobsOfRound = 20;     // also the steps in which holdings are seen
constexpr int PrintsOfRound = 12;   // of these
constexpr auto JobLimit = 120s;     // a job that takes longer waits for ever
constexpr auto MaximumDelay = 700;  // milliseconds until an abort

std::mutex outputMutex;

void Line(const std::string& text) {
  const std::lock_guard<std::mutex> guard(outputMutex);
  std::printf("%s\n", text.c_str());
  std::fflush(stdout);
}

// A path's own conversion knows ASCII alone.
std::wstring WideOf(const fs::path& path) {
  const std::string bytes = path.string();
  std::wstring wide(bytes.size() + 1, L'\0');
  const std::size_t size = std::mbstowcs(wide.data(), bytes.c_str(), wide.size());
  wide.resize(size == static_cast<std::size_t>(-1) ? 0 : size);
  return wide;
}

struct Inputs {
  fs::path files;
  fs::path work;
  std::wstring Wide(const char* name) const { return WideOf(files / name); }
};

// How a job of a kind ended. An empty fault is none.
struct Result {
  std::string kind;
  std::string outcome;
  std::string fault;
};

Result Ended(std::string kind, bool good, const std::string& otherwise) {
  return {std::move(kind), good ? "ended" : "wrong", good ? std::string() : otherwise};
}

std::string StateOf(const CJobTicket& ticket) {
  return "status " + std::to_string(static_cast<int>(ticket.m_Status)) + ", error " +
         std::to_string(static_cast<int>(ticket.m_Error));
}

// Waits for the printing thread's end; false if the time is over, or the job was to be aborted
// first.
bool WaitsForEnd(CJobTicket& ticket, std::chrono::milliseconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!ticket.GetPrintThread()->HasEnded()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(2ms);
  }
  return true;
}

// Each ticket prints a copy of its own, since a job's prefix is written beside its file.
class JobFile {
 public:
  JobFile(const Inputs& inputs, const char* file, const std::string& name)
      : m_Path(inputs.work / (name + ".ps")) {
    if (fs::exists(inputs.files / file)) fs::copy_file(inputs.files / file, m_Path);
  }
  JobFile(const JobFile&) = delete;
  JobFile& operator=(const JobFile&) = delete;
  ~JobFile() {
    std::error_code ignored;
    fs::remove(m_Path, ignored);
  }
  const fs::path& Path() const { return m_Path; }

 private:
  fs::path m_Path;
};

void Fill(CJobTicket& ticket, const JobFile& file, const std::string& name) {
  ticket.OpenLog([](const wchar_t*) {});
  ticket.m_JobName = std::wstring(name.begin(), name.end()).c_str();
  ticket.m_JobFile.Directory = (WideOf(file.Path().parent_path()) + L"/").c_str();
  ticket.m_JobFile.FileName = WideOf(file.Path().filename()).c_str();
  ticket.m_JobData.PrinterName = L"KVI Tiff Screen Preview";
  ticket.m_JobData.PrintModeFolder = L"TIFF";
  ticket.m_JobData.PrintModeName = L"tiff default.ps";
}

Result Print(const Inputs& inputs, const std::string& name) {
  const JobFile job(inputs, "good.ps", name);
  CJobTicket ticket;
  Fill(ticket, job, name);
  if (!ticket.PrintJob()) return {"print", "wrong", "did not start: " + StateOf(ticket)};
  const bool inTime = WaitsForEnd(ticket, JobLimit);
  if (!inTime) ticket.GetPrintThread()->Abort();
  ticket.EndPrint();
  if (!inTime) return {"print", "late", "has not ended in time"};
  return Ended("print", ticket.m_Status == JS_ACTIVE && ticket.m_Error == JTE_NONE,
               StateOf(ticket));
}

Result Abort(const Inputs& inputs, const std::string& name, const char* file, int delay) {
  const JobFile job(inputs, file, name);
  CJobTicket ticket;
  Fill(ticket, job, name);
  if (!ticket.PrintJob()) return {"abort", "wrong", "did not start: " + StateOf(ticket)};
  (void)WaitsForEnd(ticket, std::chrono::milliseconds(delay));
  const auto asked = std::chrono::steady_clock::now();
  ticket.GetPrintThread()->Abort();
  ticket.EndPrint();
  if (std::chrono::steady_clock::now() - asked > JobLimit)
    return {"abort", "late", "took too long"};
  if (ticket.m_Status == JS_HOLDING && ticket.m_Error == JTE_ABNORMAL)
    return {"abort", "aborted", ""};
  const bool wasThrough = ticket.m_Status == JS_ACTIVE && ticket.m_Error == JTE_NONE;
  return Ended("abort", wasThrough && std::string_view(file) != "endless.ps", StateOf(ticket));
}

Result PrintBad(const Inputs& inputs, const std::string& name, const char* file) {
  const JobFile job(inputs, file, name);
  CJobTicket ticket;
  Fill(ticket, job, name);
  if (!ticket.PrintJob()) return {"print bad input", "refused", ""};
  const bool inTime = WaitsForEnd(ticket, JobLimit);
  if (!inTime) ticket.GetPrintThread()->Abort();
  ticket.EndPrint();
  if (!inTime) return {"print bad input", "late", "has not ended in time"};
  const bool good = ticket.m_Status == JS_HOLDING && ticket.m_Error != JTE_NONE;
  return {"print bad input", good ? "failed" : "wrong", good ? std::string() : StateOf(ticket)};
}

Result Record(const std::string& name) {
  CMemFile memory;
  CJobTicket first;
  first.m_JobName = std::wstring(name.begin(), name.end()).c_str();
  first.m_Copies = 3;
  {
    CArchive archive(&memory, CArchive::store);
    first.Serialize(archive);
  }
  memory.Close();
  CJobTicket second;
  {
    CArchive archive(&memory, CArchive::load);
    second.Serialize(archive);
  }
  return Ended("record", second.m_JobName == first.m_JobName && second.m_Copies == first.m_Copies,
               "is not what was stored");
}

// good.ps has a box of 144 by 72 points.
Result Scan(const Inputs& inputs) {
  CPSParser parser(inputs.Wide("good.ps").c_str());
  CRect bounds;
  const bool good = parser.IsPostscriptFile() && !parser.IsEpsFile() && parser.GetBounds(bounds) &&
                    bounds.right == 144 && bounds.top == 72;
  return Ended("scan", good, "the bounds are not those of the file");
}

Result PageSize(const Inputs& inputs) {
  BOUNDS bounds{};
  const int measured = GetPSPageSize(inputs.Wide("good.ps").c_str(), bounds);
  return Ended("page size", measured == 1, "can't be measured");
}

Result BadPageSize(const Inputs& inputs) {
  BOUNDS bounds{};
  return Ended("page size of bad input",
               GetPSPageSize(inputs.Wide("missing.ps").c_str(), bounds) == 0, "was measured");
}

Result Notes(const Inputs& inputs) {
  CJobNotesFileImport notes(inputs.Wide("notes.xml").c_str());
  CJobNotesFileImport bad(inputs.Wide("bad.xml").c_str());
  return Ended("notes", notes.GetFirstCompany() != nullptr && bad.GetFirstCompany() == nullptr,
               "companies are missing or too many");
}

Result Cars(const Inputs& inputs) {
  const CXMLCarDataCut cars(inputs.Wide("cars.xml").c_str());
  return {"cars", "ended", ""};
}

Result Chart(const Inputs& inputs) {
  std::vector<std::wstring> words;
  const CHCapRulesXMLReader reader(words, inputs.Wide("capitals.xml").c_str(), nullptr);
  return Ended("chart", !words.empty(), "no words");
}

// Without a document nothing is built, but all is parsed.
Result Plates(const Inputs& inputs) {
  CXMLFileImport plates(inputs.Wide("plates.xml").c_str());
  CXMLFileImport bad(inputs.Wide("bad.xml").c_str());
  return Ended("plates",
               plates.GetFirstPlate() != nullptr && plates.ImportXMLFile() == 0 &&
                   bad.GetFirstPlate() == nullptr,
               "plates are missing or too many");
}

// The text is written into the package's folder, so each import has a copy.
Result Workbook(const Inputs& inputs) {
  const fs::path folder = inputs.work / "workbook";
  fs::remove_all(folder);
  fs::copy(inputs.files / "workbook", folder, fs::copy_options::recursive);
  std::vector<tagEXCEL_XML_FILE> records(3);
  const char* const names[] = {"xl/workbook.xml", "xl/_rels/workbook.xml.rels",
                               "xl/sharedStrings.xml"};
  std::vector<tagEXCEL_XML_FILE*> files;
  for (std::size_t i = 0; i < records.size(); ++i) {
    records[i].type = static_cast<std::int32_t>(i + 1);
    WideOf(folder / names[i]).copy(records[i].path, tagEXCEL_XML_FILE::PathSize - 1);
    files.push_back(&records[i]);
  }
  CMSExcelXMLImport import(WideOf(folder).c_str());
  const bool good = import.ParseXmlFiles(files) && fs::exists(folder / "content.txt");
  fs::remove_all(folder);
  return Ended("workbook", good, "no text was made");
}

Result TicketJob(const Inputs& inputs, int number, std::mt19937& random) {
  const std::string name = "client-" + std::to_string(number);
  const int delay = static_cast<int>(random() % MaximumDelay);
  switch (random() % 8) {
    case 0:
    case 1: return Print(inputs, name);
    case 2: return Abort(inputs, name, "good.ps", delay);
    case 3: return Abort(inputs, name, "endless.ps", delay);
    case 4: return PrintBad(inputs, name, "bad.ps");
    case 5: return PrintBad(inputs, name, "missing.ps");
    case 6: return Record(name);
    default: return Scan(inputs);
  }
}

Result HostJob(const Inputs& inputs, int number) {
  switch (number % 8) {
    case 0: return PageSize(inputs);
    case 1: return Notes(inputs);
    case 2: return Cars(inputs);
    case 3: return Chart(inputs);
    case 4: return Plates(inputs);
    case 5: return Workbook(inputs);
    case 6: return BadPageSize(inputs);
    default: return Scan(inputs);
  }
}

void ReportJob(int number, const Result& result) {
  Line("job\t" + result.kind + "\t" + result.outcome);
  if (!result.fault.empty())
    Line("fault\t" + std::to_string(number) + "\t" + result.kind + ": " + result.fault);
}

// Each job's chance is its own, so that a number is the same job in each run of a seed.
std::mt19937 ChanceOf(unsigned seed, int number) {
  return std::mt19937(seed * 1000003U + static_cast<unsigned>(number));
}

void RunRound(const Inputs& inputs, unsigned seed, int first, int count) {
  const int prints = std::min(count, PrintsOfRound);
  std::atomic<int> next = 0;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < Printers; ++thread) {
    threads.emplace_back([&] {
      for (int at = next++; at < prints; at = next++) {
        std::mt19937 random = ChanceOf(seed, first + at);
        ReportJob(first + at, TicketJob(inputs, first + at, random));
      }
    });
  }
  for (int at = prints; at < count; ++at) ReportJob(first + at, HostJob(inputs, first + at));
  for (std::thread& thread : threads) thread.join();
}

std::size_t EntriesOf(const char* directory) {
  return static_cast<std::size_t>(std::distance(fs::directory_iterator(directory), {}));
}

std::size_t ResidentBytes() {
  std::ifstream file("/proc/self/statm");
  std::size_t size = 0;
  std::size_t resident = 0;
  file >> size >> resident;
  return resident * 4096;
}

std::size_t Children() {
  std::size_t count = 0;
  for (const fs::directory_entry& thread : fs::directory_iterator("/proc/self/task")) {
    std::ifstream file(thread.path() / "children");
    count += static_cast<std::size_t>(std::distance(std::istream_iterator<std::string>(file),
                                                    std::istream_iterator<std::string>()));
  }
  return count;
}

void ReportHoldings(int jobs) {
  Line("held\t" + std::to_string(jobs) + "\t" + std::to_string(EntriesOf("/proc/self/fd")) + "\t" +
       std::to_string(EntriesOf("/proc/self/task")) + "\t" + std::to_string(ResidentBytes()) +
       "\t" + std::to_string(Children()));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) {
    std::fprintf(stderr, "usage: soak_client JOBS SEED INPUTS WORK\n");
    return 2;
  }
  std::setlocale(LC_CTYPE, "C.UTF-8");  // for WideOf
  const int jobs = std::atoi(argv[1]);
  const auto seed = static_cast<unsigned>(std::atoi(argv[2]));
  const Inputs inputs{argv[3], argv[4]};
  for (int done = 0; done < jobs; done += JobsOfRound) {
    RunRound(inputs, seed, done, std::min(JobsOfRound, jobs - done));
    ReportHoldings(std::min(jobs, done + JobsOfRound));
  }
  return 0;
}
