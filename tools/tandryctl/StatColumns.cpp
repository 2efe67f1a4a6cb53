#include "StatColumns.h"

#include "database/SqliteDatabaseFactory.h"

namespace tandryctl {

using tandry::findings::ObjectSize;

namespace {

QVariantList SizesOf(std::vector<ObjectSize> const& objects)
{
    QVariantList list;
    for (ObjectSize const& object : objects)
        list.append(QVariantMap{{QStringLiteral("name"), object.name},
                                {QStringLiteral("kind"), QString(QLatin1String(object.isIndex ? "index" : "table"))},
                                {QStringLiteral("rows"), object.rows},
                                {QStringLiteral("bytes"), object.bytes}});
    return list;
}

} // namespace

StoreFacts FactsOf(std::shared_ptr<sync::database::SqliteDatabaseFactory> const& store)
{
    bool const usesLog = store->journalMode() == sync::database::JournalMode::WriteAheadLog;
    return {store->path(), QLatin1String(usesLog ? "wal" : "delete"), tandry::findings::ReadSize(store)};
}

Columns<StoreFacts> const& StatColumns(bool withObjects)
{
    using Facts = StoreFacts;
    static Columns<Facts> const facts{
        {"store", Shown::Always, [](Facts const& f) { return f.path; }},
        {"version", Shown::Always, [](Facts const& f) { return f.size.version; }},
        {"journalMode", Shown::Always, [](Facts const& f) { return f.journalMode; }},
        {"fileBytes", Shown::Always, [](Facts const& f) { return f.size.fileBytes; }},
        {"logBytes", Shown::Always, [](Facts const& f) { return f.size.logBytes; }},
        {"pageBytes", Shown::Always, [](Facts const& f) { return f.size.pageBytes; }},
        {"pages", Shown::Always, [](Facts const& f) { return f.size.pages; }},
        {"freePages", Shown::Always, [](Facts const& f) { return f.size.freePages; }},
    };
    static Columns<Facts> const all =
        facts + Columns<Facts>{{"objects", Shown::Always, [](Facts const& f) { return SizesOf(f.size.objects); }}};
    return withObjects ? all : facts;
}

} // namespace tandryctl
