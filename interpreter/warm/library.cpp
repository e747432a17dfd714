#include "interpreter/warm/library.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <string_view>

#include "rastrel/platform/os/hex.h"
#include "rastrel/platform/os/shared_library.h"

namespace rastrel::interpreter::warm {
namespace {

// Constants of the library's interface, which its versions keep.
constexpr const char* Name = "libgs.so.10";
constexpr int Utf8 = 1;                // GS_ARG_ENCODING_UTF8
constexpr int PermitReading = 0;       // GS_PERMIT_FILE_READING
constexpr int Fatal = -100;            // gs_error_Fatal
constexpr int Quit = -101;             // gs_error_Quit
constexpr int Info = -110;             // gs_error_Info
constexpr int OtherErrorStatus = 255;  // of the program

struct Revision {
  const char* product;
  const char* copyright;
  long number;
  long date;
};

// The output of a text of this program's own, as long as it is not known whether it has failed.
struct Held {
  std::string output;
  std::string messages;
};
Held* s_Held = nullptr;

int WriteTo(int descriptor, const char* bytes, int count) {
  if (s_Held != nullptr) {
    std::string& text = descriptor == STDOUT_FILENO ? s_Held->output : s_Held->messages;
    text.append(bytes, static_cast<std::size_t>(count));
    return count;
  }
  int written = 0;
  while (written < count) {
    const ssize_t now =
        write(descriptor, bytes + written, static_cast<std::size_t>(count - written));
    if (now < 0 && errno == EINTR) continue;
    if (now <= 0) return count;  // nobody reads it; the program goes on as well
    written += static_cast<int>(now);
  }
  return count;
}

void WriteAll(int descriptor, const std::string& text) {
  WriteTo(descriptor, text.data(), static_cast<int>(text.size()));
}

int WriteOutput(void*, const char* bytes, int count) {
  return WriteTo(STDOUT_FILENO, bytes, count);
}
int WriteError(void*, const char* bytes, int count) { return WriteTo(STDERR_FILENO, bytes, count); }
int ReadInput(void*, char* bytes, int count) {
  ssize_t taken = 0;
  do {
    taken = read(STDIN_FILENO, bytes, static_cast<std::size_t>(count));
  } while (taken < 0 && errno == EINTR);
  return static_cast<int>(std::max<ssize_t>(taken, 0));
}

// A PostScript string of any bytes.
std::string Hex(std::string_view bytes) { return "<" + os::HexFromBytes(bytes) + ">"; }

// One of each kind. All is undone, and the page is clean again.
constexpr const char* Painting =
    "save "
    "/Helvetica findfont 10 scalefont setfont 9 9 moveto (abc) show "
    "0.5 0.2 0.3 setrgbcolor 0 0 1 1 rectfill 0.3 setgray 0 0 1 1 rectfill "
    "0 0.1 0.2 0.3 setcmykcolor 0 0 1 1 rectfill "
    "0 0 moveto 9 9 lineto stroke "
    "1 1 8 [1 0 0 1 0 0] {(abc)} false 3 colorimage "
    "erasepage restore";

// Devices whose pages are whole as they are put out, so that nothing is left for the end. The end
// itself takes several milliseconds, since it frees all memory bit by bit.
constexpr std::array<std::string_view, 5> QuietDevices{"bbox", "ppmraw", "pgmraw", "png16m",
                                                       "nullpage"};

}  // namespace

Expected<Library> Library::Load() {
  const auto library = os::SharedLibrary::Open(Name);
  if (!library) return library.Error();
  Functions functions{};
  const bool bound = library->Bind(functions.newInstance, "gsapi_new_instance") &&
                     library->Bind(functions.setStdio, "gsapi_set_stdio") &&
                     library->Bind(functions.setArgEncoding, "gsapi_set_arg_encoding") &&
                     library->Bind(functions.initWithArgs, "gsapi_init_with_args") &&
                     library->Bind(functions.runString, "gsapi_run_string") &&
                     library->Bind(functions.addControlPath, "gsapi_add_control_path") &&
                     library->Bind(functions.removeControlPath, "gsapi_remove_control_path") &&
                     library->Bind(functions.exit, "gsapi_exit") &&
                     library->Bind(functions.revision, "gsapi_revision");
  if (!bound) return FailureOf(std::string(Name) + " lacks a function of its interface");
  return Library(functions);
}

Expected<void> Library::Start(const std::vector<std::string>& arguments) {
  if (m_Functions.newInstance(&m_Instance, nullptr) < 0) {
    return FailureOf("there can be no interpreter");
  }
  m_Functions.setStdio(m_Instance, ReadInput, WriteOutput, WriteError);
  m_Functions.setArgEncoding(m_Instance, Utf8);
  std::vector<char*> pointers;
  for (const std::string& argument : arguments) {
    pointers.push_back(const_cast<char*>(argument.c_str()));
  }
  const int code =
      m_Functions.initWithArgs(m_Instance, static_cast<int>(pointers.size()), pointers.data());
  if (code == 0) return {};
  return FailureOf("the interpreter does not start: " + std::to_string(code));
}

Expected<void> Library::PaintOnce() {
  const int code = RunString(Painting);
  if (code == 0) return {};
  return FailureOf("the interpreter does not paint: " + std::to_string(code));
}

int Library::RunString(const std::string& text) {
  m_ExitCode = 0;
  return m_Functions.runString(m_Instance, text.c_str(), 0, &m_ExitCode);
}

// Flushes the job's output, as the program does after each file. A job can redefine the
// operators for it. Then nothing is printed here, and the interpreter's end does it.
bool Library::Flush() {
  Held held;
  s_Held = &held;
  const int code = RunString("{ systemdict /flush get exec } stopped pop");
  s_Held = nullptr;
  if (code != 0) return false;
  WriteAll(STDOUT_FILENO, held.output);
  WriteAll(STDERR_FILENO, held.messages);
  return true;
}

// As the program does: the file may be read for as long as it runs. After another code than 0 no
// text may be run: the interpreter would go on where the job has ended.
int Library::RunFile(const std::string& path) {
  if (const int code = m_Functions.addControlPath(m_Instance, PermitReading, path.c_str());
      code < 0) {
    return code;
  }
  if (const int code = RunString(Hex(path) + ".runfile"); code != 0) return code;
  m_IsSound = Flush() && m_IsSound;
  return m_Functions.removeControlPath(m_Instance, PermitReading, path.c_str());
}

int Library::RunArguments(const std::vector<std::string>& script) {
  bool isText = false;
  for (const std::string& argument : script) {
    if (argument == "-c" || argument == "-f") {
      isText = argument == "-c";
      continue;
    }
    const int code = isText ? RunString(Hex(argument) + ".runstring") : RunFile(argument);
    if (code != 0) return code;
  }
  return 0;
}

int Library::Run(const std::vector<std::string>& script) {
  int code = RunArguments(script);
  if (code != 0 || !m_IsSound || !Flush() || !HasQuietDevice()) {
    if (code == 0 && m_IsSound) code = RunString("systemdict /start get exec\n");
    if (code == Fatal) SayUnrecoverable();
    const int end = m_Functions.exit(m_Instance);
    if (code == 0 || code == Quit) code = end;
  }
  std::fflush(nullptr);
  if (code == 0 || code == Quit || code == Info) return 0;
  return code == Fatal ? 1 : OtherErrorStatus;
}

// A job may have set another device than it began with.
bool Library::HasQuietDevice() {
  Held held;
  s_Held = &held;
  const int code = RunString(
      "systemdict /currentpagedevice get exec /OutputDevice get 64 string cvs "
      "(%stderr) (w) file dup 3 -1 roll writestring flushfile");
  s_Held = nullptr;
  m_IsSound = code == 0;
  return std::ranges::find(QuietDevices, held.messages) != QuietDevices.end();
}

// As the program says it.
void Library::SayUnrecoverable() const {
  Revision revision{};
  m_Functions.revision(&revision, sizeof revision);
  std::array<char, 128> text{};
  constexpr long thousand = 1000;
  const long rest = revision.number % thousand;
  std::snprintf(text.data(), text.size(), "%s %ld.%02ld.%ld: Unrecoverable error, exit code %d\n",
                revision.product, revision.number / thousand, rest / 10, rest % 10, m_ExitCode);
  WriteError(nullptr, text.data(), static_cast<int>(std::string_view(text.data()).size()));
}

}  // namespace rastrel::interpreter::warm
