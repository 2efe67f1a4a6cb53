#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace tandryctl {

/// Returns the text on one line and without anything that a terminal would interpret: line breaks, control characters,
/// marks that change the writing direction and lone surrogates are replaced by escapes, and backslashes are doubled.
///
/// Different texts look different: what is not in Unicode's composed form (NFC) is replaced by escapes too, such as an
/// "e" with the accent as a character of its own, which a terminal shows like an "é". This does not depend on the other
/// form being there: the twin may be on disk, on the server or further down. Almost all names on Linux are composed,
/// and so are those of scripts whose marks have no composed form, so that few names get escapes.
QString Printable(QString const& text);

/// Returns a text from elsewhere on one line, for messages: as `Printable` does, but with backslashes as they are.
QString OneLine(QString const& text);

/// Returns the text as a word of the shell, for messages: in single quotes, or as $'...' if it has line breaks, control
/// characters or marks that change the writing direction.
QString Quoted(QString const& text);

/// The same for bytes from the file system or the command line, whatever their encoding.
QString QuotedBytes(QByteArray const& bytes);

/// Returns the number of terminal columns that a printable text takes.
int DisplayWidth(QString const& text);

/// Returns the text in this number of terminal columns, with "…" in the place of its middle if it is too long: the end
/// of a path says as much as its beginning. Characters stay whole.
QString Shortened(QString const& text, int width);

QString WithoutTrailingBlanks(QString text);

/// Returns a count with its unit: "1 folder", "2 folders".
QString Counted(qint64 count, char const* singular, char const* plural);

/// Returns the hint to look something up with a command: "see 'tandryctl list roots'".
QString See(QString const& command);
QString See(char const* command);

/// Joins texts with commas and a final "and": "a, b and c".
QString JoinWithAnd(QStringList const& items);

/// Decodes bytes from the file system or the command line; returns nothing if they are not valid UTF-8.
std::optional<QString> DecodeUtf8(QByteArray const& bytes);

} // namespace tandryctl
