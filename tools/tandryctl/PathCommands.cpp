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

/// Returns the deepest folder on record that has the path or contains it; at least the root.
FolderConfiguration NearestFolder(Session& session, QString path, FolderConfiguration const& root)
{
    while (LiesIn(path, root.getClientPath(), Qt::CaseInsensitive) && path != root.getClientPath()) {
        FolderConfiguration const folder = session.Checked(
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
    auto const root = FindRootOf(path, session.Checked(session.folders().GetAllRootFolders()), arguments.account);
    if (!root)
        throw Failure(
            FailureCode::NotFound,
            QStringLiteral("%1 lies in no root%2")
                .arg(Quoted(path),
                     arguments.account ? QStringLiteral(" of account %1").arg(*arguments.account) : QString()),
            See("list roots"));

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
                      session.Checked(session.folders().IsInExistingClientFolder(path, account, false)),
                      session.Checked(session.folders().IsInExistingClientFolder(path, account, true)),
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
        throw EmptyServerPath();
    FindAccount(session, arguments.account);

    QString match;
    if (!session.Checked(
            session.folders().AncestorOrDescendantOfServerFolderExists(arguments.serverPath, arguments.account, match)))
        throw Failure(FailureCode::NotFound,
                      QStringLiteral("no root of account %1 overlaps %2 on the server")
                          .arg(arguments.account)
                          .arg(Quoted(arguments.serverPath)),
                      See("list roots"));

    static Columns<QString> const columns{
        {"serverPath", Shown::Always, [](QString const& serverPath) { return serverPath; }}};
    session.output().Report(Printable(match), columns, match);
    return ExitStatus::Done;
}

} // namespace

void AddPathCommands(Command& top)
{
    auto const where = std::make_shared<WhereArguments>();
    top.Add("where", "Show the root, account and server of a local path")
        .Argument("PATH", where->path, "The file or folder; it need not exist or be on record")
        .Option("--account", where->account, "Consider only the roots of this account")
        .Remark("Shows the root, the nearest folder on record, whether the path counts as inside the root, whether it\n"
                "still does if the root's folder option is applied (which can restrict a root to the files directly\n"
                "in it), the server path, the account and the server. The exit status is 1 if the path lies in no\n"
                "root.")
        .Example("where ~/Documents/letters/a.txt", "show what a file is synchronised with")
        .Run(StoreAccess::Read, [where](Session& session) { return Where(session, *where); });

    auto const overlap = std::make_shared<OverlapArguments>();
    top.Add("overlap", "Find the root that overlaps a server path")
        .Argument("SERVER_PATH", overlap->serverPath, "The server path")
        .Required("--account", overlap->account, "The account whose roots are compared")
        .Remark(
            "Prints the server path of a root that is this path, lies in it or contains it. The exit status is 1 if\n"
            "there is none.")
        .Example("overlap /team/plans --account 2", "check whether a root of account 2 already covers this path")
        .Run(StoreAccess::Read, [overlap](Session& session) { return Overlap(session, *overlap); });
}

} // namespace tandryctl
