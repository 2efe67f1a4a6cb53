#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "FolderPlace.h"
#include "Lookups.h"
#include "Paths.h"
#include "RecordColumns.h"
#include "StoreQueries.h"
#include "Text.h"

#include "database/SqliteDatabaseFactory.h"
#include "tools/findings/DiskEntry.h"
#include "tools/findings/RootMove.h"

#include <QFileInfo>

#include <algorithm>

namespace tandryctl {

using sync::config::FolderConfiguration;
using tandry::findings::RootMove;
using tandry::findings::RootPaths;
using tandry::findings::TreeCheck;

namespace {

struct Arguments
{
    int id = 0;
    QString directory;
    /// The index of one of `CheckWords`.
    std::optional<int> check;
};

QStringList const& CheckWords()
{
    static QStringList const words{QStringLiteral("sample"), QStringLiteral("full")};
    return words;
}

/// The records that a sample compares with the disk.
constexpr qint64 SampleSize = 500;
/// What may differ of the compared records, in percent: what has changed since the last scan is no other tree.
constexpr qint64 MostDifferent = 10;

void CheckPlace(Session& session, FolderConfiguration const& root, QString const& directory)
{
    if (!QFileInfo(directory).isDir())
        throw Failure(FailureCode::UnusableFile,
                      QStringLiteral("%1 is not an existing directory").arg(Quoted(directory)),
                      QStringLiteral("move the root's folder first, or give the directory that it is now"));
    if (directory == root.getClientPath())
        throw Failure(FailureCode::Conflict,
                      QStringLiteral("%1 is where %2 is on record")
                          .arg(Quoted(directory), QStringLiteral("root %1").arg(root.getId())),
                      QStringLiteral("give the directory that its folder was moved to"));
    QVector<FolderConfiguration> others = session.Checked(session.folders().GetAllRootFolders());
    others.erase(std::remove_if(others.begin(),
                                others.end(),
                                [&](FolderConfiguration const& other) { return other.getId() == root.getId(); }),
                 others.end());
    if (auto const conflict = FindRootConflict(directory, others))
        throw Failure(FailureCode::Conflict,
                      QStringLiteral("%1 %2 %3")
                          .arg(Quoted(directory),
                               QLatin1String(conflict->relation),
                               Label("root", conflict->root.getId(), conflict->root.getClientPath())),
                      QStringLiteral("roots must not overlap: give another directory or remove that root"));
    if (tandry::findings::NamesOnDisk(directory).isEmpty())
        throw Failure(FailureCode::UnusableFile,
                      QStringLiteral("%1 is empty or cannot be read").arg(Quoted(directory)),
                      QStringLiteral("mount its disk, or move the root's folder there first"));
}

void CheckTree(TreeCheck const& check, QString const& directory)
{
    if (check.different * 100 <= check.checked * MostDifferent)
        return;
    QStringList first;
    for (QString const& difference : check.first)
        first.append(OneLine(difference));
    throw Failure(FailureCode::UnusableFile,
                  QStringLiteral("%1 does not hold the root's files: %2 of %3 records differ; %4")
                      .arg(Quoted(directory),
                           QString::number(check.different),
                           QString::number(check.checked),
                           first.join(QStringLiteral(", "))),
                  QStringLiteral("give the directory that the root's folder is now"));
}

/// Returns "3 folders and 12 files", with what else there is.
QString PathsText(RootPaths const& paths)
{
    QStringList counts{Counted(paths.folders, "folder", "folders"), Counted(paths.files, "file", "files")};
    if (paths.generatedFiles > 0)
        counts.append(Counted(paths.generatedFiles, "generated file", "generated files"));
    if (paths.baseFiles > 0)
        counts.append(Counted(paths.baseFiles, "base file", "base files"));
    if (paths.filesWithLinks > 0)
        counts.append(QStringLiteral("the links of ") + Counted(paths.filesWithLinks, "file", "files"));
    return JoinWithAnd(counts);
}

void Confirm(Session& session, QString const& what)
{
    switch (session.AskFor(QStringLiteral("Record %1?").arg(what))) {
    case Consent::Given:
        return;
    case Consent::Denied:
        throw Failure(
            FailureCode::Declined, QStringLiteral("nothing was changed"), QStringLiteral("answer y to record it"));
    case Consent::CannotAsk:
        throw Failure(FailureCode::Unconfirmed,
                      QStringLiteral("this would record %1").arg(what),
                      QStringLiteral("without a terminal to confirm it, give --yes"));
    }
}

/// Remembers the file systems of the root and of the mount points below it at their new places. A mount point whose
/// disk is not mounted there stays as it is, so that a scan reports it.
void MoveOrigins(Session& session, RootMove const& move, FolderConfiguration const& root, QString const& directory)
{
    QHash<int, FolderOrigin> const origins = session.Checked(session.queries().FolderOrigins());
    for (auto origin = origins.cbegin(); origin != origins.cend(); ++origin) {
        FolderConfiguration const folder = session.Checked(session.folders().GetFolderConfigurationById(origin.key()));
        if (folder.getRootId() != root.getId() || folder.getId() == root.getId())
            continue;
        QString const path = move.Moved(folder.getClientPath());
        auto const place = path.isNull() ? std::nullopt : FolderPlace::Of(path);
        bool const isGone = !place || (!place->isMountPoint() && tandry::findings::NamesOnDisk(path).isEmpty());
        if (!isGone)
            session.CheckWritten(session.queries().SetFolderOrigin(
                folder.getId(), place->isMountPoint() ? std::make_optional(place->Origin()) : std::nullopt));
    }
    if (auto const place = FolderPlace::Of(directory))
        session.CheckWritten(session.queries().SetFolderOrigin(root.getId(), place->Origin()));
}

ExitStatus MoveRoot(Session& session, Arguments const& arguments)
{
    bool const isFull = arguments.check == CheckWords().indexOf(QStringLiteral("full"));
    QString const directory = AbsolutePath(arguments.directory);
    FolderConfiguration root = FindRoot(session, arguments.id);
    QString const oldPath = root.getClientPath();
    CheckPlace(session, root, directory);
    RootMove move(session.store(), root.getId(), oldPath, directory);
    TreeCheck const check = move.Check(isFull ? std::nullopt : std::make_optional(SampleSize));
    session.CheckWritten(move.works());
    CheckTree(check, directory);
    session.Announce(QStringLiteral("compared %1 with %2: %3")
                         .arg(Counted(check.checked, "record", "records"),
                              Quoted(directory),
                              check.different == 0 ? QStringLiteral("no difference")
                                                   : Counted(check.different, "differs", "differ")));
    if (QFileInfo(oldPath).isDir() &&
        QFileInfo(oldPath).canonicalFilePath() != QFileInfo(directory).canonicalFilePath())
        session.Announce(QStringLiteral("a folder still stands at %1").arg(Quoted(oldPath)));
    Confirm(session,
            QStringLiteral("that %1 and all that is in it is now at %2")
                .arg(Label("root", root.getId(), oldPath), Quoted(directory)));

    ClientTransaction transaction(session);
    CheckPlace(session, FindRoot(session, arguments.id), directory); // another program may have added a root meanwhile
    MoveOrigins(session, move, root, directory);
    RootPaths const paths = move.Write();
    session.CheckWritten(move.works());
    transaction.Commit();

    root.setClientPath(directory);
    session.output().Report(QStringLiteral("%1 is now at %2: %3 have new paths")
                                .arg(Label("root", root.getId(), oldPath), Quoted(directory), PathsText(paths)),
                            FolderColumns(),
                            root);
    return ExitStatus::Done;
}

} // namespace

void AddRootMoveCommand(Command& roots)
{
    auto const arguments = std::make_shared<Arguments>();
    roots.Add("move", "Record that a root's folder was moved on disk")
        .Argument("ID", arguments->id, "The root's id")
        .Argument("NEW_DIR", arguments->directory, "The directory that the folder is now")
        .Choice("--check",
                arguments->check,
                CheckWords(),
                "MODE",
                "What to compare with the disk: a sample of the records, which is the default, or full")
        .Remark(
            "Gives all records of the root, and links to its files, their new paths in one transaction. Moves\n"
            "nothing on disk, and changes no path on the server. First compares names and sizes of the records with\n"
            "the new directory, and refuses it if more than 10 percent differ, if it is empty, or if it overlaps\n"
            "another root. Then asks for confirmation.")
        .Example("root move 1 /mnt/new/Documents", "record where the folder of root 1 is now")
        .Example("root move 1 /mnt/new/Documents --check full --dry-run", "compare all records, and change nothing")
        .Run(StoreAccess::Write, [arguments](Session& session) { return MoveRoot(session, *arguments); });
}

} // namespace tandryctl
