#include "config/Managers.h"
#include "config/RecordColumns.h"
#include "support/FileRecords.h"
#include "support/FolderRecords.h"
#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <QAbstractItemModel>
#include <QDir>
#include <QFile>
#include <QMetaProperty>
#include <QQmlApplicationEngine>
#include <QQmlComponent>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>
#include <QWindow>

#include <gmock/gmock.h>

#include <map>
#include <memory>
#include <optional>

namespace qml_module_test {

namespace {

using namespace sync::config;
using namespace tandry::test;

constexpr int LongEnoughMsec = 60000;

QMetaObject const* GadgetType(QVariant const& value)
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    return QMetaType::metaObjectForType(value.userType());
#else
    return value.metaType().metaObject();
#endif
}

/// Documents of QML, each with a store that has the id `records` and the store's path.
class TheQmlModule : public StoreFixture
{
protected:
    void SetUp() override
    {
        StoreFixture::SetUp();
        managers.emplace(store);
        engine.addImportPath(QStringLiteral(TANDRY_QML));
    }

    /// Makes the root object of a document, a `QtObject` with these members.
    QObject* Make(QString const& members)
    {
        return MakeWith("Store { id: records; path: '%1' }"_q.arg(StorePath()), members);
    }

    QObject* MakeWith(QString const& records, QString const& members)
    {
        QQmlComponent component(&engine);
        component.setData(("import QtQml 2.15; import Tandry 1.0\n"
                           "QtObject { id: root; property Store records: %1\n%2 }"_q)
                              .arg(records, members)
                              .toUtf8(),
                          {});
        document.reset(component.create());
        EXPECT_NE(document, nullptr) << component.errorString().toStdString();
        return document.get();
    }

    QVariant Property(char const* name) const { return document->property(name); }
    QObject* Records() const { return Property("records").value<QObject*>(); }
    QAbstractItemModel* Rows() const { return Property("rows").value<QAbstractItemModel*>(); }

    /// Expects that a look-up gives a value with the columns that a manager receives and that are no secrets, and the
    /// values that they have in the record.
    template <class Record>
    void ExpectRecord(char const* lookUp, int id, Record const& record)
    {
        SCOPED_TRACE(lookUp);
        Make({});
        QVariant found;
        ASSERT_TRUE(QMetaObject::invokeMethod(Records(), lookUp, Q_RETURN_ARG(QVariant, found), Q_ARG(int, id)));
        QMetaObject const* const type = GadgetType(found);
        ASSERT_NE(type, nullptr);
        std::map<QString, QVariant> expected;
        for (auto const& column : RecordColumns<Record>()) {
            if (!column.isSecret() && column.isReceived())
                expected[column.name()] = column.Get(record);
        }
        std::map<QString, QVariant> actual;
        for (int i = 0; i < type->propertyCount(); ++i)
            actual[QLatin1String(type->property(i).name())] = type->property(i).readOnGadget(found.constData());
        EXPECT_EQ(actual, expected);
    }

