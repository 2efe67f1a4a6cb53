#include "tools/findings/StoreSize.h"

#include "database/SqliteDatabaseFactory.h"
#include "interf/IQSqlQueryWrapper.h"
#include "tools/findings/StoreStatements.h"

#include <QFileInfo>

namespace tandry::findings {

using sync::interf::IQSqlQueryWrapper;

StoreSize ReadSize(std::shared_ptr<sync::database::SqliteDatabaseFactory> const& store)
{
    StoreStatements statements(store);
    auto const number = [&](char const* statement) { return statements.Value(QLatin1String(statement)).toLongLong(); };
    StoreSize size;
    size.version = int(number("SELECT user_version FROM pragma_user_version"));
    size.pageBytes = number("SELECT page_size FROM pragma_page_size");
    size.pages = number("SELECT page_count FROM pragma_page_count");
    size.freePages = number("SELECT freelist_count FROM pragma_freelist_count");
    size.fileBytes = QFileInfo(store->path()).size();
    size.logBytes = QFileInfo(store->path() + QStringLiteral("-wal")).size();

    // All cells of an index are rows, and of a table those of its leaves.
    statements.Read(QStringLiteral("SELECT stat.name, object.type = 'index', sum(stat.pgsize) AS bytes, "
                                   "sum(CASE WHEN object.type = 'index' OR stat.pagetype = 'leaf' THEN stat.ncell END) "
                                   "FROM dbstat AS stat LEFT JOIN sqlite_schema AS object ON object.name = stat.name "
                                   "GROUP BY stat.name ORDER BY bytes DESC, stat.name"),
                    {},
                    [&](IQSqlQueryWrapper& row) {
                        size.objects.push_back({row.value(0).toString(),
                                                row.value(1).toInt() != 0,
                                                row.value(3).toLongLong(),
                                                row.value(2).toLongLong()});
                    });
    return size;
}

} // namespace tandry::findings
