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

enum class Preparing
{
    Once,
    PerCall,
};

/// Qt SQL as one writes it: values bound by name, read by column, queries forward only.
///
/// Dates go as the numbers that the store's rows hold. Qt would write them as text by itself, which costs it more.
template <Preparing When>
class QtSqlEngine
{
public:
    /// Opens the store, on the same terms as the library does.
    explicit QtSqlEngine(QString const& path);
    ~QtSqlEngine();

    /// One run of a statement.
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
        QDateTime Time(int column) const
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
    Q_DISABLE_COPY_MOVE(QtSqlEngine)

    std::shared_ptr<QSqlQuery> _Prepare(QString const& sql);

    QString const _connection;
    QSqlDatabase _database;
    std::vector<std::shared_ptr<QSqlQuery>> _prepared;
};

extern template class QtSqlEngine<Preparing::Once>;
extern template class QtSqlEngine<Preparing::PerCall>;

} // namespace sync::benchmarks
