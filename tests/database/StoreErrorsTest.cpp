#include "support/FolderContents.h"
#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <sqlite3.h>

#include <QLoggingCategory>
#include <QSize>

#include <thread>

namespace {

using namespace tandry::test;
using sync::database::StoreError;

/// Keeps what is logged in the store's category, and keeps it off the test's output.
class LoggedLines
{
public:
    LoggedLines()
    {
        lines.clear();
        _before = qInstallMessageHandler([](QtMsgType, QMessageLogContext const& context, QString const& line) {
            if (qstrcmp(context.category, "tandry.database") == 0)
                lines.append(line);
        });
    }
    ~LoggedLines() { qInstallMessageHandler(_before); }
    LoggedLines(LoggedLines const&) = delete;
    LoggedLines& operator=(LoggedLines const&) = delete;

    static QStringList lines;

private:
    QtMessageHandler _before = nullptr;
};

QStringList LoggedLines::lines;

class StoreErrors : public StoreFixture
{
protected:
    void TearDown() override { store.reset(); }

    bool Add(QVariant const& id)
    {
        return Execute(*store, QStringLiteral("INSERT INTO ServerConfiguration (id) VALUES (:id)"), {{":id", id}});
    }

    /// Spoils one of the pages that hold a table's 500 rows, the nth in an order of the pages.
    void FillServersAndSpoilPage(QString const& order, int n)
    {
        ASSERT_TRUE(Execute(*store,
                            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 500) "
                            "INSERT INTO ServerConfiguration (alias) SELECT hex(zeroblob(500)) FROM n"_q));
        store.reset();
        int const page = RawStore(StorePath())
                             .Value("SELECT pageno FROM dbstat WHERE name = 'ServerConfiguration' AND "
                                    "pagetype = 'leaf' ORDER BY %1 LIMIT 1 OFFSET %2"_q.arg(order)
                                        .arg(n))
                             .toInt();
        ASSERT_GT(page, 1);
        Overwrite(StorePath(), (page - 1) * 4096, QByteArray(4096, '\x5a'));
        OpenStore();
    }
};

TEST_F(StoreErrors, NothingIsWrongWithANewStore)
{
    EXPECT_FALSE(store->LastError());
    EXPECT_TRUE(Add(1));
    EXPECT_FALSE(store->LastError());
}

TEST_F(StoreErrors, RowThatIsNotThereIsNoError)
{
    auto const query =
        Prepared(*store, QStringLiteral("SELECT id FROM ServerConfiguration WHERE id = :id"), {{":id", 7}});
    EXPECT_TRUE(query->exec());
    EXPECT_FALSE(query->next());
    EXPECT_TRUE(Execute(*store, QStringLiteral("DELETE FROM ServerConfiguration WHERE id = 7")));
    EXPECT_FALSE(store->LastError());
    EXPECT_TRUE(query->lastError().isNull());
}

TEST_F(StoreErrors, FirstErrorStaysUntilItIsCleared)
{
    ASSERT_TRUE(Add(1));
    EXPECT_FALSE(Add(1));
    EXPECT_FALSE(Execute(*store, QStringLiteral("SELECT * FROM Missing")));
    EXPECT_TRUE(Add(2)) << "a later success clears nothing";
    ASSERT_TRUE(store->LastError());
    EXPECT_EQ(store->LastError()->code, SQLITE_CONSTRAINT_PRIMARYKEY);
    EXPECT_EQ(store->LastError()->statement, QStringLiteral("INSERT INTO ServerConfiguration (id) VALUES (:id)"));
    EXPECT_TRUE(store->LastError()->text.contains(StorePath())) << store->LastError()->text.toStdString();

    store->ClearError();
    EXPECT_FALSE(store->LastError());
    EXPECT_FALSE(Execute(*store, QStringLiteral("SELECT * FROM Missing")));
    EXPECT_EQ(store->LastError()->code, SQLITE_ERROR);
}

TEST_F(StoreErrors, ThreadsHaveErrorsOfTheirOwn)
{
    ASSERT_TRUE(Add(1));
    EXPECT_FALSE(Add(1));
    std::thread([this] {
        EXPECT_FALSE(store->LastError());
        EXPECT_FALSE(Execute(*store, QStringLiteral("SELECT * FROM Missing")));
        EXPECT_EQ(store->LastError()->code, SQLITE_ERROR);
        store->ClearError();
    }).join();
    ASSERT_TRUE(store->LastError());
    EXPECT_EQ(store->LastError()->code, SQLITE_CONSTRAINT_PRIMARYKEY);
}

