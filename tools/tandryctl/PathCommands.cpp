#include "CommandLine.h"
#include "Commands.h"
#include "Failure.h"
#include "Lookups.h"
#include "Paths.h"
#include "Text.h"

#include <QFileInfo>

namespace tandryctl {

using sync::config::FolderConfiguration;

namespace {

struct WhereArguments
{
    QString path;
    std::optional<int> account;
};

struct OverlapArguments
{
    QString serverPath;
    int account = 0;
};

constexpr int AnyAccount = -1;

/// The folder on record that holds the path or is it; the root itself at the latest.
FolderConfiguration NearestFolder(Session& session, QString path, FolderConfiguration const& root)
{
    while (LiesIn(path, root.getClientPath(), Qt::CaseInsensitive) && path != root.getClientPath()) {
        FolderConfiguration const folder = session.Read(
            session.folders().GetFolderConfigurationByClientPathAndAuthenticationId(path, root.getAuthenticationId()));
        if (folder.getId() != -1)
            return folder;
        QString const parent = QFileInfo(path).absolutePath();
        if (parent == path)
            break;
        path = parent;
    }
    return root;
}

ExitStatus Where(Session& session, WhereArguments const& arguments)
{
    QString const path = AbsolutePath(arguments.path);
    if (arguments.account)
        FindAccount(session, *arguments.account);
    auto const root = FindRootOf(path, session.Read(session.folders().GetAllRootFolders()), arguments.account);
    if (!root)
        throw Failure(
            ExitStatus::NothingFound,
            QStringLiteral("%1 lies in no root%2; see 'tandryctl list roots'")
                .arg(Quoted(path),
                     arguments.account ? QStringLiteral(" of account %1").arg(*arguments.account) : QString()));

    FolderConfiguration const nearest = NearestFolder(session, path, *root);
    int const account = arguments.account.value_or(AnyAccount);
    struct Place
    {
        QString path;
        FolderConfiguration root;
        FolderConfiguration nearest;
        bool isInside;
        bool isInsideByOption;
        QString serverPath;
    };
    Place const place{path,
                      *root,
                      nearest,
                      session.Read(session.folders().IsInExistingClientFolder(path, account, false)),
                      session.Read(session.folders().IsInExistingClientFolder(path, account, true)),
                      nearest.getClientPath() == path ? nearest.getServerPath() : ServerPathIn(*root, path)};

    static Columns<Place> const columns{
        {"path", Shown::Always, [](Place const& p) { return p.path; }},
        {"rootId", Shown::Always, [](Place const& p) { return p.root.getId(); }},
        {"root", Shown::Always, [](Place const& p) { return p.root.getClientPath(); }},
        {"folderId", Shown::Always, [](Place const& p) { return p.nearest.getId(); }},
        {"folder", Shown::Always, [](Place const& p) { return p.nearest.getClientPath(); }},
        {"inside", Shown::Always, [](Place const& p) { return p.isInside; }},
        {"insideByFolderOption", Shown::Always, [](Place const& p) { return p.isInsideByOption; }},
        {"serverPath", Shown::Always, [](Place const& p) { return p.serverPath; }},
    };
    session.output().Show(columns, place, AccountAndServerOf(session, *root));
    return ExitStatus::Done;
}

ExitStatus Overlap(Session& session, OverlapArguments const& arguments)
{
    if (arguments.serverPath.isEmpty())
        throw Failure(ExitStatus::WrongUsage, QStringLiteral("the server path is empty; give one"));
    FindAccount(session, arguments.account);

    QString match;
    if (!session.Read(
            session.folders().AncestorOrDescendantOfServerFolderExists(arguments.serverPath, arguments.account, match)))
        throw Failure(ExitStatus::NothingFound,
                      QStringLiteral("no root of account %1 overlaps %2 on the server")
                          .arg(arguments.account)
                          .arg(Quoted(arguments.serverPath)));

    static Columns<QString> const columns{
        {"serverPath", Shown::Always, [](QString const& serverPath) { return serverPath; }}};
    session.output().Report(Printable(match), columns, match);
    return ExitStatus::Done;
}

} // namespace

void AddPathCommands(Command& top)
{
    auto const where = std::make_shared<WhereArguments>();
    top.Add("where", "Tell where a local path belongs")
        .Argument("PATH", where->path, "The file or folder; it need not exist or be on record")
        .Option("--account", where->account, "Look at the roots of this account only")
        .Remark("Shows the root, the nearest folder on record, whether the path counts as inside the root without and\n"
                "with regard to the root's folder option (which may count the files directly in it alone), the path\n"
                "on the server, the account and the server. Exits with 1 when the path lies in no root.")
        .Example("where ~/Documents/letters/a.txt", "show what a file is synchronised with")
        .Run(StoreAccess::Read, [where](Session& session) { return Where(session, *where); });

    auto const overlap = std::make_shared<OverlapArguments>();
    top.Add("overlap", "Tell which root overlaps a path on the server")
        .Argument("SERVER_PATH", overlap->serverPath, "The path on the server")
        .Required("--account", overlap->account, "The account whose roots are looked at")
        .Remark("Prints the server path of a root that is this path, lies in it or holds it. Exits with 1 when there\n"
                "is none.")
        .Example("overlap /team/plans --account 2", "see whether this can become a root of account 2")
        .Run(StoreAccess::Read, [overlap](Session& session) { return Overlap(session, *overlap); });
}

} // namespace tandryctl
