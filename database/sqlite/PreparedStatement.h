#pragma once

#include "database/sqlite/SqliteHandle.h"

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <cstring>
#include <memory>
#include <optional>
#include <vector>

namespace sync::database {

/// The reason for which the store itself refused a statement or a value, without the value. If the words are empty,
/// SQLite has the reason.
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
    /// Returns null on failure. SQLite allocates the memory of a statement that `stays` prepared apart from the rest.
    static std::unique_ptr<PreparedStatement>
    Prepare(sqlite3* handle, QString const& text, bool stays, StatementError& error);

    QString const& text() const { return _text; }
    bool isOf(sqlite3* handle) const noexcept { return sqlite3_db_handle(_handle.get()) == handle; }
    /// Whether the statement only reads.
    bool isReading() const { return _reading; }
    /// Where the log stood when the current run began; for `LogLimit`.
    quint32 logPosition() const noexcept { return _logPosition; }
    void NoteLogPosition(quint32 position) noexcept { _logPosition = position; }

    /// The statement must not be running.
    std::optional<StatementError> Bind(QString const& placeholder, QVariant const& value);

    /// Returns SQLite's result code; on everything but a row the statement has been reset.
    int Step() noexcept;
    /// Ends the run and lets go of the rows, and of the locks that go with them.
    void Reset() noexcept;
    /// Lets go of the bound values as well.
    void Clear() noexcept;

    /// A value of the current row.
    QVariant Value(int column) const;

private:
    PreparedStatement(StatementHandle handle, QString const& text);

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
