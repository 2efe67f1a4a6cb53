#include "config/WrittenDocument.h"

#include <QDomImplementation>

#include <cstring>
#include <string_view>

namespace sync::config {

namespace {

bool BeginsName(ushort unit)
{
    return (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z') || unit == '_' || unit == ':';
}

bool BelongsToName(ushort unit)
{
    return BeginsName(unit) || (unit >= '0' && unit <= '9') || unit == '-' || unit == '.';
}

/// How many units the character of XML takes that begins here; 0 if none does. Line feeds and tabs are the caller's,
/// and a carriage return is none, as XML has readers make a line feed of it. A program may have Qt's documents drop
/// invalid characters, which to those of most Qts are all that take two units.
int UnitsOfCharacter(ushort const* at, ushort const* end)
{
    if (*at < 0x20 || *at > 0xFFFD)
        return 0;
    if (!QChar::isSurrogate(*at))
        return 1;
    bool const isPair = QChar::isHighSurrogate(*at) && end - at > 1 && QChar::isLowSurrogate(at[1]);
    return isPair && QDomImplementation::invalidDataPolicy() == QDomImplementation::AcceptInvalidChars ? 2 : 0;
}

QString ToText(ushort const* begin, ushort const* end)
{
    return QString(reinterpret_cast<QChar const*>(begin), static_cast<int>(end - begin));
}

struct Reference
{
    std::string_view text;
    char16_t character;
};

/// The references that the writer puts for these characters into the value of an attribute. It writes ">" as it is
/// unless "]]" precedes.
constexpr Reference References[] = {
    {"&amp;", u'&'},
    {"&lt;", u'<'},
    {"&quot;", u'"'},
    {"&gt;", u'>'},
    {"&#xa;", u'\n'},
    {"&#xd;", u'\r'},
    {"&#x9;", u'\t'},
};

} // namespace

bool WrittenDocument::Take(QLatin1String piece)
{
    if (_end - _at < piece.size())
        return false;
    ushort const* at = _at;
    for (char const character : piece) {
        if (*at++ != static_cast<uchar>(character))
            return false;
    }
    _at = at;
    return true;
}

bool WrittenDocument::Take(QStringView piece)
{
    if (_end - _at < piece.size() ||
        std::memcmp(_at, piece.data(), static_cast<std::size_t>(piece.size()) * sizeof(ushort)) != 0)
        return false;
    _at += piece.size();
    return true;
}

bool WrittenDocument::TakeName(QStringView& name)
{
    if (isAtEnd() || !BeginsName(*_at))
        return false;
    ushort const* const begin = _at;
    while (!isAtEnd() && BelongsToName(*_at))
        ++_at;
    name = QStringView(begin, _at);
    return true;
}

bool WrittenDocument::TakeSection(QString& value)
{
    ushort const* const begin = _at;
    while (!isAtEnd()) {
        if (*_at == ']' && Take(QLatin1String("]]>"))) {
            value = ToText(begin, _at - 3);
            return true;
        }
        int const units = *_at == '\n' || *_at == '\t' ? 1 : UnitsOfCharacter(_at, _end);
        if (units == 0)
            return false;
        _at += units;
    }
    return false;
}

bool WrittenDocument::TakeAttributeValue(QString& value)
{
    value = QLatin1String("");
    ushort const* unescaped = _at;
    while (!isAtEnd()) {
        if (*_at == '"') {
            value.append(ToText(unescaped, _at));
            ++_at;
            return true;
        }
        if (*_at == '&') {
            value.append(ToText(unescaped, _at));
            if (!TakeReference(value))
                return false;
            unescaped = _at;
            continue;
        }
        int const units = UnitsOfCharacter(_at, _end);
        if (units == 0 || *_at == '<' || (*_at == '>' && isBehindBrackets()))
            return false;
        _at += units;
    }
    return false;
}

bool WrittenDocument::TakeReference(QString& value)
{
    for (Reference const& reference : References) {
        if (reference.character == u'>' && !isBehindBrackets())
            continue;
        if (Take(QLatin1String(reference.text.data(), static_cast<int>(reference.text.size())))) {
            value.append(QChar(reference.character));
            return true;
        }
    }
    return false;
}

bool WrittenDocument::isBehindBrackets() const
{
    return _at - reinterpret_cast<ushort const*>(_text.constData()) >= 2 && _at[-1] == ']' && _at[-2] == ']';
}

} // namespace sync::config
