#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

namespace tandry::test {

/// Returns the contents of all files in a folder by name, to compare them later.
QMap<QString, QByteArray> FolderContents(QString const& folder);

/// Reads a file in another process: to close it in this one would release the locks of a store that has it open.
QByteArray ReadFile(QString const& path);
/// Writes a file. It must not be open as a store, for the reason given at `ReadFile`.
void WriteFile(QString const& path, QByteArray const& contents);
/// Overwrites a part of a file.
void Overwrite(QString const& path, qint64 offset, QByteArray const& bytes);

} // namespace tandry::test
