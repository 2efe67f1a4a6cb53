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

/// Makes failure messages readable.
void PrintTo(QJsonObject const& object, std::ostream* out);

namespace tandryctl::test {

using tandry::test::operator""_q;

/// The result of a run of the program.
struct RunResult
{
    int status = -1;
    QString out;
    QString err;

    /// Returns the parsed output. Fails the test if it is not an array.
    QJsonArray json() const;
};

/// A test that runs the built program. Its temporary folder is the user's home and contains the store.
class ToolTest : public testing::Test
{
protected:
    /// Removes the folder: QTemporaryDir fails to remove files whose names are not valid UTF-8.
    void TearDown() override;

    QString StorePath() const { return At("store.db"); }
    QString At(char const* name) const { return At(QString::fromUtf8(name)); }
    QString At(QString const& name) const { return folder.filePath(name); }

    /// Runs the program on the test's store. No standard stream is a terminal.
    RunResult Run(QStringList const& arguments, QByteArray const& input = {});

    /// The same, but expects success and returns the output.
    QString RunSuccessfully(QStringList const& arguments);

    /// The same with --json; returns the printed objects.
    QJsonArray Json(QStringList const& arguments);
    /// The same, but expects exactly one object.
    QJsonObject JsonObject(QStringList const& arguments);

    /// Runs the program without --store, with additional environment variables ("NAME=value").
    RunResult
    RunWithoutStore(QStringList const& arguments, QStringList const& environment = {}, QByteArray const& input = {});

    /// Runs the program so that file permissions apply to it, even for root. Returns nothing if that is not possible.
    std::optional<RunResult> RunWithoutPrivileges(QStringList const& arguments);

    /// Runs the program on a terminal with this input. `out` contains both streams as shown by the terminal.
    RunResult RunOnTerminal(QStringList const& arguments, QByteArray const& typed = {});

    void MakeDirectory(QString const& name) const;
    void WriteFile(QString const& name, QByteArray const& content = {}) const;
    void Link(char const* target, QString const& name) const;

    /// Creates the store.
    void Init();
    /// Creates a directory and adds it as a root.
    void AddRoot(QString const& name, QString const& serverPath);

    QTemporaryDir folder;

private:
    QStringList _OnStore(QStringList const& arguments) const;
};

} // namespace tandryctl::test
