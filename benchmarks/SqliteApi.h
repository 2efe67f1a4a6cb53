#pragma once

#include "benchmarks/StatementText.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <sqlite3.h>

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

namespace sync::benchmarks {

/// A connection through SQLite's C interface: statements stay prepared, values are bound by position and read in place.
class SqliteApi
{
    struct Prepared
    {
        ~Prepared() { sqlite3_finalize(statement); }

        sqlite3_stmt* statement = nullptr;
        std::array<QByteArray, 16> texts; // bound without a copy, so they live until the statement has run
    };

public:
    /// Opens the store with the library's pragmas.
    explicit SqliteApi(QString const& path);
    ~SqliteApi();

    /// One execution of a statement; its end resets the statement.
    class Statement
    {
    public:
        Statement(sqlite3* database, Prepared& prepared)
            : _database(database)
            , _statement(prepared.statement)
            , _texts(prepared.texts.data())
        {}
        ~Statement() { sqlite3_reset(_statement); }
        Q_DISABLE_COPY_MOVE(Statement)

        void Bind(QString const&, int value) { sqlite3_bind_int(_statement, ++_bound, value); }
        void Bind(QString const&, qint64 value) { sqlite3_bind_int64(_statement, ++_bound, value); }
        void Bind(QString const&, QString const& value)
        {
            if (value.isNull()) {
                sqlite3_bind_null(_statement, ++_bound);
                return;
            }
            QByteArray& text = *_texts++;
            text = value.toUtf8();
            sqlite3_bind_text(_statement, ++_bound, text.constData(), text.size(), SQLITE_STATIC);
        }
        void Bind(QString const&, QDateTime const& value)
        {
            if (value.isValid()) // all samples are in UTC
                sqlite3_bind_int64(_statement, ++_bound, value.toMSecsSinceEpoch());
            else
                sqlite3_bind_null(_statement, ++_bound);
        }

        bool Next() { return _Step(SQLITE_ROW); }
        void Run()
        {
            while (Next())
                ;
        }

        int Int(int column) const { return sqlite3_column_int(_statement, column); }
        qint64 Long(int column) const { return sqlite3_column_int64(_statement, column); }
        QString Text(int column) const
        {
            auto const* text = reinterpret_cast<char const*>(sqlite3_column_text(_statement, column));
            return QString::fromUtf8(text, sqlite3_column_bytes(_statement, column));
        }
        QDateTime Time(int column, Qt::TimeSpec) const
        {
            if (sqlite3_column_type(_statement, column) == SQLITE_NULL)
                return {};
            return QDateTime::fromMSecsSinceEpoch(Long(column), Qt::UTC); // as the tables of the samples have it
        }

        int InsertedId() const { return int(sqlite3_last_insert_rowid(_database)); }

    private:
        bool _Step(int wanted)
        {
            int const code = sqlite3_step(_statement);
            if (code != SQLITE_ROW && code != SQLITE_DONE)
                _Fail();
            return code == wanted;
        }
        [[noreturn]] void _Fail() const;

        sqlite3* const _database;
        sqlite3_stmt* const _statement;
        QByteArray* _texts;
        int _bound = 0;
    };

    Statement Use(StatementText const& text)
    {
        if (text.number >= _prepared.size() || !_prepared[text.number])
            _Prepare(text);
        return {_database, *_prepared[text.number]};
    }

    /// Runs one or more statements, ignores their rows and does not keep them prepared.
    void Execute(QString const& sql);

    void Begin();
    void Commit();

private:
    Q_DISABLE_COPY_MOVE(SqliteApi)

    void _Prepare(StatementText const& text);

    sqlite3* _database = nullptr;
    std::vector<std::unique_ptr<Prepared>> _prepared;
};

} // namespace sync::benchmarks
