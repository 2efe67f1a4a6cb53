#pragma once

#include "support/QtPrinters.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <vector>

/// Makes failure messages readable.
void PrintTo(QJsonObject const& object, std::ostream* out);

namespace tandryctl::test {

using tandry::test::operator""_q;

constexpr int TimeoutMsec = 110'000;

/// The result of a run of the program.
struct RunResult
{
    /// The exit status; 128 and the signal's number if a signal ended the program.
    int status = -1;
    QString out;
    QString err;

    /// Returns the parsed output. Fails the test if it is not an array.
    QJsonArray json() const;
};

/// Returns the environment of a user with this home, without variables that lead elsewhere; `more` are "NAME=value".
QProcessEnvironment HomeEnvironment(QString const& home, QStringList const& more = {});

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

    /// Runs the program on the test's store from a shell, with a redirection behind its arguments and commands in
    /// front.
    RunResult RunInShell(QString const& redirection, QStringList const& arguments, QString const& before = {});

    /// Starts the program on the test's store, with additional environment variables ("NAME=value").
    std::unique_ptr<QProcess> Start(QStringList const& arguments, QStringList const& environment = {});

    /// Runs the program so that file permissions apply to it, even for root. Returns nothing if that is not possible.
    std::optional<RunResult> RunWithoutPrivileges(QStringList const& arguments);

    /// The user's reaction when the terminal first shows this text: `act` returns the keys to type.
    struct Reaction
    {
        QByteArray text;
        std::function<QByteArray()> act;
    };

    /// Runs the program on a terminal with this input. `out` contains both streams as shown by the terminal.
    /// The reactions come one after the other. Skips the test if the system has no pseudo-terminals.
    RunResult RunOnTerminal(QStringList const& arguments,
                            QByteArray const& typed = {},
                            std::vector<Reaction> const& reactions = {});

    /// Runs a script of bash in the test's folder, in which "tandryctl" runs the program on the test's store. Its
    /// mounts are its own and end with it. Returns nothing if it may not mount here.
    std::optional<RunResult> RunWithMounts(char const* script);

    void MakeDirectory(QString const& name) const;
    void WriteFile(QString const& name, QByteArray const& content = {}) const;
    void Link(char const* target, QString const& name) const;

    /// Has every write to the index's table fail: the index is damaged.
    void SpoilIndex(char const* name) const;
    /// Has inserts into a table fail once it has been given so many more rows: its ids are used up.
    void UseUpIds(char const* table, int rowsLeft = 0) const;

    /// Creates the store.
    void Init();
    /// Creates a directory and adds it as a root.
    void AddRoot(QString const& name, QString const& serverPath);

    QTemporaryDir folder;

private:
    QStringList _OnStore(QStringList const& arguments) const;
};

} // namespace tandryctl::test
