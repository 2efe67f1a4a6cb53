#include "database/sqlite/PreparedStatement.h"

#include "database/store/StoredValues.h"

#include <utility>

namespace sync::database {

namespace {

bool IsBlank(char const* begin, char const* end)
{
    return QByteArray::fromRawData(begin, static_cast<int>(end - begin)).trimmed().isEmpty();
}

} // namespace

std::unique_ptr<PreparedStatement>
PreparedStatement::Prepare(sqlite3* handle, QString const& text, bool stays, StatementError& error)
{
    if (!IsUnicode(text)) {
        error = {SQLITE_MISUSE, QStringLiteral("the statement is no Unicode text")};
        return nullptr;
    }
    QByteArray const utf8 = text.toUtf8();
    char const* tail = nullptr;
    sqlite3_stmt* made = nullptr;
    int const code = sqlite3_prepare_v3(handle,
                                        utf8.constData(),
                                        static_cast<int>(utf8.size()) + 1,
                                        stays ? SQLITE_PREPARE_PERSISTENT : 0,
                                        &made,
                                        &tail);
    StatementHandle statement(made);
    if (code != SQLITE_OK) {
        error = {code, {}};
        return nullptr;
    }
    if (statement == nullptr) {
        error = {SQLITE_MISUSE, QStringLiteral("the statement is empty")};
        return nullptr;
    }
    if (!IsBlank(tail, utf8.constData() + utf8.size())) {
        error = {SQLITE_MISUSE, QStringLiteral("there is more than one statement in the text")};
        return nullptr;
    }
    if (sqlite3_stmt_readonly(made) == 0 && sqlite3_column_count(made) > 0) {
        error = {SQLITE_MISUSE, QStringLiteral("statements that write and give rows back are not supported")};
        return nullptr;
    }
    return std::unique_ptr<PreparedStatement>(new PreparedStatement(std::move(statement), text));
}

PreparedStatement::PreparedStatement(StatementHandle handle, QString const& text)
    : _handle(std::move(handle))
    , _text(text)
    , _reading(sqlite3_stmt_readonly(_handle.get()) != 0)
{
    int const parameters = sqlite3_bind_parameter_count(_handle.get());
    _placeholders.resize(static_cast<std::size_t>(parameters) + 1);
    _values.resize(_placeholders.size());
    for (int index = 1; index <= parameters; ++index)
        _placeholders[static_cast<std::size_t>(index)] =
            QString::fromUtf8(sqlite3_bind_parameter_name(_handle.get(), index));

    int const columns = sqlite3_column_count(_handle.get());
    _holdsDateTime.reserve(static_cast<std::size_t>(columns));
    for (int column = 0; column < columns; ++column) {
        char const* type = sqlite3_column_decltype(_handle.get(), column);
        _holdsDateTime.push_back(type != nullptr && sqlite3_stricmp(type, "DATETIME") == 0);
    }
}

int PreparedStatement::IndexOf(QString const& placeholder)
{
    if (placeholder.isEmpty())
        return 0;
    // Values mostly come in the order of the placeholders, so the search begins behind the last one.
    std::size_t const count = _placeholders.size();
    for (std::size_t i = 0; i < count; ++i) {
        _lastBound = _lastBound + 1 < count ? _lastBound + 1 : 0;
        if (IsSameText(_placeholders[_lastBound], placeholder))
            return static_cast<int>(_lastBound);
    }
    return 0;
}

std::optional<StatementError> PreparedStatement::Bind(QString const& placeholder, QVariant const& value)
{
    int const index = IndexOf(placeholder);
    if (index == 0)
        return StatementError{SQLITE_RANGE, QStringLiteral("the statement has no placeholder %1").arg(placeholder)};
    QString words;
    int const code = BindAt(index, value, words);
    if (code == SQLITE_OK)
        return std::nullopt;
    return StatementError{code, words.isEmpty() ? words : words.arg(placeholder)};
}

/// Binds values at a place.
struct PreparedStatement::Sink
{
    PreparedStatement& statement;
    int const index;
    QString& words;

