#include "CarrySummary.h"
#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "RecordTransfer.h"
#include "ServerStore.h"
#include "StoreFailure.h"
#include "Text.h"

#include "tools/findings/TemporaryFolder.h"

#include <QTemporaryFile>

namespace tandryctl {

using tandry::carry::RecordCounts;
using tandry::findings::TemporaryFolder;

namespace {

struct Arguments
{
    QString from;
    QString to;
};

struct Copied
{
    QString from;
    QString to;
    RecordCounts counts;
};

/// The records on their way, readable by their owner only and removed at the end.
class RecordsFile
{
public:
    RecordsFile()
        : _file(TemporaryFolder().filePath(QStringLiteral("tandry-copy-XXXXXX")))
    {
        if (!_file.open())
            throw failure();
    }

    QIODevice& device() { return _file; }

    Failure failure() const
    {
        return {FailureCode::UnusableFile,
                QStringLiteral("%1 cannot hold the records: %2")
                    .arg(TemporaryFolder().path(), OneLine(_file.errorString())),
                AdviceOnTemporaryFolder()};
    }

    void Rewind()
    {
        if (!_file.flush() || !_file.seek(0))
            throw failure();
    }

private:
    QTemporaryFile _file;
};

ExitStatus Copy(Session& session, Arguments const& arguments)
{
    static Columns<Copied> const columns{
        {"from", Shown::Always, [](Copied const& copied) { return copied.from; }},
        {"to", Shown::Always, [](Copied const& copied) { return copied.to; }},
        {"records", Shown::Always, [](Copied const& copied) { return ToMap(copied.counts); }},
    };
    RefusePassword(arguments.from);
    RefusePassword(arguments.to);
    RecordsFile records;
    auto const from = session.OpenOther(arguments.from, StoreAccess::Read, false);
    constexpr bool withSecrets = true;
    ExportRecords(*from, {{}, withSecrets}, records.device(), [&records] { return records.failure(); });
    records.Rewind();
    auto const to = session.OpenOther(arguments.to, StoreAccess::Create, session.isDryRun());
    QString const name = QStringLiteral("the records of %1").arg(Quoted(from->storePath()));
    ImportedRecords const imported = ImportRecords(*to, records.device(), name);
    Copied const copied{from->storePath(), to->storePath(), imported.counts};
    session.output().Report(
        QStringLiteral("copied %1 from the store %2 to the store %3")
            .arg(Counted(SumOf(copied.counts), "record", "records"), Quoted(copied.from), Quoted(copied.to)),
        columns,
        copied);
    return ExitStatus::Done;
}

} // namespace

void AddCopyCommand(Command& top)
{
    auto const arguments = std::make_shared<Arguments>();
    top.Add("copy", "Copy all records of a store to an empty one, in a file or on a server")
        .Required("--from", arguments->from, "STORE", "The store file, or the URI of a profile; it is not changed")
        .Required("--to", arguments->to, "STORE", "The same; created if it is missing")
        .DryRun()
        .Remark(
            "Does what 'export --with-secrets' and 'import' do: copies one state of the records, all or none, into\n"
            "a store that has none yet except for the default schedule. Records may get other ids. --store has no\n"
            "effect.")
        .Example("copy --from ~/old.db --to postgresql://db.example/tandry?tandry_profile=ada",
                 "move a store to a server")
        .Example("copy --from postgresql://db.example/tandry?tandry_profile=ada --to ~/ada.db", "and back to a file")
        .Run(StoreAccess::None, [arguments](Session& session) { return Copy(session, *arguments); });
}

} // namespace tandryctl
