#pragma once

// A second evaluation of character references: a buffer of 16-bit characters with a zero at its
// end that is edited in place, step by step, and no code of the library's.

#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace rastrel::test {

/// The names of HTML 4 by the ranges of the standard, and apos; omicron is a semicolon.
inline const std::map<std::wstring, int>& LiteralCharacterNames() {
  static const std::map<std::wstring, int> names = [] {
    std::map<std::wstring, int> all;
    // Names in a row are characters in a row; "-" leaves one out, a number goes on there.
    std::wistringstream text(
        L"160 nbsp iexcl cent pound curren yen brvbar sect uml copy ordf laquo not shy reg macr "
        L"deg plusmn sup2 sup3 acute micro para middot cedil sup1 ordm raquo frac14 frac12 frac34 "
        L"iquest Agrave Aacute Acirc Atilde Auml Aring AElig Ccedil Egrave Eacute Ecirc Euml "
        L"Igrave Iacute Icirc Iuml ETH Ntilde Ograve Oacute Ocirc Otilde Ouml times Oslash Ugrave "
        L"Uacute Ucirc Uuml Yacute THORN szlig agrave aacute acirc atilde auml aring aelig ccedil "
        L"egrave eacute ecirc euml igrave iacute icirc iuml eth ntilde ograve oacute ocirc otilde "
        L"ouml divide oslash ugrave uacute ucirc uuml yacute thorn yuml "
        L"402 fnof 913 Alpha Beta Gamma Delta Epsilon Zeta Eta Theta Iota Kappa Lambda Mu Nu Xi "
        L"Omicron Pi Rho - Sigma Tau Upsilon Phi Chi Psi Omega 945 alpha beta gamma delta epsilon "
        L"zeta eta theta iota kappa lambda mu nu xi - pi rho sigmaf sigma tau upsilon phi chi psi "
        L"omega 977 thetasym upsih 982 piv 8226 bull 8230 hellip 8242 prime Prime 8254 oline 8260 "
        L"frasl 8472 weierp 8465 image 8476 real 8482 trade 8501 alefsym 8592 larr uarr rarr darr "
        L"harr 8629 crarr 8656 lArr uArr rArr dArr hArr 8704 forall - part exist - empty - nabla "
        L"isin notin - ni 8719 prod - sum minus 8727 lowast 8730 radic 8733 prop infin 8736 ang "
        L"8743 and or cap cup int 8756 there4 8764 sim 8773 cong 8776 asymp 8800 ne equiv 8804 le "
        L"ge 8834 sub sup nsub - sube supe 8853 oplus - otimes 8869 perp 8901 sdot 8968 lceil "
        L"rceil "
        L"lfloor rfloor 9001 lang rang 9674 loz 9824 spades 9827 clubs 9829 hearts diams "
        L"34 quot 38 amp apos 60 lt 62 gt 338 OElig oelig 352 Scaron scaron 376 Yuml 710 circ 732 "
        L"tilde 8194 ensp emsp 8201 thinsp 8204 zwnj zwj lrm rlm 8211 ndash mdash 8216 lsquo rsquo "
        L"sbquo 8220 ldquo rdquo bdquo 8224 dagger Dagger 8240 permil 8249 lsaquo rsaquo 8364 euro "
        L"59 omicron");
    int next = 0;
    for (std::wstring word; text >> word; ++next) {
      if (word.front() >= L'0' && word.front() <= L'9')
        next = std::stoi(word) - 1;
      else if (word != L"-")
        all[word] = next;
    }
    return all;
  }();
  return names;
}

/// The byte of a character in code page 1252, or -1 if the page lacks it.
inline int LiteralByteOf1252(int character) {
  static constexpr int From0x80[32] = {
      0x20AC, 0x81,   0x201A, 0x192,  0x201E, 0x2026, 0x2020, 0x2021, 0x2C6,  0x2030, 0x160,
      0x2039, 0x152,  0x8D,   0x17D,  0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
      0x2013, 0x2014, 0x2DC,  0x2122, 0x161,  0x203A, 0x153,  0x9D,   0x17E,  0x178};
  if (character < 0x80 || (character >= 0xA0 && character <= 0xFF)) return character;
  for (int place = 0; place < 32; ++place)
    if (From0x80[place] == character) return 0x80 + place;
  return -1;
}

struct LiteralReplaced {
  std::wstring text;
  bool lost = false;
};

inline LiteralReplaced LiteralReplacement(const std::wstring& text, bool zml) {
  std::vector<wchar_t> buffer(text.begin(), text.end());
  buffer.push_back(0);
  bool lost = false;
  int lastWord = -1;
  const auto through1252 = [&](int character) {
    const int byte = LiteralByteOf1252(character);
    if (byte >= 0) return byte;
    lost = true;
    return static_cast<int>('?');
  };
  std::size_t from = 0;
  while (true) {
    while (buffer[from] != 0 && buffer[from] != L'&') ++from;
    if (buffer[from] == 0) break;
    const std::size_t start = from;
    std::size_t end = start;
    while (buffer[end] != 0 && buffer[end] != L';') ++end;
    from = start + 1;
    if (buffer[end] == 0) continue;
    const std::wstring between(buffer.begin() + static_cast<std::ptrdiff_t>(start) + 1,
                               buffer.begin() + static_cast<std::ptrdiff_t>(end));
    int stored = 0;
    if (between.empty() || between[0] != L'#') {
      if (between.size() > 9) continue;
      const auto named = LiteralCharacterNames().find(between);
      if (named == LiteralCharacterNames().end()) continue;
      stored = named->second;
      if (zml) {
        stored = through1252(stored);
        if (stored > 127) stored = 0xFF00 + stored;  // a negative byte as 16 bits
      }
    } else if (between.size() > 1 && (between[1] == L'x' || between[1] == L'X')) {
      if (between.size() != 4 && between.size() != 6) break;
      for (std::size_t place = 2; place < between.size(); ++place) {
        const wchar_t digit = between[place];
        int value = 0;
        if (digit >= L'0' && digit <= L'9') value = digit - L'0';
        if (digit >= L'a' && digit <= L'f') value = digit - L'a' + 10;
        if (digit >= L'A' && digit <= L'F') value = digit - L'A' + 10;
        stored = stored * 16 + value;
      }
      if (zml) through1252(stored);
    } else if (between.size() > 1 && between[1] >= L'0' && between[1] <= L'9') {
      if (between.size() - 1 > 9) continue;
      long value = 0;
      for (std::size_t place = 1; place < between.size(); ++place) {
        if (between[place] < L'0' || between[place] > L'9') break;
        value = value * 10 + (between[place] - L'0');
      }
      if (value < 32 || value == 0x7fffffff) break;
      stored = static_cast<int>(value % 65536);
      if (zml && value <= 255) lastWord = stored;
      if (zml && value > 255) {
        through1252(stored);
        if (lastWord >= 0) stored = lastWord;
      }
    } else {
      break;
    }
    buffer[start] = static_cast<wchar_t>(stored);
    buffer.erase(buffer.begin() + static_cast<std::ptrdiff_t>(start) + 1,
                 buffer.begin() + static_cast<std::ptrdiff_t>(end) + 1);
    if (stored == 0) break;
  }
  return {std::wstring(buffer.data()), lost};
}

}  // namespace rastrel::test
