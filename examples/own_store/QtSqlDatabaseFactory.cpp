#include "QtSqlDatabaseFactory.h"

#include "config/RecordColumns.h"
#include "database/ScopeParticipant.h"
#include "database/TransactionalScope.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "interf/IQSqlQueryWrapper.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QStringList>

#include <utility>

namespace own_store {

using namespace sync::config;
using sync::database::TransactionalScope;

namespace {

/// The columns of a table except its id, as CREATE TABLE declares them.
template <class Record>
QString Declarations()
{
    QStringList declarations;
    for (RecordColumn<Record> const& column : RecordColumns<Record>()) {
        switch (column.kind()) {
        case ColumnKind::Integer:
        case ColumnKind::LongInteger:
        case ColumnKind::Enumeration:
        case ColumnKind::BitField:
            declarations.append(column.name() + QStringLiteral(" INTEGER"));
            break;
        case ColumnKind::Text:
        case ColumnKind::Time:
        case ColumnKind::Properties:
        case ColumnKind::Links:
            declarations.append(column.name() + QStringLiteral(" TEXT"));
        }
    }
    declarations.removeFirst();
    return declarations.join(QStringLiteral(", "));
}

struct Table
{
    char const* name;
    QString (*columns)();
};

constexpr Table Tables[] = {
    {"ServerConfiguration", Declarations<ServerConfiguration>},
    {"AuthenticationConfiguration", Declarations<AuthenticationConfiguration>},
    {"ProductConfiguration", Declarations<ProductConfiguration>},
    {"FolderConfiguration", Declarations<FolderConfiguration>},
    {"FileConfiguration", Declarations<FileConfiguration>},
    {"GeneratedFileConfiguration", Declarations<FileConfiguration>},
    {"BaseFileConfiguration", Declarations<FileConfiguration>},
    {"Schedules", Declarations<ScheduleEntry>},
};

/// Whether SQLite stores a UTF-16 text unchanged: it replaces lone surrogates, U+FFFE and U+FFFF by U+FFFD.
bool IsStoredUnchanged(QString const& text)
{
    for (int i = 0; i < text.size(); ++i) {
        bool const isPair = text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
        if ((text[i].isSurrogate() && !isPair) || text[i].unicode() >= 0xFFFE)
            return false;
        i += isPair ? 1 : 0;
    }
    return true;
}

} // namespace

/// The connection with its transaction, shared by the factory and its queries.
class QtSqlConnection : public sync::database::ScopeParticipant, public std::enable_shared_from_this<QtSqlConnection>
{
public:
    explicit QtSqlConnection(QString const& path)
        : _name(QStringLiteral("store %1").arg(_count++))
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), _name);
        database.setDatabaseName(path);
        // A lock of another connection belongs to the same thread, so waiting is pointless.
        database.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=50"));
    }

    ~QtSqlConnection() override
    {
        if (_transaction == Transaction::Scope) {
            TransactionalScope::Leave(*this);
            static_cast<void>(RunStatement("COMMIT"));
        }
        database().close();
        QSqlDatabase::removeDatabase(_name);
    }

    QSqlDatabase database() const { return QSqlDatabase::database(_name, false); }

    bool Open()
    {
        if (!database().open())
            return false;
        QSqlQuery version(QStringLiteral("PRAGMA user_version"), database());
        if (!version.next())
            return false;
        return version.value(0).toInt() == 1 || CreateTables();
    }

    /// Call it before each statement that writes.
    bool BeginOpenScope()
    {
        if (_transaction != Transaction::None || TransactionalScope::Depth() == 0)
            return true;
        if (!RunStatement("BEGIN IMMEDIATE"))
            return false;
        _transaction = Transaction::Scope;
        TransactionalScope::Join(*this);
        return true;
    }

    bool CommitScope() noexcept override
    {
        _transaction = Transaction::None;
        return RunStatement("COMMIT");
    }

    bool BeginClientTransaction()
    {
        if (_transaction != Transaction::None || TransactionalScope::Depth() > 0 || !RunStatement("BEGIN IMMEDIATE"))
            return false;
        _transaction = Transaction::Client;
        return true;
    }

    bool EndClientTransaction(char const* statement)
    {
        if (_transaction != Transaction::Client)
            return false;
        _transaction = Transaction::None;
        return RunStatement(statement);
    }

