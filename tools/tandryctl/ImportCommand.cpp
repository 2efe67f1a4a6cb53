#include "CarrySummary.h"
#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "RecordTransfer.h"
#include "Text.h"

#include <QFile>

#include <cstdio>

namespace tandryctl {

using tandry::carry::PathMap;
using tandry::carry::RecordCounts;

namespace {

constexpr char const* StandardInput = "-";

struct Arguments
{
    QString file;
    QStringList maps;
};

struct Imported
{
    QString file;
    RecordCounts counts;
    qint64 movedPaths;
};

/// Returns the folders of texts such as "/home/ada=/home/lovelace". A second equals sign is refused: nothing tells
/// which one is meant.
std::vector<PathMap> MapsOf(QStringList const& texts)
{
    std::vector<PathMap> maps;
    for (QString const& text : texts) {
        QStringList const folders = text.split(QLatin1Char('='));
        if (folders.size() != 2 || folders.contains(QString()))
            throw Failure(
                FailureCode::WrongUsage,
                QStringLiteral("%1 is not a folder, an equals sign and the folder in its place").arg(Quoted(text)),
                QStringLiteral("give, for example, --map /home/ada=/home/lovelace"));
        maps.push_back({folders.first(), folders.last()});
    }
    return maps;
}

void Open(QFile& file, QString const& name)
{
    if (name == QLatin1String(StandardInput) ? file.open(stdin, QIODevice::ReadOnly) : file.open(QIODevice::ReadOnly))
        return;
    throw Failure(FailureCode::UnusableFile,
                  QStringLiteral("the file %1 cannot be read: %2").arg(Quoted(name), OneLine(file.errorString())),
                  QStringLiteral("name a file that 'tandryctl export' has written"));
}

ExitStatus RunImport(Session& session, Arguments const& arguments)
{
    std::vector<PathMap> const maps = MapsOf(arguments.maps);
    QFile file(arguments.file);
    Open(file, arguments.file);
    bool const isInput = arguments.file == QLatin1String(StandardInput);
    QString const name = isInput ? QStringLiteral("standard input") : Quoted(arguments.file);

    ImportedRecords const imported = ImportRecords(session, file, name, maps);

    static Columns<Imported> const columns{
        {"file", Shown::Always, [](Imported const& i) { return i.file; }},
        {"records", Shown::Always, [](Imported const& i) { return ToMap(i.counts); }},
        {"movedPaths", Shown::Always, [](Imported const& i) { return i.movedPaths; }},
    };
    QVector<Line> lines;
    for (auto const& [records, count] : imported.counts) {
        if (count > 0)
            lines.append({records, count});
    }
    session.output().PrintLines(lines);
    QString sentence = QStringLiteral("imported %1 into the store %2")
                           .arg(Counted(SumOf(imported.counts), "record", "records"), Quoted(session.storePath()));
    if (!maps.empty())
        sentence += QStringLiteral("; %1 moved").arg(Counted(imported.movedPaths, "path was", "paths were"));
    session.output().Report(sentence, columns, Imported{arguments.file, imported.counts, imported.movedPaths});
    return ExitStatus::Done;
}

} // namespace

void AddImportCommand(Command& top)
{
    auto const arguments = std::make_shared<Arguments>();
    top.Add("import", "Put the records of an export into an empty store")
        .Argument("FILE", arguments->file, "What 'tandryctl export' has written; - for standard input")
        .Repeated("--map",
                  arguments->maps,
                  "OLD=NEW",
                  "Let paths in the folder OLD lie in NEW instead; may be given several times")
        .Remark(
            "Creates the store if it is missing. The store must have no records yet except for the default schedule,\n"
            "which those of the file replace. All records are imported or none: a line that is not as\n"
            "docs/export-format.md describes it ends the import. With --map, the paths of folders and files on this\n"
            "computer and the links to them are moved; of several folders the deepest counts.")
        .Example("import ~/stick/tandry.jsonl", "carry on with the records of another computer")
        .Example("import tandry.jsonl --map /home/ada=/home/lovelace --dry-run", "see whether another home would fit")
        .Run(StoreAccess::Create, [arguments](Session& session) { return RunImport(session, *arguments); });
}

} // namespace tandryctl
