#pragma once

#include <QString>
#include <QStringView>

namespace sync::config {

/// Reads a stored text from the front as long as it has exactly the form in which this library writes its documents.
///
/// Each operation takes a piece of the text and returns whether it was there. If it was not, another program wrote the
/// text, or it contains characters that XML does not allow, and the caller must read it with Qt's document. Of a text
/// that can be read to its end here, Qt's document gives the same result.
class WrittenDocument
{
public:
    /// The text must outlive this object and all names taken from it.
    explicit WrittenDocument(QString const& text)
        : _text(text)
        , _at(reinterpret_cast<ushort const*>(text.constData()))
        , _end(_at + text.size())
    {}

    /// Leaves the position unchanged if the piece is not there. After a failure of another operation the position is
    /// undefined.
    [[nodiscard]] bool Take(QLatin1String piece);
    [[nodiscard]] bool Take(QStringView piece);

    /// Takes a name of ASCII letters, digits and ":", "_", "-", ".". Fails for names with other letters.
    [[nodiscard]] bool TakeName(QStringView& name);

    /// Takes a value and the end of its CDATA section, whose beginning was taken before. The value must contain only
    /// characters that XML allows, and no carriage return.
    [[nodiscard]] bool TakeSection(QString& value);

    /// Takes a value and the quote after it. Exactly the characters that the writer escapes must be escaped in it.
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
