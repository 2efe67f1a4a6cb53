#pragma once

#include "support/QtPrinters.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <optional>
#include <ostream>

/// Readable in the messages of failed expectations.
void PrintTo(QJsonObject const& object, std::ostream* out);

namespace tandryctl::test {

using tandry::test::operator""_q;

/// How a run of the program ended.
struct Ran
{
    int status = -1;
    QString out;
    QString err;

    /// The parsed output; fails the test when it is no array.
    QJsonArray json() const;
};

/// A test that runs the built program, with a folder of its own as the user's home and the place of a store.
class ToolTest : public testing::Test
{
protected:
    QString StorePath() const { return At("store.db"); }
    QString At(char const* name) const { return At(QString::fromUtf8(name)); }
    QString At(QString const& name) const { return folder.filePath(name); }

    /// Runs the program on the test's store, with neither standard stream a terminal.
    Ran Run(QStringList const& arguments, QByteArray const& input = {});

    /// The same, expecting success.
    QString Done(QStringList const& arguments);

    /// The same with --json, and the objects that it printed.
    QJsonArray Json(QStringList const& arguments);
    /// The only one of them.
    QJsonObject JsonObject(QStringList const& arguments);

    /// Runs the program without naming a store, with more environment variables ("NAME=value").
    Ran RunBare(QStringList const& arguments, QStringList const& environment = {}, QByteArray const& input = {});

    /// Runs the program as a user whom permissions bind; nothing where that can't be done.
    std::optional<Ran> RunWithoutPrivileges(QStringList const& arguments);

    /// Runs the program on a terminal and types into it. `out` holds both streams as the terminal showed them.
    Ran RunOnTerminal(QStringList const& arguments, QByteArray const& typed = {});

    void MakeDirectory(QString const& name) const;
    void WriteFile(QString const& name, QByteArray const& content = {}) const;
    void Link(char const* target, QString const& name) const;

    /// Makes a store, and in it a root on a new directory.
    void Init();
    void AddRoot(QString const& name, QString const& serverPath);

    QTemporaryDir folder;

private:
    QStringList _OnStore(QStringList const& arguments) const;
};

} // namespace tandryctl::test