    int TakeNull() const { return sqlite3_bind_null(statement._handle.get(), index); }
    int TakeInteger(qint64 value) const { return sqlite3_bind_int64(statement._handle.get(), index, value); }
    int TakeReal(double value) const { return sqlite3_bind_double(statement._handle.get(), index, value); }
    int TakeText(QString const& text) const { return statement.BindText(index, text, words); }
    int TakeBytes(QByteArray const& value) const
    {
        QByteArray& bytes = statement._values[static_cast<std::size_t>(index)];
        bytes = value;
        return sqlite3_bind_blob64(statement._handle.get(),
                                   index,
                                   bytes.constData(),
                                   static_cast<sqlite3_uint64>(bytes.size()),
                                   SQLITE_STATIC);
    }
    int Refuse(QString const& reason) const
    {
        words = reason;
        return SQLITE_MISMATCH;
    }
};

int PreparedStatement::BindAt(int index, QVariant const& value, QString& words)
{
    return TakeValue(value, Sink{*this, index, words});
}

int PreparedStatement::BindText(int index, QString const& text, QString& words)
{
    if (!IsUnicode(text)) {
        words = QStringLiteral("the text for %1 is no Unicode text (it has a lone surrogate)");
        return SQLITE_MISMATCH;
    }
    QByteArray& utf8 = _values[static_cast<std::size_t>(index)];
    utf8 = text.toUtf8();
    int const code = sqlite3_bind_text64(
        _handle.get(), index, utf8.constData(), static_cast<sqlite3_uint64>(utf8.size()), SQLITE_STATIC, SQLITE_UTF8);
    if (code != SQLITE_OK)
        words = QStringLiteral("the text for %1 is too long");
    return code;
}

int PreparedStatement::Step() noexcept
{
    int const code = sqlite3_step(_handle.get());
    if (code != SQLITE_ROW)
        Reset();
    return code;
}

void PreparedStatement::Reset() noexcept
{
    sqlite3_reset(_handle.get());
}

void PreparedStatement::Clear() noexcept
{
    Reset();
    sqlite3_clear_bindings(_handle.get());
    for (QByteArray& value : _values)
        value = QByteArray();
}

QVariant PreparedStatement::Value(int column) const
{
    if (column < 0 || static_cast<std::size_t>(column) >= _holdsDateTime.size())
        return {};
    // One value object instead of calls by column, each of which takes the connection's mutex and looks for errors; the
    // connection is this thread's own.
    sqlite3_value* const value = sqlite3_column_value(_handle.get(), column);
    switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER: {
        qint64 const number = sqlite3_value_int64(value);
        if (_holdsDateTime[static_cast<std::size_t>(column)])
            return FromClockReading(number);
        return static_cast<qlonglong>(number);
    }
    case SQLITE_TEXT: {
        char const* const utf8 = reinterpret_cast<char const*>(sqlite3_value_text(value));
        return FromUtf8(utf8, sqlite3_value_bytes(value));
    }
    case SQLITE_FLOAT:
        return sqlite3_value_double(value);
    case SQLITE_BLOB: {
        auto const* const bytes = static_cast<char const*>(sqlite3_value_blob(value));
        return QByteArray(bytes == nullptr ? "" : bytes, sqlite3_value_bytes(value));
    }
    default:
        return {};
    }
}

QStringList PreparedStatement::ColumnNames() const
{
    QStringList names;
    for (int column = 0; column < sqlite3_column_count(_handle.get()); ++column)
        names.append(QString::fromUtf8(sqlite3_column_name(_handle.get(), column)));
    return names;
}

SqliteValue PreparedStatement::Stored(int column) const
{
    if (column < 0 || static_cast<std::size_t>(column) >= _holdsDateTime.size())
        return {};
    sqlite3_value* const value = sqlite3_column_value(_handle.get(), column);
    auto const bytes = [value](void const* begin) {
        return QByteArray::fromRawData(static_cast<char const*>(begin), sqlite3_value_bytes(value));
    };
    switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
        return qint64(sqlite3_value_int64(value));
    case SQLITE_FLOAT:
        return sqlite3_value_double(value);
    case SQLITE_TEXT:
        return SqliteText{bytes(sqlite3_value_text(value))};
    case SQLITE_BLOB:
        return SqliteBlob{bytes(sqlite3_value_blob(value))};
    default:
        return {};
    }
}

} // namespace sync::database
