#pragma once

#include <QString>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace tandry::fuzz {

/// Ends the program, as a fuzzer expects it of a fault, unless the condition holds.
inline void Require(bool holds, char const* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

/// What the fuzzer gives, taken from the front. When it is used up, everything is 0 and every text empty.
class FuzzInput
{
public:
    FuzzInput(std::uint8_t const* data, std::size_t size)
        : _data(data)
        , _size(size)
    {}

    bool isEmpty() const { return _size == 0; }

    std::uint8_t TakeByte()
    {
        if (_size == 0)
            return 0;
        --_size;
        return *_data++;
    }

    std::uint32_t TakeNumber(int bytes)
    {
        std::uint32_t number = 0;
        for (int i = 0; i < bytes; ++i)
            number = number << 8 | TakeByte();
        return number;
    }

    /// All that is left.
    QByteArray TakeRest()
    {
        QByteArray const rest(reinterpret_cast<char const*>(_data), int(_size));
        _size = 0;
        return rest;
    }

    /// A text behind a byte with its kind and length: a null one, UTF-8, or any codes of 16 bits.
    QString TakeText()
    {
        std::uint8_t const head = TakeByte();
        if (head == 0)
            return {};
        std::size_t const size = std::min<std::size_t>(head >> 1, _size);
        QByteArray const bytes(reinterpret_cast<char const*>(_data), int(size));
        _data += size;
        _size -= size;
        return (head & 1) == 0 ? QString::fromUtf8(bytes.isNull() ? QByteArray("") : bytes) : FromCodes(bytes);
    }

    /// A document: UTF-8, or with the bytes FF FE in front any codes of 16 bits.
    QString TakeDocument()
    {
        QByteArray const bytes = TakeRest();
        return bytes.startsWith("\xFF\xFE") ? FromCodes(bytes.mid(2)) : QString::fromUtf8(bytes);
    }

private:
    static QString FromCodes(QByteArray const& bytes)
    {
        QString text(bytes.size() / 2, Qt::Uninitialized);
        for (int i = 0; i < text.size(); ++i)
            text[i] = QChar(std::uint16_t(std::uint8_t(bytes[2 * i]) | std::uint8_t(bytes[2 * i + 1]) << 8));
        return text;
    }

    std::uint8_t const* _data;
    std::size_t _size;
};

/// Whether a text is proper UTF-16.
inline bool HasNoLoneSurrogate(QString const& text)
{
    for (int i = 0; i < text.size(); ++i) {
        if (!text[i].isSurrogate())
            continue;
        if (!text[i].isHighSurrogate() || i + 1 == text.size() || !text[i + 1].isLowSurrogate())
            return false;
        ++i;
    }
    return true;
}

/// Whether XML can hold a text in a CDATA section so that its reader gives it back as it was: no characters that XML
/// has no place for, no end mark, and no line ends that a reader makes one of.
inline bool FitsCdata(QString const& text)
{
    return HasNoLoneSurrogate(text) && !text.contains(QLatin1String("]]>")) &&
           std::all_of(text.begin(), text.end(), [](QChar c) {
               return c == QLatin1Char('\t') || c == QLatin1Char('\n') || (c.unicode() >= 0x20 && c.unicode() < 0xFFFE);
           });
}

} // namespace tandry::fuzz
