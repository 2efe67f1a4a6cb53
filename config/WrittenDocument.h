#pragma once

#include <QString>
#include <QStringRef>

namespace sync::config {

/// Reads a stored text from the front as long as it has exactly the form in which this library writes its documents.
///
/// Each operation takes a piece and returns whether it was there. When a piece is not there, the text was written by
/// something else or holds characters that XML has no place for, and Qt's document decides what it means. A text that
/// is taken to its end reads there as the same.
class WrittenDocument
{
public:
    /// The text must outlive this and all names taken from it.
    explicit WrittenDocument(QString const& text)
        : _text(text)
        , _at(reinterpret_cast<ushort const*>(text.constData()))
        , _end(_at + text.size())
    {}

    /// Leaves the position where it is when the piece is not there; the other operations leave it anywhere.
    [[nodiscard]] bool Take(QLatin1String piece);
    [[nodiscard]] bool Take(QStringRef const& piece);

    /// A name of ASCII letters, digits and ":", "_", "-", "."; not those of other alphabets.
    [[nodiscard]] bool TakeName(QStringRef& name);

    /// A value and the end of its CDATA section, whose beginning was taken. The value holds characters of XML only, and
    /// no carriage return.
    [[nodiscard]] bool TakeSection(QString& value);

    /// A value and the quote behind it, in which exactly those characters are escaped that the writer escapes.
    [[nodiscard]] bool TakeAttributeValue(QString& value);

    [[nodiscard]] bool isAtEnd() const { return _at == _end; }

private:
    [[nodiscard]] bool TakeReference(QString& value);
    [[nodiscard]] bool isBehindBrackets() const; // "]]", in front of which the writer escapes ">"

    QString const& _text;
    ushort const* _at;
    ushort const* _end;
};

} // namespace sync::config
