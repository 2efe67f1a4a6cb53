#include "support/FolderContents.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>

namespace tandry::test {

QMap<QString, QByteArray> FolderContents(QString const& folder)
{
    QMap<QString, QByteArray> contents;
    for (QFileInfo const& file : QDir(folder).entryInfoList(QDir::Files | QDir::Hidden | QDir::System))
        contents.insert(file.fileName(), ReadFile(file.filePath()));
    return contents;
}

QByteArray ReadFile(QString const& path)
{
    QProcess reader;
    reader.start(QStringLiteral("cat"), {path});
    EXPECT_TRUE(reader.waitForFinished(-1) && reader.exitCode() == 0) << path.toStdString();
    return reader.readAllStandardOutput();
}

void WriteFile(QString const& path, QByteArray const& contents)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
    EXPECT_EQ(file.write(contents), contents.size());
}

void Overwrite(QString const& path, qint64 offset, QByteArray const& bytes)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadWrite)) << path.toStdString();
    EXPECT_TRUE(file.seek(offset));
    EXPECT_EQ(file.write(bytes), bytes.size());
}

} // namespace tandry::test