    std::optional<Managers> managers;
    QQmlApplicationEngine engine;
    std::unique_ptr<QObject> document;
};

TEST_F(TheQmlModule, GivesFoldersAndFilesWithTheirColumns)
{
    FolderConfiguration root = DistinctFolder();
    ASSERT_TRUE(managers->folders->Add(root));
    ExpectRecord("folder", root.getId(), managers->folders->GetFolderConfigurationById(root.getId()));
    FileConfiguration file = DistinctFile();
    file.fileLinks.clear();
    ASSERT_TRUE(managers->files->Add(file));
    ExpectRecord("file", file.id, managers->files->GetFileConfigurationById(file.id));
}

TEST_F(TheQmlModule, GivesTheOtherRecordsWithTheirColumnsAndWithoutSecrets)
{
    ServerConfiguration server;
    server.setAlias("a"_q);
    server.setDavUrl("https://dav"_q);
    ASSERT_TRUE(managers->servers->Add(server));
    ExpectRecord("server", server.getId(), managers->servers->GetServerConfigById(server.getId()));

    AuthenticationConfiguration account;
    account.setUserName("ada"_q);
    account.setServerId(server.getId());
    ASSERT_TRUE(managers->accounts->Add(account));
    ExpectRecord("account", account.getId(), managers->accounts->GetAuthenticationConfigurationById(account.getId()));

    ProductConfiguration product;
    product.setName("p"_q);
    product.setConsumerKey("k"_q);
    product.setConsumerSecret("secret"_q);
    ASSERT_TRUE(managers->products->Add(product));
    ExpectRecord("product", product.getId(), managers->products->GetProductConfigurationById(product.getId()));

    ExpectRecord("schedule", 1, managers->schedules->GetScheduleEntryById(1));
}

TEST_F(TheQmlModule, GivesUndefinedForAMissAndForAFailureWhichItTells)
{
    Make("function isUndefined() { return records.server(7) === undefined }"_q);
    auto const isUndefined = [this] {
        QVariant answer;
        EXPECT_TRUE(QMetaObject::invokeMethod(document.get(), "isUndefined", Q_RETURN_ARG(QVariant, answer)));
        return answer.toBool();
    };
    EXPECT_TRUE(isUndefined());
    EXPECT_EQ(Records()->property("error"), ""_q);
    RawStore(StorePath()).Run("DROP TABLE ServerConfiguration"_q);
    EXPECT_TRUE(isUndefined());
    EXPECT_TRUE(Records()->property("error").toString().contains(StorePath()));
}

TEST_F(TheQmlModule, TellsThatTheStoreCannotBeWatchedAnyLonger)
{
    Make({});
    QSignalSpy stopped(Records(), SIGNAL(stopped(QString)));
    ASSERT_TRUE(QFile::remove(StorePath()));
    ASSERT_TRUE(stopped.wait(LongEnoughMsec));
    EXPECT_TRUE(stopped.constFirst().constFirst().toString().contains(StorePath()));
}

TEST_F(TheQmlModule, SaysWhyAStoreCannotBeOpened)
{
    QString const missing = folder.filePath("missing.db"_q);
    MakeWith("Store { path: '%1' }"_q.arg(missing), "property string error: records.error"_q);
    EXPECT_FALSE(Records()->property("isOpen").toBool());
    EXPECT_TRUE(Property("error").toString().contains(missing));
    EXPECT_FALSE(QFile::exists(missing));

    Records()->setProperty("path", StorePath());
    EXPECT_TRUE(Records()->property("isOpen").toBool());
    EXPECT_EQ(Property("error"), ""_q);
}

TEST_F(TheQmlModule, ClosesTheStoreWhenThePathIsEmpty)
{
    ASSERT_TRUE(AddServer(*store, "a"_q));
    Make("property QtObject rows: ServerModel { store: root.records } property bool isOpen: records.isOpen"_q);
    Rows()->fetchMore({});
    EXPECT_EQ(Rows()->rowCount(), 1);
    store.reset();
    managers.reset();
    Records()->setProperty("path", QString());
    EXPECT_EQ(Property("isOpen"), false);
    EXPECT_EQ(Records()->property("error"), ""_q);
    EXPECT_EQ(Rows()->rowCount(), 0);
    EXPECT_FALSE(QFile::exists(StorePath() + "-wal"_q));
}

TEST_F(TheQmlModule, TakesTheUrlOfAFile)
{
    QString const spaced = folder.filePath("a store.db"_q);
    ASSERT_TRUE(store->Backup(spaced));
    MakeWith("Store { path: '%1' }"_q.arg(QUrl::fromLocalFile(spaced).toString(QUrl::FullyEncoded)), {});
    EXPECT_TRUE(Records()->property("isOpen").toBool()) << Records()->property("error").toString().toStdString();
}

/// The values of all enumerations in the headers of the records, by name.
std::map<QString, int> ValuesOfRecords()
{
    static QRegularExpression const enumeration("^enum \\w+ : int$(.*?)^};$"_q,
                                                QRegularExpression::MultilineOption |
                                                    QRegularExpression::DotMatchesEverythingOption);
    static QRegularExpression const value("^ +(\\w+) = (\\d+),$"_q, QRegularExpression::MultilineOption);
    std::map<QString, int> values;
    QDir const headers(QStringLiteral(TANDRY_RECORD_HEADERS));
    for (QString const& name : headers.entryList({"*.h"_q})) {
        QFile header(headers.filePath(name));
        EXPECT_TRUE(header.open(QIODevice::ReadOnly)) << name.toStdString();
        QString const text = QString::fromUtf8(header.readAll());
        for (auto bodies = enumeration.globalMatch(text); bodies.hasNext();) {
            QString const body = bodies.next().captured(1);
            for (auto found = value.globalMatch(body); found.hasNext();) {
                auto const match = found.next();
                values[match.captured(1)] = match.captured(2).toInt();
            }
        }
    }
    return values;
}

TEST_F(TheQmlModule, HasTheNamesOfAllValuesOfRecords)
{
    std::map<QString, int> const expected = ValuesOfRecords();
    for (QString const& name : {"FolderStatusOutOfSync"_q, "FileSyncOptionRepathRequired"_q, "FilePrivilegeShare"_q})
        ASSERT_EQ(expected.count(name), 1U) << name.toStdString() << " was not found in the headers";
    QStringList terms;
    for (auto const& [name, number] : expected)
        terms.append("Tandry."_q + name);
    Make("property var values: [%1]"_q.arg(terms.join(", "_q)));
    QVariantList const values = Property("values").toList();
    ASSERT_EQ(static_cast<std::size_t>(values.size()), expected.size());
    int place = 0;
    for (auto const& [name, number] : expected)
        EXPECT_EQ(values.at(place++), QVariant(number)) << name.toStdString();
}

TEST_F(TheQmlModule, ShowsRowsOfTheStoreAndThoseThatComeLater)
{
    ASSERT_TRUE(AddServer(*store, "first"_q));
    Make("property QtObject rows: ServerModel { store: root.records }"
         "property Instantiator shown: Instantiator { model: root.rows; QtObject { property string alias: model.alias "
         "} }"
         "property int count: shown.count; property string last: count ? shown.objectAt(count - 1).alias : ''"_q);
    QSignalSpy counted(document.get(), SIGNAL(countChanged()));
    ASSERT_TRUE(counted.wait(LongEnoughMsec)); // views open a table when the event loop runs
    EXPECT_EQ(Property("count"), 1);
    EXPECT_EQ(Property("last"), "first"_q);

    QSignalSpy const changed(Records(), SIGNAL(changed(QStringList)));
    ASSERT_TRUE(AddServer(*store, "second"_q));
    ASSERT_TRUE(counted.wait(LongEnoughMsec));
    EXPECT_EQ(Property("count"), 2);
    EXPECT_EQ(Property("last"), "second"_q);
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed.constFirst().constFirst().toStringList(), QStringList("ServerConfiguration"_q));
}