TEST_F(StoreErrors, QueryForgetsItsErrorWhenItSucceeds)
{
    ASSERT_TRUE(Add(1));
    auto const query =
        Prepared(*store, QStringLiteral("INSERT INTO ServerConfiguration (id) VALUES (:id)"), {{":id", 1}});
    EXPECT_TRUE(query->lastError().isNull());
    EXPECT_FALSE(query->exec());
    EXPECT_FALSE(query->lastError().isEmpty());
    query->bindValue(QStringLiteral(":id"), 2);
    EXPECT_TRUE(query->exec());
    EXPECT_TRUE(query->lastError().isNull());
}

TEST_F(StoreErrors, NoErrorAndNoLogLineHoldsABoundValue)
{
    LoggedLines const logged;
    QString const secret = QStringLiteral("top secret");
    ASSERT_TRUE(
        Execute(*store, QStringLiteral("CREATE TABLE Checked (value TEXT UNIQUE CHECK (value <> 'top secret'))")));
    ASSERT_TRUE(
        Execute(*store, QStringLiteral("INSERT INTO Checked VALUES (:a)"), {{":a", QStringLiteral("top secrets")}}));
    struct
    {
        char const* statement;
        QVariant value;
    } const failing[] = {
        {"INSERT INTO Checked VALUES (:value)", secret},
        {"INSERT INTO Checked VALUES (:value)", QStringLiteral("top secrets")},
        {"INSERT INTO ServerConfiguration (id) VALUES (:value)", secret},
        {"SELECT json_extract('{}', :value)", secret},
        {"SELECT 'a' LIKE 'b' ESCAPE :value", secret},
        {"SELECT load_extension(:value)", secret},
        {"SELECT :other", secret},
        {"SELECT :value", secret + QChar(0xd83d)},
        {"SELECT :value", QVariantList{secret}},
    };
    for (auto const& [statement, value] : failing) {
        store->ClearError();
        auto const query = Prepared(*store, QString::fromLatin1(statement), {{":value", value}});
        EXPECT_FALSE(query->exec()) << statement;
        ASSERT_TRUE(store->LastError()) << statement;
        for (QString const& text : {query->lastError(), store->LastError()->text, store->LastError()->statement})
            EXPECT_FALSE(text.contains(QStringLiteral("secret"), Qt::CaseInsensitive) &&
                         !text.contains(QStringLiteral("value <> 'top secret'")))
                << text.toStdString();
    }
    EXPECT_GE(LoggedLines::lines.size(), int(std::size(failing)));
    for (QString const& line : LoggedLines::lines)
        EXPECT_FALSE(line.contains(QStringLiteral("secret")) && !line.contains(QStringLiteral("value <> 'top secret'")))
            << line.toStdString();
}

TEST_F(StoreErrors, EachErrorIsLoggedInTheStoresCategory)
{
    LoggedLines const logged;
    ASSERT_TRUE(Add(1));
    EXPECT_TRUE(LoggedLines::lines.isEmpty());
    EXPECT_FALSE(Add(1));
    ASSERT_EQ(LoggedLines::lines.size(), 1);
    EXPECT_TRUE(LoggedLines::lines.first().contains(store->LastError()->text));
    EXPECT_TRUE(LoggedLines::lines.first().contains(store->LastError()->statement));
}

TEST_F(StoreErrors, ListingThatBreaksOffAtADamagedPageLeavesAnError)
{
    FillServersAndSpoilPage("path"_q, 20);
    auto const query = Prepared(*store, QStringLiteral("SELECT id, alias FROM ServerConfiguration"));
    ASSERT_TRUE(query->exec());
    int rows = 0;
    while (query->next())
        ++rows;
    EXPECT_GT(rows, 0);
    EXPECT_LT(rows, 500);
    EXPECT_FALSE(query->isValid());
    EXPECT_FALSE(query->next()) << "and it stays so";
    EXPECT_FALSE(query->lastError().isEmpty());
    ASSERT_TRUE(store->LastError());
    EXPECT_EQ(store->LastError()->code & 0xff, SQLITE_CORRUPT);
    EXPECT_TRUE(store->LastError()->text.contains(QStringLiteral("damaged")));

    store->ClearError();
    EXPECT_EQ(Single(*store, QStringLiteral("SELECT id FROM ServerConfiguration WHERE id = 1")).toInt(), 1);
    EXPECT_FALSE(store->LastError()) << "what can be read is read";
}

TEST_F(StoreErrors, StatementWhoseFirstRowIsDamagedFailsAtExec)
{
    FillServersAndSpoilPage("path DESC"_q, 0);
    auto const query = Prepared(*store, "SELECT alias FROM ServerConfiguration ORDER BY id DESC"_q);
    EXPECT_FALSE(query->exec());
    EXPECT_FALSE(query->next());
    EXPECT_EQ(store->LastError()->code & 0xff, SQLITE_CORRUPT);
}

} // namespace
