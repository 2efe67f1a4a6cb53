#include "config/FolderConfigManager.h"
#include "database/TransactionalScope.h"
#include "interf/IRefreshNativeFileViewer.h"
#include "models/StoreWatcher.h"

#include <cstdio>
#include <unistd.h>

/// A client's own names may be those of functions that <unistd.h> has.
namespace client {

int link = 1;

int pause(int seconds)
{
    return seconds + link;
}

} // namespace client

namespace {

class Shell : public sync::interf::IRefreshNativeFileViewer
{
public:
    void Refresh(QString path) override { last = path; }

    QString last;
};

bool Check(bool holds, char const* what)
{
    if (!holds)
        std::fprintf(stderr, "%s: no\n", what);
    return holds;
}

} // namespace

// One thing from each library, so that all are linked and found at run time.
int main()
{
    auto const shell = std::make_shared<Shell>();
    sync::config::FolderConfigManager folders(nullptr, shell);
    QString path = QStringLiteral("/home");
    folders.RefreshNativeFileViewer(path);

    sync::database::TransactionalScope const scope;
    bool good = Check(shell->last == path, "the client's shell is called");
    good &= Check(sync::database::TransactionalScope::Depth() == 1, "the scope counts");
    good &= Check(folders.metaObject()->className() == QByteArray("sync::config::FolderConfigManager"), "meta-object");
    good &= Check(sync::models::StoreWatcher::staticMetaObject.className() == QByteArray("sync::models::StoreWatcher"),
                  "a model's meta-object");
    good &= Check(getpid() > 0, "<unistd.h> works beside the namespace");
    good &= Check(client::pause(2) == 3, "the client's own names are found");
    return good ? 0 : 1;
}
