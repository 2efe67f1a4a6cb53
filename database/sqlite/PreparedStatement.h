#pragma once

#include "database/sqlite/SqliteHandle.h"
#include "database/sqlite/SqliteValue.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <cstring>
#include <memory>
#include <optional>
#include <vector>

namespace sync::database {

/// The reason why the store refused a statement or a value, without the value. If the words are empty, SQLite refused
/// it and has the reason.
struct StatementError
{
    int code = 0;
    QString words;
};

/// The same as `==` in a fraction of the instructions: it runs for each statement and for each bound value.
inline bool IsSameText(QString const& left, QString const& right)
{
    return left.size() == right.size() &&
           std::memcmp(left.constData(), right.constData(), static_cast<std::size_t>(left.size()) * sizeof(QChar)) == 0;
}

/// A statement of a connection with its placeholders and the kinds of its columns. Used by one query at a time.
class PreparedStatement
{
public:
    /// Returns null on failure. `stays` tells SQLite that the statement will be kept for a long time.
    static std::unique_ptr<PreparedStatement>
    Prepare(sqlite3* handle, QString const& text, bool stays, StatementError& error);

    QString const& text() const { return _text; }
    bool isOf(sqlite3* handle) const noexcept { return sqlite3_db_handle(_handle.get()) == handle; }
    /// Whether the statement only reads.
    bool isReading() const { return _reading; }
    /// The position in the log at which the current run began; for `LogLimit`.
    quint32 logPosition() const noexcept { return _logPosition; }
    void NoteLogPosition(quint32 position) noexcept { _logPosition = position; }

    /// The statement must not be running.
    std::optional<StatementError> Bind(QString const& placeholder, QVariant const& value);

    /// Returns SQLite's result code; unless that is SQLITE_ROW, the statement has been reset.
    int Step() noexcept;
    /// Ends the run, and releases the rows and their locks.
    void Reset() noexcept;
    /// The same, and releases the bound values.
    void Clear() noexcept;

    QStringList ColumnNames() const;

    /// A value of the current row.
    QVariant Value(int column) const;
    /// The same without a conversion. The bytes are SQLite's own, and valid until the next step.
    SqliteValue Stored(int column) const;

private:
    PreparedStatement(StatementHandle handle, QString const& text);

    struct Sink;

    int IndexOf(QString const& placeholder);
    int BindAt(int index, QVariant const& value, QString& words);
    int BindText(int index, QString const& text, QString& words);

    StatementHandle _handle;
    QString _text;
    bool _reading = false;
    quint32 _logPosition = 0;
    /// By SQLite's index, which counts from 1. SQLite does not copy the text, so it is kept here.
    std::vector<QString> _placeholders;
    std::vector<QByteArray> _values;
    std::size_t _lastBound = 0;
    std::vector<bool> _holdsDateTime;
};

} // namespace sync::database
