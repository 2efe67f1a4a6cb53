#include "benchmarks/Indices.h"

#include "benchmarks/Failure.h"
#include "benchmarks/Report.h"
#include "benchmarks/Runner.h"
#include "benchmarks/SampleStore.h"
#include "benchmarks/SqlContestant.h"
#include "benchmarks/SqliteEngine.h"
#include "benchmarks/StoreSizes.h"

#include <QFile>

#include <algorithm>
#include <chrono>
#include <memory>
#include <vector>

namespace sync::benchmarks {

namespace {

constexpr int Writes = 5000;

using ByHand = SqlContestant<SqliteEngine>;

struct Files
{
    using Record = config::FileConfiguration;
    static constexpr char const* table = "FileConfiguration";
    static SampleRecords Samples(int rows) { return SampleRecords::OfFiles(rows); }
    static Record Sample(SampleRecords const& records, int number) { return records.File(number); }
    // Without the look-up for a duplicate, which an index may be there for.
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

/// A store without one index, or with all of them.
struct Variant
{
    QString dropped;
    double bytesOfRow = 0;
    std::unique_ptr<ByHand> store;
    Measurement adding = {};
};

Variant MakeVariant(StoreSize const& dropped, int rows, QString const& original)
{
    QString const path = original + QLatin1Char('-') + dropped.name;
    Require(QFile::copy(original, path), "copying a sample store failed");
    Variant variant{dropped.name, double(dropped.bytes) / rows, std::make_unique<ByHand>(path)};
    if (dropped.isIndex())
        variant.store->engine().Execute(QStringLiteral("DROP INDEX ") + dropped.name);
    return variant;
}

template <class Family>
void AddTo(Variant& variant, std::vector<typename Family::Record>& records, bool measured)
{
    variant.store->engine().Execute(QStringLiteral("PRAGMA wal_checkpoint(TRUNCATE)"));
    auto const start = std::chrono::steady_clock::now();
    variant.store->Begin();
    for (auto& record : records)
        Family::Add(*variant.store, record);
    variant.store->Commit();
    std::chrono::duration<double, std::micro> const taken = std::chrono::steady_clock::now() - start;
    if (measured)
        variant.adding.microseconds.push_back(taken.count() / Writes);
}

template <class Family>
void AppendLines(QString const& directory, int rows, int repetitions, std::vector<QStringList>& lines)
{
    SampleRecords const samples = Family::Samples(rows);
    SampleStore store(directory, samples);
    QString const table = QLatin1String(Family::table);
    std::vector<StoreSize> const sizes = SizesIn(store.path());

    Variant whole = MakeVariant({table, table, BytesOf(table, sizes)}, rows, store.path());
    std::vector<Variant> variants;
    for (StoreSize const& size : sizes)
        if (size.table == table && size.isIndex())
            variants.push_back(MakeVariant(size, rows, store.path()));

    for (int pass = 0; pass <= repetitions; ++pass) { // the first one warms up
        std::vector<typename Family::Record> records;
        for (int i = 0; i < Writes; ++i)
            records.push_back(Family::Sample(samples, rows + pass * Writes + i));
        AddTo<Family>(whole, records, pass > 0);
        for (Variant& variant : variants)
            AddTo<Family>(variant, records, pass > 0);
    }

    lines.push_back({table + QStringLiteral(", with all indices"),
                     Readable(whole.bytesOfRow),
                     Readable(whole.adding.median()),
                     QString()});
    for (Variant const& variant : variants)
        lines.push_back({QStringLiteral("without ") + variant.dropped,
                         Readable(variant.bytesOfRow),
                         Readable(variant.adding.median()),
                         Readable(whole.adding.median() - variant.adding.median())});
}

} // namespace

QString CostOfIndices(QString const& directory, int rows, int repetitions)
{
    std::vector<QStringList> lines;
    AppendLines<Files>(directory, rows, repetitions, lines);
    AppendLines<Folders>(directory, rows, repetitions, lines);
    return Table({QStringLiteral("at %1 rows").arg(rows),
                  QStringLiteral("bytes of a row"),
                  QStringLiteral("insert µs"),
                  QStringLiteral("the index's share µs")},
                 lines) +
           QLatin1Char('\n') + Environment() + QLatin1Char('\n');
}

} // namespace sync::benchmarks
