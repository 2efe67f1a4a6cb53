#include "tools/carry/JsonReader.h"

#include "tools/findings/Utf8.h"

#include <algorithm>
#include <limits>

namespace tandry::carry {

namespace {

constexpr int MostDepth = 3;

int HexDigit(char digit)
{
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    if (digit >= 'a' && digit <= 'f')
        return digit - 'a' + 10;
    if (digit >= 'A' && digit <= 'F')
        return digit - 'A' + 10;
    return -1;
}

class Reader
{
public:
    explicit Reader(QByteArray const& line)
        : _at(line.constData())
        , _begin(_at)
        , _end(_at + line.size())
    {}

    bool ReadLine(JsonValue& value)
    {
        _SkipBlanks();
        if (_at == _end || *_at != '{')
            return _Fail("an object is expected");
        if (!_ReadObject(value, 1))
            return false;
        _SkipBlanks();
        return _at == _end || _Fail("something stands behind the object");
    }

    JsonFault Fault() const { return {int(_at - _begin) + 1, _key, QLatin1String(_reason)}; }

private:
    bool _Fail(char const* reason)
    {
        _reason = reason;
        return false;
    }

    void _SkipBlanks()
    {
        while (_at != _end && (*_at == ' ' || *_at == '\t' || *_at == '\r' || *_at == '\n'))
            ++_at;
    }

    bool _Take(char letter)
    {
        _SkipBlanks();
        if (_at == _end || *_at != letter)
            return false;
        ++_at;
        return true;
    }

    bool _TakeWord(char const* word)
    {
        auto const length = std::ptrdiff_t(qstrlen(word));
        if (_end - _at < length || !std::equal(word, word + length, _at))
            return false;
        _at += length;
        return true;
    }

    bool _ReadValue(JsonValue& value, int depth)
    {
        _SkipBlanks();
        if (_at == _end)
            return _Fail("the line ends before the value");
        switch (*_at) {
        case '{':
            return depth <= MostDepth ? _ReadObject(value, depth) : _Fail("the objects lie too deep in each other");
        case '"':
            value.type = JsonValue::Type::Text;
            return _ReadText(value.text);
        case 'n':
            return _TakeWord("null") || _Fail("this is no value");
        case 't':
        case 'f':
            value.type = JsonValue::Type::Bool;
            value.integer = *_at == 't' ? 1 : 0;
            return _TakeWord("true") || _TakeWord("false") || _Fail("this is no value");
        default:
            value.type = JsonValue::Type::Integer;
            return _ReadInteger(value.integer);
        }
    }

    bool _ReadObject(JsonValue& value, int depth)
    {
        value.type = JsonValue::Type::Object;
        ++_at;
        if (_Take('}'))
            return true;
        do {
            _SkipBlanks();
            if (_at == _end || *_at != '"')
                return _Fail("a key is expected");
            JsonMember member;
            if (!_ReadText(member.key))
                return false;
            if (depth == 1)
                _key = member.key;
            bool const isTwice = std::any_of(value.members.begin(), value.members.end(), [&](JsonMember const& other) {
                return other.key == member.key;
            });
            if (isTwice)
                return _Fail("the key stands twice");
            if (!_Take(':'))
                return _Fail("a colon is expected");
            if (!_ReadValue(member.value, depth + 1))
                return false;
            value.members.push_back(std::move(member));
        } while (_Take(','));
        return _Take('}') || _Fail("a comma or the end of the object is expected");
    }

    bool _ReadInteger(qint64& integer)
    {
        char const* const begin = _at;
        bool const isNegative = _TakeWord("-");
        char const* const digits = _at;
        // Counted below zero, where there is one number more than above.
        constexpr qint64 least = std::numeric_limits<qint64>::min();
        for (; _at != _end && *_at >= '0' && *_at <= '9'; ++_at) {
            int const digit = *_at - '0';
            if (integer < (least + digit) / 10)
                return _Fail("the number is out of range");
            integer = integer * 10 - digit;
        }
        if (_at == digits)
            return _Fail(begin == digits ? "this is no value" : "a digit is expected");
        if (*digits == '0' && (isNegative || _at - digits > 1))
            return _Fail("the number begins with a superfluous 0 or sign");
        if (_at != _end && (*_at == '.' || *_at == 'e' || *_at == 'E'))
            return _Fail("the number is not a whole one in digits");
        if (!isNegative && integer == least)
            return _Fail("the number is out of range");
        if (!isNegative)
            integer = -integer;
        return true;
    }

    bool _ReadText(QString& text)
    {
        ++_at;
        text = QLatin1String(""); // not null
        while (true) {
            char const* const begin = _at;
            while (_at != _end && *_at != '"' && *_at != '\\' && static_cast<unsigned char>(*_at) >= 0x20)
                ++_at;
            if (!_AppendUtf8(text, begin, int(_at - begin)))
                return _Fail("the text is not valid UTF-8");
            if (_at == _end)
                return _Fail("the line ends inside a text");
            if (*_at == '"') {
                ++_at;
                return true;
            }
            if (*_at != '\\')
                return _Fail("the text holds a control character that is not escaped");
            if (!_ReadEscape(text))
                return false;
        }
    }

    static bool _AppendUtf8(QString& text, char const* bytes, int size)
    {
        std::optional<QString> const decoded = findings::DecodeUtf8(QByteArray::fromRawData(bytes, size));
        if (decoded)
            text += *decoded;
        return decoded.has_value();
    }

    bool _ReadEscape(QString& text)
    {
        constexpr char const* letters = "\"\\/bfnrt";
        constexpr char const* meanings = "\"\\/\b\f\n\r\t";
        if (_end - _at < 2)
            return _Fail("the line ends inside a text");
        char const letter = _at[1];
        if (letter == 'u')
            return _ReadUnit(text);
        for (int i = 0; letters[i] != 0; ++i) {
            if (letters[i] == letter) {
                text += QLatin1Char(meanings[i]);
                _at += 2;
                return true;
            }
        }
        return _Fail("there is no such escape");
    }

    bool _ReadUnit(QString& text)
    {
        constexpr int size = 6;
        if (_end - _at < size)
            return _Fail("the line ends inside a text");
        int code = 0;
        for (int i = 2; i < size; ++i) {
            int const digit = HexDigit(_at[i]);
            if (digit < 0)
                return _Fail("there is no such escape");
            code = code * 16 + digit;
        }
        text += QChar(code);
        _at += size;
        return true;
    }

    char const* _at;
    char const* const _begin;
    char const* const _end;
    QString _key;
    char const* _reason = "";
};

} // namespace

std::optional<JsonValue> ReadJsonObject(QByteArray const& line, JsonFault& fault)
{
    Reader reader(line);
    JsonValue value;
    if (reader.ReadLine(value))
        return value;
    fault = reader.Fault();
    return std::nullopt;
}

} // namespace tandry::carry
