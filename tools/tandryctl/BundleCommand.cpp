#include "CarrySummary.h"
#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "FindingColumns.h"
#include "NewFile.h"
#include "Progress.h"
#include "ServerStore.h"
#include "StatColumns.h"
#include "StoreFailure.h"
#include "Text.h"

#include "database/SqliteDatabaseFactory.h"
#include "tools/carry/Bundle.h"
#include "tools/carry/Pseudonyms.h"
#include "tools/carry/Snapshot.h"
#include "tools/carry/TarFile.h"
#include "tools/findings/StoreStatements.h"
#include "tools/findings/TemporaryFolder.h"

#include <QBuffer>
#include <QFile>
#include <QSysInfo>
#include <QTemporaryDir>

namespace tandryctl {

using sync::database::SqliteDatabaseFactory;
using sync::database::StoreError;
using sync::database::StoreErrorKind;
using tandry::carry::Pseudonyms;
using tandry::carry::RecordCounts;
using tandry::carry::Snapshot;
using tandry::carry::TarFile;
using tandry::findings::Finding;
using tandry::findings::TemporaryFolder;

namespace {

struct Bundled
{
    QString file;
    RecordCounts counts;
};

/// What ran where.
struct Versions
{
    QString sqlite;
};

template <class Record, class Range>
QByteArray JsonOf(Columns<Record> const& columns, Range const& records)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    Output output(buffer, OutputFormat::Json);
    output.List(columns, records);
    static_cast<void>(output.Flush()); // memory takes everything
    return buffer.data();
}

Columns<Versions> const& VersionColumns()
{
    static Columns<Versions> const columns{
        {"tandryctl", Shown::Always, [](Versions const&) { return QStringLiteral(TANDRYCTL_VERSION); }},
        {"qt", Shown::Always, [](Versions const&) { return QString::fromLatin1(qVersion()); }},
        {"sqlite", Shown::Always, [](Versions const& v) { return v.sqlite; }},
        {"system", Shown::Always, [](Versions const&) { return QSysInfo::prettyProductName(); }},
        {"kernel", Shown::Always, [](Versions const&) { return QSysInfo::kernelVersion(); }},
        {"processor", Shown::Always, [](Versions const&) { return QSysInfo::currentCpuArchitecture(); }},
    };
    return columns;
}

/// The store with the pseudonyms, in the temporary folder, while it is filled and after that.
class BundledStore
{
public:
    BundledStore()
        : _folder(TemporaryFolder().filePath(QStringLiteral("tandry-bundle-XXXXXX")))
    {
        StoreError error;
        error.kind = StoreErrorKind::ReadOnly;
        error.text =
            QStringLiteral("%1 cannot hold the bundle: %2").arg(TemporaryFolder().path(), _folder.errorString());
        if (_folder.isValid())
            _store = SqliteDatabaseFactory::Open(path(), error);
        if (_store == nullptr)
            throw CopyFailure(error);
    }

    QString path() const { return _folder.filePath(QStringLiteral("store.db")); }
    std::shared_ptr<SqliteDatabaseFactory> const& store() const { return _store; }

    /// Leaves one file, if nobody else has a share of the store.
    void Close() { _store.reset(); }

private:
    QTemporaryDir _folder;
    std::shared_ptr<SqliteDatabaseFactory> _store; // closed before its folder goes
};

void Check(SqliteDatabaseFactory const& store)
{
    if (auto const error = store.LastError())
        throw StoreFailure(*error);
}

/// Fills the store, and returns the number of records.
RecordCounts Fill(BundledStore& bundled, Session& session)
{
    StoreError error;
    auto const snapshot = Snapshot::Take(*session.fileStore(), error);
    if (snapshot == nullptr)
        throw CopyFailure(error);
    Pseudonyms pseudonyms;
    Progress progress(QStringLiteral("replacing"), "records");
    auto const counts = tandry::carry::CopyWithPseudonyms(
        snapshot->store(), bundled.store(), pseudonyms, [&progress] { progress.Advance(); });
    Check(*snapshot->store());
    if (auto const bundledError = bundled.store()->LastError())
        throw CopyFailure(*bundledError);
    return *counts;
}

/// What 'doctor' says of the bundled store: the rows of the real one, without their names.
QByteArray FindingsIn(BundledStore const& bundled)
{
    std::optional<std::vector<Finding>> const findings = tandry::findings::FindAll(bundled.store());
    Check(*bundled.store());
    return JsonOf(FindingColumns(), *findings);
}

/// What 'stat' says of the real store, without its path.
QByteArray FactsIn(Session& session)
{
    StoreFacts facts = session.Checked(FactsOf(session.fileStore()));
    facts.path = QString();
    return JsonOf(StatColumns(true), QVector<StoreFacts>{facts});
}

QByteArray VersionsOf(BundledStore const& bundled)
{
    tandry::findings::StoreStatements statements(bundled.store());
    Versions const versions{statements.Value(QStringLiteral("SELECT sqlite_version()")).toString()};
    return JsonOf(VersionColumns(), QVector<Versions>{versions});
}

ExitStatus RunBundle(Session& session, QString const& path)
{
    NewFile file(path);
    BundledStore bundled;
    RecordCounts const counts = Fill(bundled, session);
    QByteArray const findings = FindingsIn(bundled);
    QByteArray const facts = FactsIn(session);
    QByteArray const versions = VersionsOf(bundled);
    bundled.Close();

    TarFile tar(file.device());
    auto const add = [&](char const* name, QByteArray bytes) {
        QBuffer content(&bytes);
        return content.open(QIODevice::ReadOnly) && tar.Add(name, content);
    };
    QFile store(bundled.path());
    bool const isWritten = store.open(QIODevice::ReadOnly) && tar.Add("store.db", store) &&
                           add("doctor.json", findings) && add("stat.json", facts) && add("versions.json", versions) &&
                           tar.Finish();
    if (!isWritten)
        throw file.failure();
    file.Finish();

    static Columns<Bundled> const columns{
        {"file", Shown::Always, [](Bundled const& b) { return b.file; }},
        {"records", Shown::Always, [](Bundled const& b) { return ToMap(b.counts); }},
    };
    session.output().Report(QStringLiteral("bundled %1 in %2; all names and other texts have been replaced")
                                .arg(Counted(SumOf(counts), "record", "records"), Quoted(path)),
                            columns,
                            Bundled{path, counts});
    return ExitStatus::Done;
}

} // namespace

void AddBundleCommand(Command& top)
{
    auto const file = std::make_shared<QString>();
    top.Add("bundle", "Write a copy of the store without its names, for a report of a fault")
        .Argument("FILE", *file, "The new tar file; an existing file is never replaced")
        .Remark(
            "The file has a new store in which each name, path, URL, user, key, checksum and property has another\n"
            "text in its place: the same for the same, with a key that is thrown away, so that nobody can guess\n"
            "them. Ids, numbers, sizes and times stay, and which names differ in case or Unicode form only. With it\n"
            "come the output of 'doctor' and 'stat', and versions.")
        .Example("bundle ~/report.tar", "attach the file to a report")
        .OnlyOnFiles(CopyToAFile)
        .Run(StoreAccess::Read, [file](Session& session) { return RunBundle(session, *file); });
}

} // namespace tandryctl
