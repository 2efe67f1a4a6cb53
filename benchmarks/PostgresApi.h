#pragma once

#include "benchmarks/StatementText.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QtEndian>

#include <libpq-fe.h>

#include <array>
#include <cstddef>
#include <memory>
#include <vector>

namespace sync::benchmarks {

/// A connection through libpq: statements stay prepared, values are bound by position, and columns are read in the
/// server's binary form.
class PostgresApi
{
    struct FreeResult
    {
        void operator()(PGresult* result) const noexcept { PQclear(result); }
    };
    using Result = std::unique_ptr<PGresult, FreeResult>;

    struct Prepared
    {
        QByteArray name;
        std::array<QByteArray, 32> texts;
    };

public:
    /// Connects to the profile, whose URI has its name as the last parameter.
    explicit PostgresApi(QString const& uri);
    ~PostgresApi();

    /// Returns the name of a profile's schema.
    static QString SchemaOf(QString const& uri);

    /// One execution of a statement.
    class Statement
    {
    public:
        Statement(PGconn* connection, Prepared& prepared)
            : _connection(connection)
            , _prepared(prepared)
        {}
        Q_DISABLE_COPY_MOVE(Statement)

        void Bind(QString const&, int value) { _Bind(QByteArray::number(value)); }
        void Bind(QString const&, qint64 value) { _Bind(QByteArray::number(value)); }
        void Bind(QString const&, QString const& value)
        {
            if (value.isNull())
                _values.at(std::size_t(_bound++)) = nullptr;
            else
                _Bind(value.toUtf8());
        }
        void Bind(QString const&, QDateTime const& value)
        {
            if (value.isValid()) // all samples are in UTC
                _Bind(QByteArray::number(value.toMSecsSinceEpoch()));
            else
                _values.at(std::size_t(_bound++)) = nullptr;
        }

        bool Next()
        {
            if (_result == nullptr)
                Run();
            return ++_row < PQntuples(_result.get());
        }
        void Run();

        int Int(int column) const { return int(Long(column)); }
        qint64 Long(int column) const
        {
            if (PQgetisnull(_result.get(), _row, column) != 0)
                return 0;
            return qFromBigEndian<qint64>(PQgetvalue(_result.get(), _row, column));
        }
        QString Text(int column) const
        {
            if (PQgetisnull(_result.get(), _row, column) != 0)
                return {};
            return QString::fromUtf8(PQgetvalue(_result.get(), _row, column), PQgetlength(_result.get(), _row, column));
        }
        QDateTime Time(int column, Qt::TimeSpec) const
        {
            if (PQgetisnull(_result.get(), _row, column) != 0)
                return {};
            return QDateTime::fromMSecsSinceEpoch(Long(column), Qt::UTC); // as the tables of the samples have it
        }

        int InsertedId() const { return int(qFromBigEndian<qint64>(PQgetvalue(_result.get(), 0, 0))); }

    private:
        void _Bind(QByteArray text)
        {
            QByteArray& kept = _prepared.texts.at(std::size_t(_bound));
            kept = std::move(text);
            _values.at(std::size_t(_bound++)) = kept.constData();
        }

        PGconn* const _connection;
        Prepared& _prepared;
        std::array<char const*, 32> _values = {};
        int _bound = 0;
        Result _result;
        int _row = -1;
    };

    Statement Use(StatementText const& text)
    {
        if (text.number >= _prepared.size() || !_prepared[text.number])
            _Prepare(text);
        return {_connection, *_prepared[text.number]};
    }

    /// Runs one or more statements and returns the first value of the last one's first row; null if there is none.
    QString Execute(QString const& sql);

    void Begin();
    void Commit();

private:
    Q_DISABLE_COPY_MOVE(PostgresApi)

    void _Prepare(StatementText const& text);

    PGconn* _connection = nullptr;
    std::vector<std::unique_ptr<Prepared>> _prepared;
};

} // namespace sync::benchmarks
