#pragma once

#include <QString>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace tandry::fuzz {

/// Aborts the program, which libFuzzer reports as a fault, unless the condition holds.
inline void Require(bool holds, char const* what)
{
    if (holds)
        return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

/// Reads values from the fuzzer's input. After its end, numbers are 0 and texts empty.
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

    /// Returns the rest of the input.
    QByteArray TakeRest()
    {
        QByteArray const rest(reinterpret_cast<char const*>(_data), int(_size));
        _size = 0;
        return rest;
    }

    /// Returns a text. A byte in front of it gives its length and kind: null, UTF-8 or arbitrary 16-bit codes.
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

    /// Returns the rest of the input as a text: UTF-8, or after the bytes FF FE arbitrary 16-bit codes.
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

/// Whether a text is valid UTF-16.
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

/// Whether an XML reader returns a text in a CDATA section unchanged: it has no characters that XML does not allow, no
/// "]]>", and no carriage returns, which the reader would replace.
inline bool FitsCdata(QString const& text)
{
    return HasNoLoneSurrogate(text) && !text.contains(QLatin1String("]]>")) &&
           std::all_of(text.begin(), text.end(), [](QChar c) {
               return c == QLatin1Char('\t') || c == QLatin1Char('\n') || (c.unicode() >= 0x20 && c.unicode() < 0xFFFE);
           });
}

} // namespace tandry::fuzz