TEST_F(TheQmlModule, ShowsEachKindOfRecord)
{
    ASSERT_TRUE(Execute(*store, "INSERT INTO FolderConfiguration (clientPath, parentId) VALUES ('/r', 0)"_q));
    ASSERT_TRUE(AddServer(*store, "s"_q));
    ASSERT_TRUE(Execute(*store, "INSERT INTO AuthenticationConfiguration (userName) VALUES ('ada')"_q));
    ASSERT_TRUE(Execute(*store, "INSERT INTO ProductConfiguration (name) VALUES ('p')"_q));
    for (auto const& [type, value] : std::map<QString, QString>{{"FolderTreeModel"_q, "/r"_q},
                                                                {"ServerModel"_q, "s"_q},
                                                                {"AccountModel"_q, "ada"_q},
                                                                {"ProductModel"_q, "p"_q},
                                                                {"ScheduleModel"_q, "30"_q}}) {
        SCOPED_TRACE(type.toStdString());
        Make("property QtObject rows: %1 { store: root.records }"_q.arg(type));
        ASSERT_NE(Rows(), nullptr);
        Rows()->fetchMore({});
        ASSERT_EQ(Rows()->rowCount(), 1);
        QStringList shown;
        for (int column = 0; column < Rows()->columnCount(); ++column)
            shown.append(Rows()->index(0, column).data().toString());
        EXPECT_TRUE(shown.contains(value)) << shown.join(", "_q).toStdString();
    }
}

TEST_F(TheQmlModule, ShowsTheFilesThatAreChosen)
{
    int root = 0;
    for (QString const& path : {"/a"_q, "/b"_q}) {
        FileConfiguration file;
        file.name = path;
        file.clientPath = path;
        file.folderConfigurationId = file.rootFolderId = ++root;
        ASSERT_TRUE(managers->files->Add(file));
    }
    Make("property QtObject rows: FileListModel { store: root.records; folderId: 1 }"_q);
    ASSERT_NE(Rows(), nullptr);
    auto const expectFile = [this](QString const& name) {
        QSignalSpy loaded(Rows(), SIGNAL(loaded()));
        auto const isShown = [&] { return Rows()->rowCount() == 1 && Rows()->index(0, 2).data() == name; };
        while (!isShown() && loaded.wait(LongEnoughMsec)) {
        }
        EXPECT_TRUE(isShown()) << name.toStdString();
    };
    ASSERT_EQ(Rows()->headerData(2, Qt::Horizontal), "name"_q);
    expectFile("/a"_q);
    Rows()->setProperty("folderId", 2);
    expectFile("/b"_q);
    Rows()->setProperty("folderId", -1);
    Rows()->setProperty("rootFolderId", 1);
    expectFile("/a"_q);
    Rows()->setProperty("rootFolderId", -1);
    Rows()->setProperty("nameFilter", "B"_q);
    Rows()->setProperty("syncStatus", FileSyncStatusNotSynced);
    expectFile("/b"_q);
    Rows()->setProperty("syncStatus", -1);
    EXPECT_EQ(Rows()->rowCount(), 0) << "nothing is chosen";
}

