#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "rastrel/platform/os/text.h"
#include "rastrel/platform/values/rect.h"
#include "rastrel/platform/values/spot_match.h"

namespace rastrel::test {

/// The scans of PostScript comments, done step by step as the contract has them: an ifstream, a
/// seek and a read of 4,096 bytes for every line, one buffer that is never cleared. Slow, and made
/// to be compared with.
class LiteralPsScans {
 public:
  explicit LiteralPsScans(std::string nativePath) : m_Path(std::move(nativePath)) {}

  bool FindEPSStart(long long& start, long long& length) {
    start = length = 0;
    std::ifstream in(m_Path, std::ios::binary);
    if (!in) return false;
    unsigned char head[20] = {};
    in.read(reinterpret_cast<char*>(head), 20);
    if (in.bad()) return false;
    in.clear();
    if (head[0] == '%' && head[1] == '!') {
      start = 0;
    } else if (head[0] == 0xC5 && head[1] == 0xD0 && head[2] == 0xD3 && head[3] == 0xC6) {
      start = head[4] + 256LL * head[5] + 65536LL * head[6] + 16777216LL * head[7];
      length = head[8] + 256LL * head[9] + 65536LL * head[10] + 16777216LL * head[11];
    } else if (!SearchMark(in, start)) {
      start = 0;
      return false;
    }
    if (length == 0) {
      in.clear();
      in.seekg(0, std::ios::end);
      long long position = in.tellg();
      while (position > 0) {
        --position;
        in.seekg(position);
        const int byte = in.get();
        if ((byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z')) break;
      }
      length = position + 1 - start;
    }
    return true;
  }

  bool IsEpsFile() { return FirstLineHolds("epsf"); }
  bool IsPostscriptFile() { return FirstLineHolds("%!ps-adobe"); }

  bool GetBounds(CRect& rect) {
    rect = CRect();
    std::ifstream in;
    if (!OpenAtStart(in)) return false;
    char line[4097] = {};
    for (;;) {
      EPSGetLine(in, line);
      if (Begins(line, "%%BoundingBox:")) {
        if (std::strpbrk(line, "()") == nullptr) {
          if (in.eof()) return false;
          ReadBox(line, rect);
          return true;
        }
      }
      if (in.eof()) return false;
    }
  }

  bool GetBoundsAndStrings(CRect& rect, std::vector<CString>& names) {
    rect = CRect();
    std::ifstream in;
    if (!OpenAtStart(in)) return false;
    char line[4097] = {};
    bool colors = false;
    bool bounds = false;
    for (;;) {
      EPSGetLine(in, line);
      bool e = in.eof();
      if (std::strncmp(line, "%BeginPhotoshop", 14) == 0) break;
      if (Begins(line, "%%DocumentCustomColors:")) {
        colors = true;
        if (!Deferred(line)) {
          std::size_t index = std::strlen("%%DocumentCustomColors:");
          for (;;) {
            index = TakeNames(line, index, names);
            EPSGetLine(in, line);
            e = in.eof();
            if (e || !Begins(line, "%%+")) break;
            index = 3;
          }
        }
      }
      if (e) break;
      if (Begins(line, "%%BoundingBox:") && !Deferred(line)) {
        ReadBox(line, rect);
        bounds = true;
      }
      if (bounds && colors) break;
    }
    return true;
  }

  bool LoadSpotMatchItems(CSpotMatchList* list) { return LoadSpots(list, nullptr); }
  bool LoadSpotItemsAndBounds(CSpotMatchList* list, BOUNDS& bounds) {
    return LoadSpots(list, &bounds);
  }

  static void EPSGetLine(std::ifstream& in, char* line) {
    const long long p = in.tellg();
    in.read(line, 4096);
    const long long c = in.gcount();
    line[4096] = 0;
    const std::size_t L = std::strcspn(line, "\r\n");
    line[L] = 0;
    long long a = static_cast<long long>(L) + 1;
    // After a cut line comes the byte after the buffer, which is never looked at.
    if (L + 1 <= 4096 && (line[L + 1] == '\r' || line[L + 1] == '\n'))
      a = static_cast<long long>(L) + 2;
    if (!in.eof()) {
      in.seekg(p + a);
    } else if (p + a < p + c) {
      in.clear();
      in.seekg(p + a);
    }
  }

  static int GetEPSint(const char* text, int& value) {
    const char* token = text;
    while (*token == ' ' || *token == '\t' || *token == '{') ++token;
    const char* end = token;
    if (*end == '+' || *end == '-') ++end;
    end += std::strspn(end, "1234567890.");
    if (end == token) return 0;
    const std::string digits(token, end);
    const long long number = std::strtoll(digits.c_str(), nullptr, 10);
    value = number > INT32_MAX   ? INT32_MAX
            : number < INT32_MIN ? INT32_MIN
                                 : static_cast<int>(number);
    return static_cast<int>(end - text);
  }

  static int GetEPStext(char* text, CString& out) {
    out.clear();
    char* const lineEnd = text + std::strcspn(text, "\r\n");
    const char saved = *lineEnd;
    *lineEnd = 0;
    int result = 0;
    const int skipped = static_cast<int>(std::strspn(text, " \t"));
    const int all = static_cast<int>(std::strlen(text));
    if (text[skipped] != '(') {
      const int word = static_cast<int>(std::strcspn(text + skipped, " \t"));
      out = os::WideFromAnsi(std::string(text + skipped, static_cast<std::size_t>(word)));
      result = skipped + word;
    } else {
      int depth = 1;
      int position = skipped + 1;
      while (depth > 0) {
        ++position;
        if (position > all) position = all;
        const char* const open = std::strchr(text + position, '(');
        const char* const close = std::strchr(text + position, ')');
        const int openAt = open == nullptr ? all : static_cast<int>(open - text);
        const int closeAt = close == nullptr ? all : static_cast<int>(close - text);
        depth += openAt < closeAt ? 1 : -1;
        position = openAt < closeAt ? openAt : closeAt;
      }
      out = os::WideFromAnsi(
          std::string(text + skipped + 1, static_cast<std::size_t>(position - skipped - 1)));
      ResolveEscapes(out);
      result = position + 1 > all ? all : position + 1;
    }
    *lineEnd = saved;
    return result;
  }

 private:
  static bool Begins(const char* line, const char* word) {
    return std::strncmp(line, word, std::strlen(word)) == 0;
  }

  static bool Deferred(const char* line) {
    const char* const first = std::strpbrk(line, "()");
    return first != nullptr && Begins(first, "(atend)");
  }

  static bool SearchMark(std::ifstream& in, long long& start) {
    in.seekg(0);
    for (;;) {
      const int byte = in.get();
      if (byte == EOF) return false;
      if (byte != '%') continue;
      char group[5] = {};
      in.read(group + 1, 4);
      if (in.gcount() < 4) return false;
      group[0] = '%';
      if (std::memcmp(group, "%!PS", 4) != 0) continue;
      start = static_cast<long long>(in.tellg()) - 5;
      return true;
    }
  }

  bool OpenAtStart(std::ifstream& in) {
    long long start = 0;
    long long length = 0;
    if (!FindEPSStart(start, length)) return false;
    in.open(m_Path, std::ios::binary);
    if (!in) return false;
    in.seekg(start);
    return true;
  }

  bool FirstLineHolds(const char* word) {
    std::ifstream in;
    if (!OpenAtStart(in)) return false;
    char line[4097] = {};
    EPSGetLine(in, line);
    for (char* byte = line; *byte != 0; ++byte)
      if (*byte >= 'A' && *byte <= 'Z') *byte = static_cast<char>(*byte + 32);
    return std::strstr(line, word) != nullptr;
  }

  static void ReadBox(const char* line, CRect& rect) {
    const char* text = line + std::strlen("%%BoundingBox:");
    text += GetEPSint(text, rect.left);
    text += GetEPSint(text, rect.bottom);
    text += GetEPSint(text, rect.right);
    GetEPSint(text, rect.top);
  }

  static std::size_t TakeNames(char* line, std::size_t index, std::vector<CString>& names) {
    for (;;) {
      CString name;
      index += static_cast<std::size_t>(GetEPStext(line + index, name));
      if (name.empty()) return index;
      names.push_back(name);
    }
  }

  static void ResolveEscapes(CString& text) {
    for (std::size_t i = text.find(L'\\'); i != CString::npos; i = text.find(L'\\', i + 1)) {
      if (i + 1 < text.size() && text[i + 1] == L'\\') {
        text.erase(i, 1);
        continue;
      }
      std::string behind;
      for (const wchar_t character : text.substr(i + 1))
        behind.push_back(character < 128 ? static_cast<char>(character) : '?');
      int value = 0;
      const int consumed = GetEPSint(behind.c_str(), value);
      if (consumed == 0) continue;
      text.erase(i + 1, static_cast<std::size_t>(consumed));
      const auto extended = static_cast<std::int16_t>(static_cast<signed char>(value & 0xFF));
      text[i] = static_cast<wchar_t>(static_cast<std::uint16_t>(extended));
    }
  }

  static double Number(const CString& token) {
    // The C library also knows words and hexadecimal digits, which are no numbers here.
    const std::size_t begin = token.find_first_not_of(L" \t\n\v\f\r");
    if (begin == CString::npos) return 0;
    const std::size_t end = token.find_first_not_of(L"0123456789.eE+-", begin);
    return std::wcstod(token.substr(begin, end - begin).c_str(), nullptr);
  }

  // Whether the stream is left at a line that the caller has to look at.
  static bool NextIsContinuation(std::ifstream& in, char* line) {
    const long long remembered = in.tellg();
    EPSGetLine(in, line);
    if (in.eof()) return false;
    if (Begins(line, "%%+")) return true;
    in.seekg(remembered);
    return false;
  }

  static void ParseDocColors(std::vector<CString>& names, std::ifstream& in, char* line,
                             bool& atend) {
    if (Deferred(line)) {
      atend = true;
      return;
    }
    std::size_t index = std::strlen("%%DocumentCustomColors:");
    do {
      TakeNames(line, index, names);
      index = 3;
    } while (NextIsContinuation(in, line));
  }

  static void ParseDefinitions(CSpotMatchList& list, std::ifstream& in, char* line,
                               std::size_t index, int numbers) {
    do {
      for (;;) {
        double values[4] = {};
        CString token;
        for (int number = 0; number < numbers; ++number) {
          index += static_cast<std::size_t>(GetEPStext(line + index, token));
          values[number] = Number(token);
        }
        index += static_cast<std::size_t>(GetEPStext(line + index, token));
        if (token.empty()) break;
        CVKColor color;
        if (numbers == 4) {
          color.SetColor(values[0], values[1], values[2], values[3], COLORSPACE_CMYK);
        } else {
          color.SetColor(values[0] * 255.0, values[1] * 255.0, values[2] * 255.0, COLORSPACE_RGB);
        }
        CSpotMatchItem item;
        item.SetName(token);
        item.SetColor(color);
        item.SetOriginalColor(color);
        list.push_back(item);
      }
      index = 3;
    } while (NextIsContinuation(in, line));
  }

  void Jump(std::ifstream& in, bool& jumped) const {
    struct stat state {};
    if (::stat(m_Path.c_str(), &state) != 0) return;
    const auto size = static_cast<std::int32_t>(state.st_size & 0xFFFFFFFF);
    const long long difference = static_cast<long long>(size) - 0x100000;
    jumped = true;
    if (difference > 0 && !in.eof() && difference > static_cast<long long>(in.tellg()))
      in.seekg(difference);
  }

  bool LoadSpots(CSpotMatchList* list, BOUNDS* bounds) {
    std::ifstream in;
    if (!OpenAtStart(in)) return false;
    std::vector<CString> names;
    CSpotMatchList cmyk;
    CSpotMatchList rgb;
    bool atend = false;
    bool jumped = false;
    bool boundsFound = false;
    char line[4097] = {};
    for (;;) {
      EPSGetLine(in, line);
      if (in.eof()) break;
      bool stop = false;
      if (Begins(line, "%%DocumentCustomColors:")) {
        ParseDocColors(names, in, line, atend);
      } else if (Begins(line, "%%CMYKCustomColor:")) {
        ParseDefinitions(cmyk, in, line, std::strlen("%%CMYKCustomColor:"), 4);
      } else if (Begins(line, "%%RGBCustomColor:")) {
        ParseDefinitions(rgb, in, line, std::strlen("%%RGBCustomColor:"), 3);
      } else if (Begins(line, "%%EOF")) {
        stop = true;
      } else if (bounds != nullptr && Begins(line, "%%BoundingBox:") && !Deferred(line)) {
        int shared = 0;
        const char* text = line + std::strlen("%%BoundingBox:");
        for (double* field : {&bounds->xmin, &bounds->ymin, &bounds->xmax, &bounds->ymax}) {
          text += GetEPSint(text, shared);
          *field = static_cast<double>(static_cast<float>(shared * 2.54 / 72.0));
        }
        boundsFound = true;
      }
      if (!atend) {
        if (line[0] == 0) {
          if (bounds != nullptr) stop = true;
        } else if (line[0] != '%') {
          stop = true;
        } else if (Begins(line, "%%EndComments")) {
          break;
        }
      } else if (!jumped) {
        if (line[0] != '%' || Begins(line, "%%EndComments")) Jump(in, jumped);
      }
      if (stop) break;
    }
    for (const CSpotMatchList* definitions : {&cmyk, &rgb})
      for (const CSpotMatchItem& item : *definitions)
        for (const CString& name : names)
          if (name == item.GetName()) {
            list->push_back(item);
            break;
          }
    return bounds != nullptr ? boundsFound : true;
  }

  std::string m_Path;
};

}  // namespace rastrel::test
