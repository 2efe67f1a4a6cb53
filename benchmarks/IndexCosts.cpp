#include "benchmarks/IndexCosts.h"

#include "benchmarks/Failure.h"
#include "benchmarks/Report.h"
#include "benchmarks/Runner.h"
#include "benchmarks/SqlBackend.h"
#include "benchmarks/SqliteApi.h"
#include "benchmarks/SqliteSampleStore.h"

#include <QFile>

#include <algorithm>
#include <chrono>
#include <memory>
#include <vector>

namespace sync::benchmarks {

namespace {

constexpr int Writes = 5000;

using ByHand = SqlBackend<SqliteApi>;

struct Files
{
    using Record = config::FileConfiguration;
    static constexpr char const* table = "FileConfiguration";
    static SampleRecords Samples(int rows) { return SampleRecords::OfFiles(rows); }
    static Record Sample(SampleRecords const& records, int number) { return records.File(number); }
    // Without the look-up for a duplicate, which may need the index.
    static void Add(ByHand& store, Record& file) { store.InsertFile(file); }
};

struct Folders
{
    using Record = config::FolderConfiguration;
    static constexpr char const* table = "FolderConfiguration";
    static SampleRecords Samples(int rows) { return SampleRecords::OfFolders(rows); }
    static Record Sample(SampleRecords const& records, int number) { return records.Folder(number); }
    static void Add(ByHand& store, Record& folder) { store.AddFolder(folder); }
};

/// A copy of the store without one index, or with all.
struct Variant
{
    QString dropped;
    double bytesOfRow = 0;
    std::unique_ptr<ByHand> store;
    std::vector<double> microseconds = {};
};

Variant MakeVariant(SqliteSampleStore::Part const& dropped, int rows, QString const& original)
{
    QString const path = original + QLatin1Char('-') + dropped.name;
    Require(QFile::copy(original, path), "copying a sample store failed");
    Variant variant{dropped.name, double(dropped.bytes) / rows, std::make_unique<ByHand>(path)};
    if (dropped.isIndex())
        variant.store->api().Execute(QStringLiteral("DROP INDEX ") + dropped.name);
    return variant;
}

QString Line(QString const& name, QString const& bytes, QString const& time, QString const& share)
{
    constexpr int nameWidth = 60, width = 18;
    return name.leftJustified(nameWidth) + bytes.rightJustified(width) + time.rightJustified(width) +
           share.rightJustified(width) + QLatin1Char('\n');
}

QString Number(double value)
{
    return QString::number(value, 'f', 2);
}

template <class Kind>
void AddTo(Variant& variant, std::vector<typename Kind::Record>& records, bool measured)
{
    variant.store->api().Execute(QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"));
    auto const start = std::chrono::steady_clock::now();
    variant.store->Begin();
    for (auto& record : records)
        Kind::Add(*variant.store, record);
    variant.store->Commit();
    std::chrono::duration<double, std::micro> const taken = std::chrono::steady_clock::now() - start;
    if (measured)
        variant.microseconds.push_back(taken.count() / Writes);
}

template <class Kind>
QString Lines(QString const& directory, int rows, int repetitions)
{
    SampleRecords const samples = Kind::Samples(rows);
    SqliteSampleStore store(directory, samples);
    QString const table = QLatin1String(Kind::table);

    Variant whole = MakeVariant({table, table, store.BytesOf(table)}, rows, store.path());
    std::vector<Variant> variants;
    for (SqliteSampleStore::Part const& part : store.Parts())
        if (part.table == table && part.isIndex())
            variants.push_back(MakeVariant(part, rows, store.path()));

    for (int pass = 0; pass <= repetitions; ++pass) { // the first one warms up
        std::vector<typename Kind::Record> records;
        records.reserve(Writes);
        for (int i = 0; i < Writes; ++i)
            records.push_back(Kind::Sample(samples, rows + pass * Writes + i));
        AddTo<Kind>(whole, records, pass > 0);
        for (Variant& variant : variants)
            AddTo<Kind>(variant, records, pass > 0);
    }

    double const time = Median(whole.microseconds);
    QString lines =
        Line(table + QStringLiteral(", with all indices"), Number(whole.bytesOfRow), Number(time), QString());
    for (Variant const& variant : variants) {
        double const without = Median(variant.microseconds);
        lines += Line(QStringLiteral("without ") + variant.dropped,
                      Number(variant.bytesOfRow),
                      Number(without),
                      Number(time - without));
    }
    return lines;
}

} // namespace

QString IndexCosts(QString const& directory, int rows, int repetitions)
{
    return Line(QStringLiteral("at %1 rows").arg(rows),
                QStringLiteral("bytes of a row"),
                QStringLiteral("insert µs"),
                QStringLiteral("index's share µs")) +
           Lines<Files>(directory, rows, repetitions) + Lines<Folders>(directory, rows, repetitions) +
           Environment(MakeSqliteEngine(directory)->version()) + QLatin1Char('\n');
}

} // namespace sync::benchmarks
