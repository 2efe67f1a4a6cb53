#include "reliability/ScriptStore.h"

#include "support/FolderContents.h"
#include "support/QtPrinters.h"
#include "support/Queries.h"
#include "support/RawStore.h"

#include <gtest/gtest.h>

#include <QStringList>
#include <QTemporaryDir>

namespace tandry::test {

using sync::database::JournalMode;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;

namespace {

/// Returns a statement that selects a key and all columns of each row of each table.
QString const& RowStatement()
{
    static QString const statement = [] {
        QTemporaryDir folder;
        QString const path = folder.filePath(QStringLiteral("store.db"));
        WriteFile(path, ScriptStore(JournalMode::Rollback));
        RawStore raw(path);
        QStringList statements;
        for (auto const& table : raw.Rows(QStringLiteral(
                 "SELECT name FROM sqlite_schema WHERE type = 'table' AND name NOT LIKE 'sqlite%' ORDER BY name"))) {
            QString const name = table.value(0).toString();
            QStringList columns;
            for (auto const& column : raw.Rows(QStringLiteral("SELECT name FROM pragma_table_info('%1')").arg(name)))
                columns.append(QStringLiteral("quote(%1)").arg(column.value(0).toString()));
            statements.append(QStringLiteral("SELECT '%1 ' || id, %2 FROM %1")
                                  .arg(name, columns.join(QStringLiteral(" || ',' || "))));
        }
        return statements.join(QStringLiteral(" UNION ALL "));
    }();
    return statement;
}

} // namespace

RowTexts RowsOf(SqliteDatabaseFactory& store)
{
    RowTexts rows;
    auto const query = Prepared(store, RowStatement());
    EXPECT_TRUE(query->exec()) << query->lastError().toStdString();
    while (query->next())
        rows.insert(query->value(0).toString(), query->value(1).toString());
    return rows;
}

RowTexts RowsOnDisk(QString const& path)
{
    RawStore raw(path);
    EXPECT_EQ(raw.Value(QStringLiteral("PRAGMA integrity_check")).toString(), QStringLiteral("ok"));
    RowTexts rows;
    for (auto const& row : raw.Rows(RowStatement()))
        rows.insert(row.value(0).toString(), row.value(1).toString());
    return rows;
}

QByteArray const& ScriptStore(JournalMode journalMode)
{
    auto const make = [](JournalMode mode) {
        QTemporaryDir folder;
        QString const path = folder.filePath(QStringLiteral("store.db"));
        OpenOptions options;
        options.journalMode = mode;
        {
            auto const store = SqliteDatabaseFactory::Open(path, nullptr, options);
            Managers managers(store);
            FillScriptStore(managers);
            EXPECT_FALSE(store->LastError());
        }
        RawStore(path).Run(QStringLiteral("UPDATE AuthenticationConfiguration SET encryptedPassword = 'of old'"));
        return ReadFile(path);
    };
    static QByteArray const withLog = make(JournalMode::WriteAheadLog);
    static QByteArray const withJournal = make(JournalMode::Rollback);
    return journalMode == JournalMode::WriteAheadLog ? withLog : withJournal;
}

} // namespace tandry::test
