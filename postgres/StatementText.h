#pragma once

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

namespace sync::database {

/// A statement as the server gets it: with numbered placeholders, and rewritten where PostgreSQL would refuse it or
/// answer otherwise than SQLite. The rules are in the source, in one list.
class StatementText
{
public:
    /// Returns null for a text that the store refuses, and then sets `words` to the reason.
    static std::shared_ptr<StatementText const> Make(QString const& text, QString& words);

    /// Unlike that of every other object of the process; greater than 0.
    int number() const { return _number; }
    /// As the caller gave it.
    QString const& text() const { return _text; }
    /// As the server gets it.
    QByteArray const& serverText() const { return _serverText; }
    bool isReading() const { return _isReading; }
    /// Whether the statement may write or lock something; true also for a SELECT that calls an unknown function.
    bool mayWrite() const { return _mayWrite; }
    /// Whether the row that is returned has the id of the row that was inserted.
    bool returnsId() const { return _returnsId; }
    std::vector<QString> const& placeholders() const { return _placeholders; }

private:
    StatementText() = default;

    int _number = 0;
    QString _text;
    QByteArray _serverText;
    bool _isReading = false;
    bool _mayWrite = true;
    bool _returnsId = false;
    /// The names, in the order of their numbers.
    std::vector<QString> _placeholders;
};

} // namespace sync::database
