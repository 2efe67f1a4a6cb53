#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "FileLookup.h"
#include "Paths.h"
#include "Text.h"

#include "database/SqliteDatabaseFactory.h"
#include "tools/findings/Explanation.h"

namespace tandryctl {

using tandry::findings::Explanation;
using tandry::findings::ExplanationPart;
using tandry::findings::ExplanationRequest;
using tandry::findings::Fact;
using tandry::findings::Hindrance;

namespace {

struct Arguments
{
    std::optional<QString> path;
    std::optional<QString> serverPath;
    std::optional<int> id;
    std::optional<int> kind;
    bool isThorough = false;
};

using By = ExplanationRequest::By;

/// A kind of row that --id can name.
struct RowKind
{
    QString word;
    By by;
};

QVector<RowKind> const& RowKinds()
{
    static QVector<RowKind> const kinds = [] {
        constexpr By FileKinds[] = {By::FileId, By::GeneratedFileId, By::BaseFileId};
        QVector<RowKind> made;
        for (int type = 0; type < FileTypeNames().size(); ++type)
            made.append({FileTypeNames().at(type), FileKinds[type]});
        made.append({QStringLiteral("folder"), By::FolderId});
        return made;
    }();
    return kinds;
}

QStringList RowKindWords()
{
    QStringList words;
    for (RowKind const& kind : RowKinds())
        words.append(kind.word);
    return words;
}

ExplanationRequest RequestOf(Arguments const& arguments)
{
    ExplanationRequest request;
    request.isThorough = arguments.isThorough;
    if (int(arguments.path.has_value()) + int(arguments.serverPath.has_value()) + int(arguments.id.has_value()) != 1)
        throw Failure(FailureCode::WrongUsage,
                      QStringLiteral("there is not one thing to explain"),
                      QStringLiteral("give a path, --server PATH or --id N"));
    if (arguments.path) {
        request.path = AbsolutePath(*arguments.path);
    }
    else if (arguments.serverPath) {
        if (arguments.serverPath->isEmpty())
            throw EmptyServerPath();
        request.by = By::ServerPath;
        request.path = *arguments.serverPath;
    }
    else {
        request.by = RowKinds().at(arguments.kind.value_or(0)).by;
        request.id = *arguments.id;
    }
    return request;
}

Failure NothingToExplain(Arguments const& arguments)
{
    if (arguments.serverPath)
        return {
            FailureCode::NotFound,
            QStringLiteral("nothing on record has the path %1 on the server").arg(Quoted(*arguments.serverPath)),
            arguments.isThorough
                ? See("list roots")
                : QStringLiteral("see 'tandryctl list roots', or give --thorough to read more than 50,000 folders")};
    RowKind const& kind = RowKinds().at(arguments.kind.value_or(0));
    bool const isFolder = kind.by == By::FolderId;
    return {FailureCode::NotFound,
            QStringLiteral("there is no %1 %2")
                .arg(isFolder || kind.by == By::FileId ? kind.word : kind.word + QStringLiteral(" file"))
                .arg(*arguments.id),
            isFolder ? See("list folders") : See(QStringLiteral("list files --type ") + kind.word)};
}

void PrintPlain(Output& output, Explanation const& explanation)
{
    output.PrintLine(Printable(explanation.path));
    for (ExplanationPart const& part : explanation.parts) {
        output.PrintLine(QString());
        output.PrintLine(part.title);
        QVector<Line> lines;
        for (Fact const& fact : part.facts)
            lines.append({QStringLiteral("  ") + fact.name, fact.words.isNull() ? fact.value : QVariant(fact.words)});
        output.PrintLines(lines);
    }
    output.PrintLine(QString());
    output.PrintLine(Printable(explanation.Conclusion()));
}

QVariant PartsOf(Explanation const& explanation)
{
    QVariantList parts;
    for (ExplanationPart const& part : explanation.parts) {
        QVariantList facts;
        for (Fact const& fact : part.facts) {
            QVariantMap object{{QStringLiteral("name"), fact.name}, {QStringLiteral("value"), fact.value}};
            if (!fact.words.isNull())
                object.insert(QStringLiteral("words"), fact.words);
            facts.append(object);
        }
        parts.append(QVariantMap{{QStringLiteral("part"), QLatin1String(part.code)}, {QStringLiteral("facts"), facts}});
    }
    return parts;
}

QVariant HindrancesOf(Explanation const& explanation)
{
    QVariantList hindrances;
    for (Hindrance const& hindrance : explanation.hindrances)
        hindrances.append(QVariantMap{{QStringLiteral("code"), QLatin1String(hindrance.code)},
                                      {QStringLiteral("text"), hindrance.text}});
    return hindrances;
}

Columns<Explanation> const& ExplanationColumns()
{
    static Columns<Explanation> const columns{
        {"path", Shown::Always, [](Explanation const& e) { return e.path; }},
        {"onRecord", Shown::Always, [](Explanation const& e) { return e.isOnRecord; }},
        {"parts", Shown::Always, PartsOf},
        {"hindrances", Shown::Always, HindrancesOf},
        {"conclusion", Shown::Always, [](Explanation const& e) { return e.Conclusion(); }},
    };
    return columns;
}

ExitStatus Explain(Session& session, Arguments const& arguments)
{
    auto const explanation = session.Checked(tandry::findings::Explain(session.store(), RequestOf(arguments)));
    if (!explanation)
        throw NothingToExplain(arguments);
    if (session.output().format() == OutputFormat::Json)
        session.output().Show(ExplanationColumns(), *explanation);
    else
        PrintPlain(session.output(), *explanation);
    return explanation->isOnRecord ? ExitStatus::Done : ExitStatus::NothingFound;
}

} // namespace

void AddExplainCommand(Command& top)
{
    auto const arguments = std::make_shared<Arguments>();
    top.Add("explain", "Explain what is known about a path, and what keeps it from being in sync")
        .OptionalArgument("PATH", arguments->path, "The file or folder; it need not exist or be on record")
        .Option("--server", arguments->serverPath, "PATH", "Explain what has this path on the server instead")
        .Option("--id", arguments->id, "Explain the row with this id instead")
        .Choice("--type",
                arguments->kind,
                RowKindWords(),
                "KIND",
                "Of --id: file, generated, base or folder; file by default")
        .Flag("--thorough",
              arguments->isThorough,
              "Also read whole tables of more than 50,000 rows, for links to the file and for base files")
        .Remark("Tells whether the path lies in a root and by which rule, what is on record of it, which folders hold\n"
                "it, its account, server, product and schedule, its links, the files generated from it, what stands\n"
                "on disk now, and neighbours that differ only in case or Unicode form. The last line says what keeps\n"
                "it from being in sync. If the path is not on record, the nearest folders that are get listed, and\n"
                "the exit status is 1. A path that leads through a symbolic link is looked up where the link leads.")
        .Example("explain ~/Documents/letters/a.txt", "find out why a file is not synchronised")
        .Example("explain --server /documents/letters", "explain what has this path on the server")
        .Example("explain --id 12 --type folder --json", "explain folder 12 to a program")
        .Run(StoreAccess::Read, [arguments](Session& session) { return Explain(session, *arguments); });
}

} // namespace tandryctl