TEST_F(TheQmlModule, TellsOfAModelThatItWasReadOrCouldNotBe)
{
    Make("property QtObject rows: FolderTreeModel { store: root.records }"_q);
    QSignalSpy const loaded(Rows(), SIGNAL(loaded()));
    QSignalSpy const failed(Rows(), SIGNAL(failed(QString)));
    RawStore raw(StorePath(), RawStore::KeepLog);
    raw.Run("ALTER TABLE FolderConfiguration RENAME TO Gone"_q);
    Rows()->fetchMore({});
    ASSERT_EQ(failed.count(), 1);
    EXPECT_TRUE(failed.constFirst().constFirst().toString().contains(StorePath()));
    EXPECT_EQ(loaded.count(), 0);
    raw.Run("ALTER TABLE Gone RENAME TO FolderConfiguration"_q);
    Rows()->fetchMore({});
    EXPECT_EQ(loaded.count(), 1);
}

TEST_F(TheQmlModule, ShowsNothingWithoutAnOpenStore)
{
    MakeWith("Store {}"_q, "property QtObject rows: ServerModel { store: root.records }"_q);
    ASSERT_NE(Rows(), nullptr);
    EXPECT_EQ(Rows()->rowCount(), 0);
    ASSERT_TRUE(AddServer(*store, "a"_q));
    Records()->setProperty("path", StorePath());
    Rows()->fetchMore({});
    EXPECT_EQ(Rows()->rowCount(), 1);
    Records()->setProperty("path", folder.filePath("missing.db"_q));
    EXPECT_EQ(Rows()->rowCount(), 0);
    delete Records();
    EXPECT_EQ(Rows()->property("store").value<QObject*>(), nullptr);
}

TEST_F(TheQmlModule, ShowsTheFoldersOfAStoreInTheExample)
{
    ASSERT_TRUE(Execute(*store,
                        "INSERT INTO FolderConfiguration (name, clientPath, parentId, syncStatus)"
                        " VALUES ('Documents', '/home/ada/Documents', 0, 2)"_q));
    QStringList warnings;
    QObject::connect(&engine, &QQmlEngine::warnings, [&](QList<QQmlError> const& errors) {
        for (QQmlError const& error : errors)
            warnings.append(error.toString());
    });
    engine.setInitialProperties({{"storePath"_q, StorePath()}});
    engine.load(QStringLiteral(TANDRY_EXAMPLES "/qml/folders.qml"));
    ASSERT_EQ(engine.rootObjects().size(), 1) << warnings.join("\n"_q).toStdString();
    auto* const window = qobject_cast<QWindow*>(engine.rootObjects().constFirst());
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(window->property("title"), StorePath());
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window, LongEnoughMsec));
    auto* const list = window->findChild<QObject*>("folders"_q);
    ASSERT_NE(list, nullptr);
    QSignalSpy counted(list, SIGNAL(countChanged()));
    auto const expectRows = [&](int count) {
        while (list->property("count").toInt() != count && counted.wait(LongEnoughMsec)) {
        }
        EXPECT_EQ(list->property("count").toInt(), count);
    };
    expectRows(1);
    ASSERT_TRUE(Execute(*store, "INSERT INTO FolderConfiguration (name, parentId) VALUES ('Music', 0)"_q));
    expectRows(2);
    ASSERT_TRUE(Execute(*store, "INSERT INTO FolderConfiguration (name, parentId) VALUES ('Letters', 1)"_q));
    QTest::mouseClick(window, Qt::LeftButton, {}, {20, 50}); // the first folder
    expectRows(1);
    QTest::mouseClick(window, Qt::LeftButton, {}, {10, 10}); // back
    expectRows(2);
    EXPECT_TRUE(warnings.isEmpty()) << warnings.join("\n"_q).toStdString();
}

} // namespace

} // namespace qml_module_test
