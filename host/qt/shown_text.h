#pragma once

#include <QString>
#include <string>

namespace rastrel::qt {

/// The toolkit's text.
[[nodiscard]] QString FromWide(const std::wstring& text);
/// A text of a dialog's resource, which has its translation mark until its translation comes.
[[nodiscard]] QString WithoutMark(const wchar_t* text);
/// A text without the ampersand in front of its key letter, and without a colon at its end: the
/// name that a screen reader says.
[[nodiscard]] QString SpokenName(const QString& text);
/// A name out of a foreign file, on one line: characters that draw nothing or turn the writing
/// around are replaced, and a long name is cut short. Not for reading back.
[[nodiscard]] QString ShownName(const std::wstring& name);

}  // namespace rastrel::qt
