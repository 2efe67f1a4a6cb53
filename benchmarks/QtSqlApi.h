#pragma once

#include "benchmarks/StatementText.h"

#include <QDateTime>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>
#include <QVariant>

#include <memory>
#include <vector>

namespace sync::benchmarks {

/// How often a statement is prepared.
enum class Prepare
{
    Once,
    PerCall,
};

/// A connection through Qt SQL: values bound by name and read by column number, queries forward only.
///
/// Dates are bound as integers, as the store keeps them. Qt SQL's own form is text, which is slower.
template <Prepare When>
class QtSqlApi
{
public:
    /// Opens a file with the library's pragmas, or a profile by its URI.
    explicit QtSqlApi(QString const& store);
    ~QtSqlApi();

    /// One execution of a statement; its end finishes the query.
    class Statement
    {
    public:
        explicit Statement(std::shared_ptr<QSqlQuery> query)
            : _query(std::move(query))
        {}
        ~Statement() { _query->finish(); }
        Q_DISABLE_COPY_MOVE(Statement)

        template <class Value>
        void Bind(QString const& placeholder, Value const& value)
        {
            _query->bindValue(placeholder, value);
        }
        void Bind(QString const& placeholder, QDateTime const& value)
        {
            _query->bindValue(placeholder,
                              value.isValid() ? QVariant(value.toMSecsSinceEpoch()) : QVariant(QVariant::LongLong));
        }

        bool Next()
        {
            if (!_query->isActive())
                Run();
            return _query->next();
        }
        void Run()
        {
            if (!_query->exec())
                _Fail();
        }

        int Int(int column) const { return _query->value(column).toInt(); }
        qint64 Long(int column) const { return _query->value(column).toLongLong(); }
        QString Text(int column) const { return _query->value(column).toString(); }
        QDateTime Time(int column, Qt::TimeSpec) const
        {
            QVariant const value = _query->value(column);
            return value.isNull() ? QDateTime() : QDateTime::fromMSecsSinceEpoch(value.toLongLong(), Qt::UTC);
        }

        int InsertedId() const { return _query->lastInsertId().toInt(); }

    private:
        [[noreturn]] void _Fail() const;

        std::shared_ptr<QSqlQuery> const _query;
    };

    Statement Use(StatementText const& text);

    void Begin();
    void Commit();

private:
    Q_DISABLE_COPY_MOVE(QtSqlApi)

    std::shared_ptr<QSqlQuery> _Prepare(QString const& sql);

    QString const _connection;
    QSqlDatabase _database;
    std::vector<std::shared_ptr<QSqlQuery>> _prepared;
};

extern template class QtSqlApi<Prepare::Once>;
extern template class QtSqlApi<Prepare::PerCall>;

} // namespace sync::benchmarks
