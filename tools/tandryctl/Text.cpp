#include "Text.h"

#include "tools/findings/Utf8.h"

#include <QStringList>
#include <QTextBoundaryFinder>
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

/// Whether the character takes no room and joins no others, so that two different names look the same. The joiners
/// U+200C and U+200D change how letters and emoji look.
bool IsInvisible(uint character)
{
    return character == 0x00ad || character == 0x200b || (character >= 0x2060 && character <= 0x2064) ||
           character == 0xfeff;
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
        return !IsDirectionMark(character) && !IsInvisible(character);
    }
}

/// Replaces each character that is not printable, or is one of `special`, by what `escape` returns for it.
template <class Escape>
QString Replaced(QString const& text, char const* special, Escape const& escape)
{
    auto const isKept = [&](QChar unit) {
        return IsPrintable(unit.unicode()) && !QLatin1String(special).contains(unit);
    };
    if (std::all_of(text.begin(), text.end(), isKept))
        return text;

    QString replaced;
    for (int i = 0; i < text.size(); ++i) {
        QChar const unit = text.at(i);
        if (unit.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
            replaced += unit;
            replaced += text.at(++i);
        }
        else {
            replaced += isKept(unit) ? QString(unit) : escape(unit);
        }
    }
    return replaced;
}

QString NumberIn(int base, int digits, uint number)
{
    return QStringLiteral("%1").arg(number, digits, base, QLatin1Char('0'));
}

QString Escape(QChar unit)
{
    switch (unit.unicode()) {
    case '\\':
        return QStringLiteral("\\\\");
    case '\n':
        return QStringLiteral("\\n");
    case '\r':
        return QStringLiteral("\\r");
    case '\t':
        return QStringLiteral("\\t");
    default:
        return unit.unicode() < 0x100 ? QStringLiteral("\\x") + NumberIn(16, 2, unit.unicode())
                                      : QStringLiteral("\\u") + NumberIn(16, 4, unit.unicode());
    }
}

/// Returns the text as its characters: what a reader takes for one, with all combining marks.
QStringList CharactersOf(QString const& text)
{
    QStringList characters;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    int begin = 0;
    for (int end = finder.toNextBoundary(); end != -1; end = finder.toNextBoundary()) {
        characters.append(text.mid(begin, end - begin));
        begin = end;
    }
    return characters;
}

bool IsComposed(QString const& text)
{
    constexpr ushort firstCombiningMark = 0x300; // all characters before it are composed
    return std::all_of(text.begin(), text.end(), [](QChar unit) { return unit.unicode() < firstCombiningMark; }) ||
           text.normalized(QString::NormalizationForm_C) == text;
}

/// Replaces by escapes what is not ASCII in the characters that are not in composed form.
QString WithEscapedDecompositions(QString const& text)
{
    if (IsComposed(text))
        return text;
    QString replaced;
    for (QString const& character : CharactersOf(text)) {
        bool const isKept = IsComposed(character);
        for (QChar const unit : character)
            replaced += isKept || unit.unicode() < 0x80 ? QString(unit) : Escape(unit);
    }
    return replaced;
}

/// Returns bytes as escapes of a $'...' word. Octal ones have three digits in every shell.
QString OctalEscapes(QByteArray const& bytes)
{
    QString escapes;
    for (char const byte : bytes)
        escapes += QLatin1Char('\\') + NumberIn(8, 3, static_cast<unsigned char>(byte));
    return escapes;
}

/// Returns what stands in a $'...' word for the text.
QString InDollarQuotes(QString const& text)
{
    return Replaced(text, "'\\", [](QChar unit) -> QString {
        if (unit == QLatin1Char('\''))
            return QStringLiteral("\\'");
        QString const escape = Escape(unit);
        bool const isShort = escape.size() == 2;
        return isShort || unit.isSurrogate() ? escape : OctalEscapes(QString(unit).toUtf8());
    });
}

/// Returns the character that begins there, or null if its bytes are not valid UTF-8.
QString CharacterAt(QByteArray const& bytes, int at)
{
    constexpr int mostBytes = 4;
    for (int length = 1; length <= mostBytes; ++length) {
        if (std::optional<QString> const character = DecodeUtf8(bytes.mid(at, length)))
            return *character;
    }
    return {};
}

} // namespace

QString Printable(QString const& text)
{
    return WithEscapedDecompositions(Replaced(text, "\\", Escape));
}

QString OneLine(QString const& text)
{
    return Replaced(text, "", Escape);
}

QString Quoted(QString const& text)
{
    if (OneLine(text) != text)
        return QStringLiteral("$'") + InDollarQuotes(text) + QLatin1Char('\'');
    return QLatin1Char('\'') + QString(text).replace(QLatin1Char('\''), QLatin1String("'\\''")) + QLatin1Char('\'');
}

QString QuotedBytes(QByteArray const& bytes)
{
    if (std::optional<QString> const text = DecodeUtf8(bytes))
        return Quoted(*text);

    QString word = QStringLiteral("$'");
    for (int at = 0; at < bytes.size();) {
        QString const character = CharacterAt(bytes, at);
        word += character.isNull() ? OctalEscapes(bytes.mid(at, 1)) : InDollarQuotes(character);
        at += character.isNull() ? 1 : character.toUtf8().size();
    }
    return word + QLatin1Char('\'');
}

int DisplayWidth(QString const& text)
{
    auto const isOneColumn = [](QChar unit) { return unit.unicode() >= ' ' && unit.unicode() < 0x7f; };
    if (std::all_of(text.begin(), text.end(), isOneColumn))
        return text.size();
    int width = 0;
    for (uint const character : text.toUcs4()) {
        int const columns = ::wcwidth(static_cast<wchar_t>(character));
        width += columns < 0 ? 1 : columns; // -1 if the locale does not know the character
    }
    return width;
}

QString Shortened(QString const& text, int width)
{
    if (DisplayWidth(text) <= width)
        return text;
    QStringList const characters = CharactersOf(text);
    auto const take = [](auto begin, auto end, int most) {
        int taken = 0;
        int columns = 0;
        for (auto character = begin; character != end; ++character, ++taken) {
            columns += DisplayWidth(*character);
            if (columns > most)
                break;
        }
        return taken;
    };
    int const atTheEnd = width / 2;
    int const atTheBegin = width - 1 - atTheEnd;
    return QStringList(characters.mid(0, take(characters.begin(), characters.end(), atTheBegin))).join(QString()) +
           QStringLiteral("…") +
           QStringList(characters.mid(characters.size() - take(characters.rbegin(), characters.rend(), atTheEnd)))
               .join(QString());
}

QString WithoutTrailingBlanks(QString text)
{
    int size = text.size();
    while (size > 0 && text.at(size - 1) == QLatin1Char(' '))
        --size;
    text.truncate(size);
    return text;
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
    return tandry::findings::DecodeUtf8(bytes);
}

} // namespace tandryctl
