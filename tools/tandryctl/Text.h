#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace tandryctl {

/// The text on one line and without anything that a terminal would act on: line breaks, controls, marks that turn the
/// writing direction and lone surrogates as escapes, and the backslash doubled so that escapes can be told from text.
QString Printable(QString const& text);

/// `Printable` between single quotes, for messages.
QString Quoted(QString const& text);

/// How many columns of a terminal a printable text takes.
int DisplayWidth(QString const& text);

/// "1 folder", "2 folders".
QString Counted(qint64 count, char const* singular, char const* plural);

/// Joins with commas and an "and": "a, b and c".
QString Enumerated(QStringList const& items);

/// Bytes from the file system or the command line as text; nothing when they are no valid UTF-8.
std::optional<QString> Decoded(QByteArray const& bytes);

} // namespace tandryctl
