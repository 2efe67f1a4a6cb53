#include "tools/findings/Fix.h"

#include "database/SqliteDatabaseFactory.h"
#include "interf/IQSqlDatabaseWrapper.h"
#include "tools/findings/Examination.h"
#include "tools/findings/FindingTable.h"
#include "tools/findings/FreePath.h"
#include "tools/findings/TableNames.h"

#include <QDateTime>

#include <algorithm>
#include <cstring>

namespace tandry::findings {

namespace {

FindingEntry const& EntryOf(FindingKind const& kind)
{
    return *std::find_if(FindingTable().begin(), FindingTable().end(), [&](FindingEntry const& entry) {
        return std::strcmp(entry.kind.code, kind.code) == 0;
    });
}

/// Returns a free name beside the store.
QString BackupPath(QString const& store, FindingKind const& kind)
{
    QString const name = QStringLiteral("%1.%2-before-%3")
                             .arg(store,
                                  QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyy-MM-dd'T'HH-mm-ss'Z'")),
                                  QLatin1String(kind.code));
    return FreePath(name);
}

/// A client transaction that is rolled back unless it is committed.
class Transaction
{
public:
    explicit Transaction(sync::database::SqliteDatabaseFactory& store)
        : _database(store.CreateDatabase())
        , _isOpen(_database->transaction())
    {}
    ~Transaction()
    {
        if (_isOpen)
            static_cast<void>(_database->rollback()); // the first failure is what counts
    }

    bool isOpen() const { return _isOpen; }
    bool Commit()
    {
        _isOpen = false;
        return _database->commit();
    }

private:
    Q_DISABLE_COPY_MOVE(Transaction)

    std::shared_ptr<sync::interf::IQSqlDatabaseWrapper> const _database;
    bool _isOpen;
};

/// Adds folders that a fix has added for others.
void ReportAddedFolders(Examination& examination, int highestId, std::vector<FixedRow>& fixed)
{
    std::vector<FoundRow> added;
    examination.FindRows(
        Folders, QStringLiteral("bad.id > :highest"), QStringLiteral("NULL"), {{":highest", highestId}}, added);
    for (FoundRow const& row : added)
        fixed.push_back({row, QStringLiteral("added")});
}

void Apply(Examination& examination, FindingEntry const& entry, FixReport& report)
{
    int const highestId =
        examination.statements().Value(QStringLiteral("SELECT max(id) FROM FolderConfiguration")).toInt();
    examination.Forget();
    entry.fix(examination, examination.Find(entry), report.fixed);
    ReportAddedFolders(examination, highestId, report.fixed);
    examination.Forget();
    report.left = examination.Find(entry);
}

} // namespace

std::optional<FixReport>
Fix(std::shared_ptr<sync::database::SqliteDatabaseFactory> const& store, FindingKind const& kind, FixMode mode)
{
    FindingEntry const& entry = EntryOf(kind);
    FixReport report;
    Examination examination(store);
    bool const isNeeded = entry.fix != nullptr && !examination.Find(entry).empty();
    if (!examination.works())
        return std::nullopt;
    if (!isNeeded)
        return report;

    if (mode == FixMode::BackUpAndFix) {
        report.backup = BackupPath(store->path(), kind);
        if (!store->Backup(report.backup))
            return std::nullopt;
    }
    Transaction transaction(*store);
    if (!transaction.isOpen())
        return std::nullopt;
    Apply(examination, entry, report); // finds the rows anew: others may have written meanwhile
    if (!examination.works() || (mode == FixMode::BackUpAndFix && !transaction.Commit()))
        return std::nullopt;
    return report;
}

} // namespace tandry::findings
