#include "host/qt/shown_text.h"

namespace rastrel::qt {

namespace {

constexpr int MaxNameLength = 120;  // characters

bool IsShown(const QChar& letter) {
  switch (letter.category()) {
    case QChar::Other_Control:
    case QChar::Other_Format:
    case QChar::Other_NotAssigned:
    case QChar::Other_PrivateUse:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph: return false;
    default: return true;
  }
}

}  // namespace

QString FromWide(const std::wstring& text) { return QString::fromStdWString(text); }

QString WithoutMark(const wchar_t* text) {
  QString shown = QString::fromWCharArray(text);
  const QString mark = QStringLiteral("(*v*)");
  return shown.startsWith(mark) ? shown.mid(mark.size()) : shown;
}

QString SpokenName(const QString& text) {
  QString name;
  for (qsizetype at = 0; at < text.size(); ++at) {
    if (text[at] == QLatin1Char('&') && at + 1 < text.size()) ++at;
    name += text[at];
  }
  if (name.endsWith(QLatin1Char(':'))) name.chop(1);
  return name;
}

QString ShownName(const std::wstring& name) {
  QString shown = FromWide(name);
  for (QChar& letter : shown) {
    if (!IsShown(letter)) letter = QChar::ReplacementCharacter;
  }
  if (shown.size() > MaxNameLength) shown = shown.left(MaxNameLength) + QChar(0x2026);
  return shown;
}

}  // namespace rastrel::qt
