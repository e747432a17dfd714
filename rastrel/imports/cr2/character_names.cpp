#include "rastrel/imports/cr2/character_names.h"

#include <array>
#include <unordered_map>

namespace rastrel::imports {
namespace {

struct CharacterName {
  std::wstring_view name;
  wchar_t character;
};

// In the order of the standard: Latin 1; symbols and Greek; markup and typography.
// clang-format off
constexpr std::array<CharacterName, 253> CharacterNames{{
    {L"nbsp", 160}, {L"iexcl", 161}, {L"cent", 162}, {L"pound", 163}, {L"curren", 164},
    {L"yen", 165}, {L"brvbar", 166}, {L"sect", 167}, {L"uml", 168}, {L"copy", 169}, {L"ordf", 170},
    {L"laquo", 171}, {L"not", 172}, {L"shy", 173}, {L"reg", 174}, {L"macr", 175}, {L"deg", 176},
    {L"plusmn", 177}, {L"sup2", 178}, {L"sup3", 179}, {L"acute", 180}, {L"micro", 181},
    {L"para", 182}, {L"middot", 183}, {L"cedil", 184}, {L"sup1", 185}, {L"ordm", 186},
    {L"raquo", 187}, {L"frac14", 188}, {L"frac12", 189}, {L"frac34", 190}, {L"iquest", 191},
    {L"Agrave", 192}, {L"Aacute", 193}, {L"Acirc", 194}, {L"Atilde", 195}, {L"Auml", 196},
    {L"Aring", 197}, {L"AElig", 198}, {L"Ccedil", 199}, {L"Egrave", 200}, {L"Eacute", 201},
    {L"Ecirc", 202}, {L"Euml", 203}, {L"Igrave", 204}, {L"Iacute", 205}, {L"Icirc", 206},
    {L"Iuml", 207}, {L"ETH", 208}, {L"Ntilde", 209}, {L"Ograve", 210}, {L"Oacute", 211},
    {L"Ocirc", 212}, {L"Otilde", 213}, {L"Ouml", 214}, {L"times", 215}, {L"Oslash", 216},
    {L"Ugrave", 217}, {L"Uacute", 218}, {L"Ucirc", 219}, {L"Uuml", 220}, {L"Yacute", 221},
    {L"THORN", 222}, {L"szlig", 223}, {L"agrave", 224}, {L"aacute", 225}, {L"acirc", 226},
    {L"atilde", 227}, {L"auml", 228}, {L"aring", 229}, {L"aelig", 230}, {L"ccedil", 231},
    {L"egrave", 232}, {L"eacute", 233}, {L"ecirc", 234}, {L"euml", 235}, {L"igrave", 236},
    {L"iacute", 237}, {L"icirc", 238}, {L"iuml", 239}, {L"eth", 240}, {L"ntilde", 241},
    {L"ograve", 242}, {L"oacute", 243}, {L"ocirc", 244}, {L"otilde", 245}, {L"ouml", 246},
    {L"divide", 247}, {L"oslash", 248}, {L"ugrave", 249}, {L"uacute", 250}, {L"ucirc", 251},
    {L"uuml", 252}, {L"yacute", 253}, {L"thorn", 254}, {L"yuml", 255},
    {L"fnof", 402}, {L"Alpha", 913}, {L"Beta", 914}, {L"Gamma", 915}, {L"Delta", 916},
    {L"Epsilon", 917}, {L"Zeta", 918}, {L"Eta", 919}, {L"Theta", 920}, {L"Iota", 921},
    {L"Kappa", 922}, {L"Lambda", 923}, {L"Mu", 924}, {L"Nu", 925}, {L"Xi", 926}, {L"Omicron", 927},
    {L"Pi", 928}, {L"Rho", 929}, {L"Sigma", 931}, {L"Tau", 932}, {L"Upsilon", 933}, {L"Phi", 934},
    {L"Chi", 935}, {L"Psi", 936}, {L"Omega", 937}, {L"alpha", 945}, {L"beta", 946}, {L"gamma", 947},
    {L"delta", 948}, {L"epsilon", 949}, {L"zeta", 950}, {L"eta", 951}, {L"theta", 952},
    {L"iota", 953}, {L"kappa", 954}, {L"lambda", 955}, {L"mu", 956}, {L"nu", 957}, {L"xi", 958},
    {L"omicron", 59}, {L"pi", 960}, {L"rho", 961}, {L"sigmaf", 962}, {L"sigma", 963}, {L"tau", 964},
    {L"upsilon", 965}, {L"phi", 966}, {L"chi", 967}, {L"psi", 968}, {L"omega", 969},
    {L"thetasym", 977}, {L"upsih", 978}, {L"piv", 982}, {L"bull", 8226}, {L"hellip", 8230},
    {L"prime", 8242}, {L"Prime", 8243}, {L"oline", 8254}, {L"frasl", 8260}, {L"weierp", 8472},
    {L"image", 8465}, {L"real", 8476}, {L"trade", 8482}, {L"alefsym", 8501}, {L"larr", 8592},
    {L"uarr", 8593}, {L"rarr", 8594}, {L"darr", 8595}, {L"harr", 8596}, {L"crarr", 8629},
    {L"lArr", 8656}, {L"uArr", 8657}, {L"rArr", 8658}, {L"dArr", 8659}, {L"hArr", 8660},
    {L"forall", 8704}, {L"part", 8706}, {L"exist", 8707}, {L"empty", 8709}, {L"nabla", 8711},
    {L"isin", 8712}, {L"notin", 8713}, {L"ni", 8715}, {L"prod", 8719}, {L"sum", 8721},
    {L"minus", 8722}, {L"lowast", 8727}, {L"radic", 8730}, {L"prop", 8733}, {L"infin", 8734},
    {L"ang", 8736}, {L"and", 8743}, {L"or", 8744}, {L"cap", 8745}, {L"cup", 8746}, {L"int", 8747},
    {L"there4", 8756}, {L"sim", 8764}, {L"cong", 8773}, {L"asymp", 8776}, {L"ne", 8800},
    {L"equiv", 8801}, {L"le", 8804}, {L"ge", 8805}, {L"sub", 8834}, {L"sup", 8835}, {L"nsub", 8836},
    {L"sube", 8838}, {L"supe", 8839}, {L"oplus", 8853}, {L"otimes", 8855}, {L"perp", 8869},
    {L"sdot", 8901}, {L"lceil", 8968}, {L"rceil", 8969}, {L"lfloor", 8970}, {L"rfloor", 8971},
    {L"lang", 9001}, {L"rang", 9002}, {L"loz", 9674}, {L"spades", 9824}, {L"clubs", 9827},
    {L"hearts", 9829}, {L"diams", 9830},
    {L"quot", 34}, {L"amp", 38}, {L"apos", 39}, {L"lt", 60}, {L"gt", 62}, {L"OElig", 338},
    {L"oelig", 339}, {L"Scaron", 352}, {L"scaron", 353}, {L"Yuml", 376}, {L"circ", 710},
    {L"tilde", 732}, {L"ensp", 8194}, {L"emsp", 8195}, {L"thinsp", 8201}, {L"zwnj", 8204},
    {L"zwj", 8205}, {L"lrm", 8206}, {L"rlm", 8207}, {L"ndash", 8211}, {L"mdash", 8212},
    {L"lsquo", 8216}, {L"rsquo", 8217}, {L"sbquo", 8218}, {L"ldquo", 8220}, {L"rdquo", 8221},
    {L"bdquo", 8222}, {L"dagger", 8224}, {L"Dagger", 8225}, {L"permil", 8240}, {L"lsaquo", 8249},
    {L"rsaquo", 8250}, {L"euro", 8364},
}};
// clang-format on

std::unordered_map<std::wstring_view, wchar_t> IndexOfNames() {
  std::unordered_map<std::wstring_view, wchar_t> index;
  for (const CharacterName& known : CharacterNames) index.emplace(known.name, known.character);
  return index;
}

}  // namespace

std::optional<wchar_t> CharacterNamed(std::wstring_view name) {
  static const std::unordered_map<std::wstring_view, wchar_t> index = IndexOfNames();
  const auto found = index.find(name);
  if (found == index.end()) return std::nullopt;
  return found->second;
}

}  // namespace rastrel::imports
