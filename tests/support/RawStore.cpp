#include "support/RawStore.h"

#include <sqlite3.h>

#include <gtest/gtest.h>

#include <QFile>

namespace tandry::test {

RawStore::RawStore(QString const& path, Closing closing)
{
    EXPECT_EQ(sqlite3_open_v2(QFile::encodeName(path).constData(), &_handle, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK)
        << sqlite3_errmsg(_handle);
    sqlite3_busy_timeout(_handle, 5000);
    sqlite3_db_config(_handle, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, closing == KeepLog ? 1 : 0, nullptr);
}

RawStore::~RawStore()
{
    EXPECT_EQ(sqlite3_close(_handle), SQLITE_OK) << sqlite3_errmsg(_handle);
}

void RawStore::Run(QString const& statements)
{
    EXPECT_EQ(sqlite3_exec(_handle, statements.toUtf8().constData(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(_handle) << " in " << statements.toStdString();
}

std::vector<QVector<QVariant>> RawStore::Rows(QString const& statement)
{
    std::vector<QVector<QVariant>> rows;
    sqlite3_stmt* prepared = nullptr;
    QByteArray const text = statement.toUtf8();
    EXPECT_EQ(sqlite3_prepare_v2(_handle, text.constData(), -1, &prepared, nullptr), SQLITE_OK)
        << sqlite3_errmsg(_handle) << " in " << text.constData();
    int code = SQLITE_DONE;
    while (prepared != nullptr && (code = sqlite3_step(prepared)) == SQLITE_ROW) {
        QVector<QVariant> row;
        for (int column = 0; column < sqlite3_column_count(prepared); ++column) {
            switch (sqlite3_column_type(prepared, column)) {
            case SQLITE_INTEGER:
                row.append(static_cast<qlonglong>(sqlite3_column_int64(prepared, column)));
                break;
            case SQLITE_FLOAT:
                row.append(sqlite3_column_double(prepared, column));
                break;
            case SQLITE_TEXT:
                row.append(QString::fromUtf8(reinterpret_cast<char const*>(sqlite3_column_text(prepared, column)),
                                             sqlite3_column_bytes(prepared, column)));
                break;
            case SQLITE_BLOB:
                row.append(QByteArray(static_cast<char const*>(sqlite3_column_blob(prepared, column)),
                                      sqlite3_column_bytes(prepared, column)));
                break;
            default:
                row.append(QVariant());
            }
        }
        rows.push_back(row);
    }
    EXPECT_EQ(code, SQLITE_DONE) << sqlite3_errmsg(_handle) << " in " << text.constData();
    sqlite3_finalize(prepared);
    return rows;
}

QVariant RawStore::Value(QString const& statement)
{
    std::vector<QVector<QVariant>> const rows = Rows(statement);
    return rows.empty() ? QVariant() : rows.front().value(0);
}

qlonglong RawStore::Count(QString const& table)
{
    return Value(QStringLiteral("SELECT count(*) FROM ") + table).toLongLong();
}

void RawStore::RefuseToDelete(QString const& table, QString const& condition)
{
    Run(QStringLiteral("CREATE TRIGGER refusal BEFORE DELETE ON %1 WHEN %2 BEGIN SELECT RAISE(ABORT, 'refused'); END")
            .arg(table, condition));
}

void RawStore::AllowToDelete()
{
    Run(QStringLiteral("DROP TRIGGER IF EXISTS refusal"));
}

} // namespace tandry::test
