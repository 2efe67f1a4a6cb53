#include "tools/findings/StoreRecovery.h"

#include "database/SqliteDatabaseFactory.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "interf/IQSqlQueryWrapper.h"
#include "tools/findings/IdColumns.h"
#include "tools/findings/PageFile.h"
#include "tools/findings/RowFinder.h"
#include "tools/findings/TableForm.h"
#include "tools/findings/TemporaryFolder.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <memory>

namespace tandry::findings {

using sync::database::SqliteDatabaseFactory;
using sync::interf::IQSqlQueryWrapper;

namespace {

/// Rows in one transaction: enough for speed, and few enough for a short log.
constexpr int PortionRows = 20'000;

constexpr int MostId = 2147483647;

/// The new store while it is filled, under another name.
class NewStore
{
public:
    /// Returns null on failure.
    static std::unique_ptr<NewStore> Make(QString const& path, RecoveryMode mode, QString& error)
    {
        std::unique_ptr<NewStore> store(new NewStore(path, mode));
        if (!store->_folder.isValid()) {
            error = QStringLiteral("%1 cannot be created: %2").arg(path, store->_folder.errorString());
            return nullptr;
        }
        store->_factory = SqliteDatabaseFactory::Open(store->_folder.filePath(QStringLiteral("store.db")), &error);
        if (store->_factory == nullptr)
            return nullptr;
        return store;
    }

    /// Returns the store's own tables, in the order of the schema.
    std::vector<TableForm> Tables()
    {
        std::vector<TableForm> tables;
        auto const query = _factory->CreateQuery();
        static_cast<void>(query->prepare(QStringLiteral(
            "SELECT name, sql FROM sqlite_schema WHERE type = 'table' AND name NOT LIKE 'sqlite%' ORDER BY rowid")));
        if (!query->exec())
            return tables;
        while (query->next())
            tables.push_back({query->value(0).toString(), _ColumnsIn(query->value(1).toString())});
        return tables;
    }

    /// Fills the table with the rows that come; returns nothing if the store fails.
    std::optional<RecoveredTable> Fill(int number, TableForm const& table, RowFinder& finder)
    {
        RecoveredTable result;
        result.name = table.name;
        if (!_Run(QStringLiteral("DELETE FROM ") + table.name))
            return std::nullopt;
        std::shared_ptr<IQSqlQueryWrapper> const insert = _factory->CreateQuery();
        static_cast<void>(insert->prepare(_InsertText(table)));
        std::vector<QString> placeholders;
        for (ColumnForm const& column : table.columns)
            placeholders.push_back(QLatin1Char(':') + column.name);

        std::vector<qint64> ids;
        auto const database = _factory->CreateDatabase();
        bool isOpen = database->transaction();
        bool works = isOpen;
        finder.ReadRows(number, [&](qint64 rowId, std::vector<QVariant> const& values) {
            if (!works || rowId < 1 || rowId > MostId)
                return false;
            for (std::size_t i = 0; i < values.size(); ++i)
                insert->bindValue(placeholders[i], table.columns[i].isId ? QVariant(qlonglong(rowId)) : values[i]);
            works = insert->exec();
            if (!works || insert->numRowsAffected() == 0)
                return false;
            ids.push_back(rowId);
            if (ids.size() % PortionRows == 0) {
                isOpen = database->commit() && database->transaction();
                works = isOpen;
            }
            return true;
        });
        works = works && database->commit();
        if (!works && isOpen)
            static_cast<void>(database->rollback()); // the store goes as a whole
        if (!works)
            return std::nullopt;

        std::sort(ids.begin(), ids.end());
        result.recovered = static_cast<qint64>(ids.size());
        result.lost = finder.CountLost(number, ids);
        result.ambiguous = finder.ambiguousRows(number);
        result.doubtful = finder.doubtfulRows(number);
        return result;
    }

    /// Makes sure that no id is given again that a row had, has, or is still named by.
    bool RaiseSequence(std::vector<TableForm> const& tables, TableForm const& target, std::optional<qint64> given)
    {
        qint64 highest = std::max<qint64>(_Number(QStringLiteral("SELECT max(id) FROM ") + target.name), 0);
        if (given)
            highest = std::max(highest, *given);
        for (TableForm const& table : tables) {
            for (IdColumn const& idColumn : IdColumns) {
                QString const column = QLatin1String(idColumn.column);
                if (table.IndexOf(column) >= 0 && target.name == QLatin1String(idColumn.target))
                    highest = std::max(
                        highest,
                        _Number(QStringLiteral("SELECT max(%1) FROM %2 WHERE typeof(%1) = 'integer' AND %1 <= %3")
                                    .arg(column, table.name)
                                    .arg(MostId)));
            }
        }
        highest = std::min<qint64>(highest, MostId);
        auto const run = [&](char const* statement) {
            auto const query = _factory->CreateQuery();
            static_cast<void>(query->prepare(QString::fromLatin1(statement)));
            query->bindValue(QStringLiteral(":seq"), qlonglong(highest));
            query->bindValue(QStringLiteral(":name"), target.name);
            return query->exec();
        };
        return run("UPDATE sqlite_sequence SET seq = :seq WHERE name = :name") &&
               run("INSERT INTO sqlite_sequence (name, seq) SELECT :name, :seq WHERE :seq > 0 AND NOT EXISTS "
                   "(SELECT 1 FROM sqlite_sequence WHERE name = :name)");
    }

    bool HasDefaultSchedule()
    {
        return _Number(QStringLiteral("SELECT count(*) FROM Schedules WHERE folderConfigurationId = 0")) > 0;
    }

