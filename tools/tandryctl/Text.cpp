#include "Text.h"

#include <QStringList>
#include <QTextCodec>
#include <QVector>

#include <algorithm>
#include <cwchar>

namespace tandryctl {

namespace {

/// Whether the character changes the writing direction, which can make a name look like another.
bool IsDirectionMark(uint character)
{
    return character == 0x061c || (character >= 0x200e && character <= 0x200f) ||
           (character >= 0x202a && character <= 0x202e) || (character >= 0x2066 && character <= 0x2069);
}

bool IsPrintable(uint character)
{
    switch (QChar::category(character)) {
    case QChar::Other_Control:
    case QChar::Other_Surrogate:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return false;
    default:
        return character != '\\' && !IsDirectionMark(character);
    }
}

QString Escape(uint character)
{
    switch (character) {
    case '\\':
        return QStringLiteral("\\\\");
    case '\n':
        return QStringLiteral("\\n");
    case '\r':
        return QStringLiteral("\\r");
    case '\t':
        return QStringLiteral("\\t");
    default:
        return character < 0x100 ? QStringLiteral("\\x%1").arg(character, 2, 16, QLatin1Char('0'))
                                 : QStringLiteral("\\u%1").arg(character, 4, 16, QLatin1Char('0'));
    }
}

} // namespace

QString Printable(QString const& text)
{
    auto const isPrintable = [](QChar unit) { return !unit.isSurrogate() && IsPrintable(unit.unicode()); };
    if (std::all_of(text.begin(), text.end(), isPrintable))
        return text;

    QString printable;
    for (int i = 0; i < text.size(); ++i) {
        QChar const unit = text.at(i);
        if (unit.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            printable += unit;
            printable += text.at(++i);
        }
        else if (IsPrintable(unit.unicode())) {
            printable += unit;
        }
        else {
            printable += Escape(unit.unicode());
        }
    }
    return printable;
}

QString Quoted(QString const& text)
{
    return QLatin1Char('\'') + Printable(text) + QLatin1Char('\'');
}

int DisplayWidth(QString const& text)
{
    int width = 0;
    for (uint const character : text.toUcs4()) {
        int const columns = ::wcwidth(static_cast<wchar_t>(character));
        width += columns < 0 ? 1 : columns; // -1 if the locale does not know the character
    }
    return width;
}

QString Counted(qint64 count, char const* singular, char const* plural)
{
    return QStringLiteral("%1 %2").arg(count).arg(QLatin1String(count == 1 ? singular : plural));
}

QString See(QString const& command)
{
    return QStringLiteral("see 'tandryctl %1'").arg(command);
}

QString See(char const* command)
{
    return See(QString(QLatin1String(command)));
}

QString JoinWithAnd(QStringList const& items)
{
    if (items.size() < 2)
        return items.join(QString());
    return items.mid(0, items.size() - 1).join(QStringLiteral(", ")) + QStringLiteral(" and ") + items.last();
}

std::optional<QString> DecodeUtf8(QByteArray const& bytes)
{
    // QString::fromUtf8 would drop a leading byte order mark and replace invalid bytes.
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    QString const text = QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    if (state.invalidChars > 0 || state.remainingChars > 0)
        return std::nullopt;
    return text;
}

} // namespace tandryctl
