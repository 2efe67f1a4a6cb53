#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

namespace tandry::test {

/// The names of all files in a folder with what is in them, to see whether anything changed.
QMap<QString, QByteArray> FolderContents(QString const& folder);

QByteArray ReadFile(QString const& path);
/// Not for a file that is open as a store; see `ReadFile`.
void WriteFile(QString const& path, QByteArray const& contents);
/// Overwrites a part of a file.
void Overwrite(QString const& path, qint64 offset, QByteArray const& bytes);

} // namespace tandry::test