    /// Gives the store its own name, unless this is a dry run.
    bool Publish(QString& error)
    {
        return _mode == RecoveryMode::DryRun ? _factory->DryRunBackup(_path, &error) : _factory->Backup(_path, &error);
    }

    QString LastError() const
    {
        auto const failure = _factory->LastError();
        return failure ? failure->text : QStringLiteral("the new store could not be written");
    }

private:
    NewStore(QString const& path, RecoveryMode mode)
        : _path(path)
        , _mode(mode)
        , _folder(mode == RecoveryMode::DryRun ? TemporaryFolder().filePath(QStringLiteral("tandry-recovery-XXXXXX"))
                                               : QFileInfo(path).absolutePath() + QStringLiteral("/.recovery-XXXXXX"))
    {}

    /// Returns the columns that a CREATE TABLE statement of the library names; these have no commas in their
    /// constraints.
    static std::vector<ColumnForm> _ColumnsIn(QString const& create)
    {
        std::vector<ColumnForm> columns;
        QString const list = create.section(QLatin1Char('('), 1);
        for (QString const& definition : list.left(list.lastIndexOf(QLatin1Char(')'))).split(QLatin1Char(','))) {
            QStringList const words = definition.simplified().split(QLatin1Char(' '));
            columns.push_back({words.first(),
                               words.value(1) == QLatin1String("TEXT"),
                               definition.contains(QLatin1String("INTEGER PRIMARY KEY"))});
        }
        return columns;
    }

    /// A row whose id is there already leaves the first one as it is.
    static QString _InsertText(TableForm const& table)
    {
        QStringList columns;
        QStringList placeholders;
        for (ColumnForm const& column : table.columns) {
            columns.append(column.name);
            placeholders.append(QLatin1Char(':') + column.name);
        }
        QString const separator = QStringLiteral(", ");
        return QStringLiteral("INSERT OR IGNORE INTO %1 (%2) VALUES (%3)")
            .arg(table.name, columns.join(separator), placeholders.join(separator));
    }

    bool _Run(QString const& statement)
    {
        auto const query = _factory->CreateQuery();
        return query->prepare(statement) && query->exec();
    }

    qint64 _Number(QString const& statement)
    {
        auto const query = _factory->CreateQuery();
        return query->prepare(statement) && query->exec() && query->next() ? query->value(0).toLongLong() : 0;
    }

    QString const _path;
    RecoveryMode const _mode;
    /// In the folder of the new store, which has room for it, and accessible by its owner only.
    QTemporaryDir _folder;
    std::shared_ptr<SqliteDatabaseFactory> _factory; // closed before its folder goes
};

QStringList RemarksOn(PageFile const& file)
{
    QStringList remarks;
    if (!file.hasHeader())
        remarks.append(
            QStringLiteral("the header of the file is damaged; it was read as pages of %1 bytes").arg(file.pageSize()));
    if (file.usesJournal())
        remarks.append(QStringLiteral("a transaction that was never committed was rolled back in the new store"));
    return remarks;
}

} // namespace

std::optional<RecoveryReport>
RecoverStore(QString const& damagedPath, QString const& newPath, RecoveryMode mode, QString& error)
{
    QFileInfo const target(newPath);
    if (target.exists() || target.isSymLink()) {
        error = QStringLiteral("%1 exists already").arg(newPath);
        return std::nullopt;
    }
    QString reason;
    std::unique_ptr<PageFile> const file = PageFile::Open(damagedPath, reason);
    if (file == nullptr) {
        error = QStringLiteral("%1 cannot be recovered: %2").arg(damagedPath, reason);
        return std::nullopt;
    }
    std::unique_ptr<NewStore> const store = NewStore::Make(newPath, mode, error);
    if (store == nullptr)
        return std::nullopt;
    std::vector<TableForm> const tables = store->Tables();
    if (tables.empty()) {
        error = store->LastError();
        return std::nullopt;
    }
    RowFinder finder(*file, tables);
    if (!finder.FoundAnything()) {
        error = QStringLiteral("%1 cannot be recovered: no table of a store was found in it").arg(damagedPath);
        return std::nullopt;
    }

    RecoveryReport report;
    report.remarks = RemarksOn(*file);
    for (std::size_t i = 0; i < tables.size(); ++i) {
        std::optional<RecoveredTable> const table = store->Fill(static_cast<int>(i), tables[i], finder);
        if (!table) {
            error = store->LastError();
            return std::nullopt;
        }
        report.tables.push_back(*table);
        if (table->ambiguous > 0)
            report.remarks.append(QStringLiteral("%1 rows in %2 may belong to another table with the same columns")
                                      .arg(table->ambiguous)
                                      .arg(table->name));
        if (table->doubtful > 0)
            report.remarks.append(QStringLiteral("%1 rows in %2 may have been removed before the damage: the list of "
                                                 "free pages is lost, and removed rows were not overwritten")
                                      .arg(table->doubtful)
                                      .arg(table->name));
    }
    for (std::size_t i = 0; i < tables.size(); ++i) {
        if (!store->RaiseSequence(tables, tables[i], finder.HighestId(static_cast<int>(i)))) {
            error = store->LastError();
            return std::nullopt;
        }
    }
    for (std::size_t i = 0; i < tables.size(); ++i) {
        qint64 const leftOut = finder.leftOutRows(static_cast<int>(i));
        if (leftOut > 0)
            report.remarks.append(
                QStringLiteral("%1 rows in %2 were left out because they may have been removed before "
                               "the damage")
                    .arg(leftOut)
                    .arg(tables[i].name));
    }
    if (!store->HasDefaultSchedule())
        report.remarks.append(QStringLiteral("there is no default schedule among the recovered rows"));
    if (!store->Publish(error))
        return std::nullopt;
    return report;
}

} // namespace tandry::findings
