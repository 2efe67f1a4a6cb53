#include "ViewerFixture.h"

#include "config/FolderConfiguration.h"
#include "support/Queries.h"

#include <QAbstractItemModel>
#include <QTest>

namespace tandry::test {

namespace {

constexpr int LongEnoughMsec = 60000;

QString NameIn(QString const& path)
{
    return path.section(QLatin1Char('/'), -1);
}

} // namespace

bool WaitUntil(std::function<bool()> const& condition)
{
    return QTest::qWaitFor(condition, LongEnoughMsec);
}

QStringList TextsOf(QAbstractItemModel const& model, int column)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts.append(model.index(row, column).data().toString());
    return texts;
}

void ViewerFixture::SetUp()
{
    StoreFixture::SetUp();
    docs = AddFolder("/p/docs"_q, 0, sync::config::FolderStatusPlaced);
    letters = AddFolder("/p/docs/letters"_q, docs, sync::config::FolderStatusOutOfSync);
    empty = AddFolder("/p/empty"_q, 0, sync::config::FolderStatusPlaced);
    textFile = AddFile("/p/docs/a.txt"_q, docs);
    letterFile = AddFile("/p/docs/letters/b.odt"_q, letters);
}

int ViewerFixture::AddFolder(QString const& path, int parentId, int status)
{
    auto const query = Prepared(*store,
                                "INSERT INTO FolderConfiguration (name, clientPath, parentId, rootId, syncStatus, "
                                "authenticationId, productConfigurationId) VALUES (:name, :path, :parent, 0, :status, "
                                "-1, -1)"_q,
                                {{":name", NameIn(path)}, {":path", path}, {":parent", parentId}, {":status", status}});
    EXPECT_TRUE(query->exec());
    int const id = query->lastInsertId().toInt();
    int const root =
        parentId == 0
            ? id
            : Single(*store, "SELECT rootId FROM FolderConfiguration WHERE id = :id"_q, {{":id", parentId}}).toInt();
    EXPECT_TRUE(Execute(
        *store, "UPDATE FolderConfiguration SET rootId = :root WHERE id = :id"_q, {{":root", root}, {":id", id}}));
    return id;
}

int ViewerFixture::AddFile(QString const& path, int folderId)
{
    auto const query = Prepared(
        *store,
        "INSERT INTO FileConfiguration (name, clientPath, folderConfigurationId, rootFolderId, syncStatus, size, "
        "productConfigurationId) VALUES (:name, :path, :folder, (SELECT rootId FROM FolderConfiguration WHERE id "
        "= :folder), 2, 8, -1)"_q,
        {{":name", NameIn(path)}, {":path", path}, {":folder", folderId}});
    EXPECT_TRUE(query->exec());
    return query->lastInsertId().toInt();
}

} // namespace tandry::test