private:
    enum class Transaction
    {
        None,
        Scope,
        Client,
    };

    bool RunStatement(char const* statement) const
    {
        return QSqlQuery(database()).exec(QString::fromLatin1(statement));
    }

    bool CreateTables() const
    {
        QStringList statements{QStringLiteral("BEGIN IMMEDIATE")};
        for (Table const& table : Tables)
            statements.append(QStringLiteral("CREATE TABLE %1 (id INTEGER PRIMARY KEY AUTOINCREMENT, %2)")
                                  .arg(QLatin1String(table.name), table.columns()));
        statements += {QStringLiteral("INSERT INTO Schedules (folderConfigurationId, syncScheduleType, syncInterval) "
                                      "VALUES (0, 0, 30)"),
                       QStringLiteral("PRAGMA user_version = 1"),
                       QStringLiteral("COMMIT")};
        for (QString const& statement : std::as_const(statements)) {
            if (!QSqlQuery(database()).exec(statement))
                return false;
        }
        return true;
    }

    static inline int _count = 0;

    QString const _name;
    Transaction _transaction = Transaction::None;
};

namespace {

class QtSqlQueryWrapper : public sync::interf::IQSqlQueryWrapper
{
public:
    explicit QtSqlQueryWrapper(std::shared_ptr<QtSqlConnection> connection)
        : _connection(std::move(connection))
        , _query(_connection->database())
    {}

    bool prepare(QString const& statement) override
    {
        _query = QSqlQuery(_connection->database());
        _query.setForwardOnly(true);
        _refused = false;
        _writes = !statement.startsWith(QLatin1String("SELECT"));
        _prepared = _query.prepare(statement);
        if (!_prepared)
            return false;
        // Qt refuses to run a statement with an unbound placeholder.
        static QRegularExpression const placeholder(QStringLiteral(":[A-Za-z]+"));
        for (auto match = placeholder.globalMatch(statement); match.hasNext();)
            _query.bindValue(match.next().captured(), QVariant());
        return true;
    }

    void bindValue(QString const& placeholder, QVariant const& value) override
    {
        if (value.userType() == QMetaType::QDateTime) {
            QDateTime date = value.toDateTime();
            date.setTimeSpec(Qt::UTC); // keep the clock reading
            _query.bindValue(placeholder, date.isValid() ? date.toString(Qt::ISODateWithMs) : QVariant());
            return;
        }
        if (value.userType() == QMetaType::QString && !IsStoredUnchanged(value.toString()))
            _refused = true;
        _query.bindValue(placeholder, value);
    }

    bool exec() override
    {
        if (!_prepared || _refused || (_writes && !_connection->BeginOpenScope()))
            return false;
        bool const succeeded = _query.exec();
        _lastInsertId = _query.lastInsertId(); // Qt reads the connection's last id, which other queries change
        return succeeded;
    }

    bool next() override { return _query.next(); }
    bool isValid() override { return _query.isValid(); }

    QVariant value(int column) override
    {
        // Qt would print a warning for a missing value.
        return _query.isValid() && column >= 0 && column < _query.record().count() ? _query.value(column) : QVariant();
    }

    QString lastError() override { return _query.lastError().isValid() ? _query.lastError().text() : QString(); }
    void finish() override { _query.finish(); }
    QVariant lastInsertId() override { return _lastInsertId; }
    int numRowsAffected() override { return _query.numRowsAffected(); }

private:
    std::shared_ptr<QtSqlConnection> _connection;
    QSqlQuery _query; // must be destroyed before the connection
    QVariant _lastInsertId;
    bool _prepared = false;
    bool _refused = false;
    bool _writes = false;
};

class QtSqlDatabaseWrapper : public sync::interf::IQSqlDatabaseWrapper
{
public:
    explicit QtSqlDatabaseWrapper(std::shared_ptr<QtSqlConnection> connection)
        : _connection(std::move(connection))
    {}

    bool transaction() override { return _connection->BeginClientTransaction(); }
    bool commit() override { return _connection->EndClientTransaction("COMMIT"); }
    bool rollback() override { return _connection->EndClientTransaction("ROLLBACK"); }

private:
    std::shared_ptr<QtSqlConnection> _connection;
};

} // namespace

std::shared_ptr<QtSqlDatabaseFactory> QtSqlDatabaseFactory::Open(QString const& path)
{
    auto connection = std::make_shared<QtSqlConnection>(path);
    if (!connection->Open())
        return nullptr;
    return std::shared_ptr<QtSqlDatabaseFactory>(new QtSqlDatabaseFactory(std::move(connection)));
}

QtSqlDatabaseFactory::QtSqlDatabaseFactory(std::shared_ptr<QtSqlConnection> connection)
    : _connection(std::move(connection))
{}

QtSqlDatabaseFactory::~QtSqlDatabaseFactory() = default;

std::shared_ptr<sync::interf::IQSqlDatabaseWrapper> QtSqlDatabaseFactory::CreateDatabase()
{
    return std::make_shared<QtSqlDatabaseWrapper>(_connection);
}

std::shared_ptr<sync::interf::IQSqlQueryWrapper> QtSqlDatabaseFactory::CreateQuery()
{
    return std::make_shared<QtSqlQueryWrapper>(_connection);
}

} // namespace own_store
