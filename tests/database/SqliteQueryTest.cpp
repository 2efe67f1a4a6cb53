#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <QDateTime>
#include <QSize>
#include <QTimeZone>

#include <cmath>
#include <limits>

namespace {

using namespace tandry::test;

class SqliteQuery : public StoreFixture
{
protected:
    /// Returns the value that is read after this one was bound in an INSERT.
    QVariant RoundTrip(QVariant const& value, QString const& column = QStringLiteral("alias"))
    {
        EXPECT_TRUE(Execute(*store, QStringLiteral("DELETE FROM ServerConfiguration")));
        EXPECT_TRUE(Execute(*store,
                            QStringLiteral("INSERT INTO ServerConfiguration (%1) VALUES (:value)").arg(column),
                            {{":value", value}}));
        return Single(*store, QStringLiteral("SELECT %1 FROM ServerConfiguration").arg(column));
    }

    QDateTime DateRoundTrip(QDateTime const& time)
    {
        EXPECT_TRUE(Execute(*store, QStringLiteral("UPDATE Schedules SET startTime = :value"), {{":value", time}}));
        return Single(*store, QStringLiteral("SELECT startTime FROM Schedules")).toDateTime();
    }

    /// Why the store refuses to keep the value; fails the test when it doesn't, or when something was written.
    QString Refusal(QVariant const& value)
    {
        int const before = CountServers(*store);
        auto const query = Prepared(
            *store, QStringLiteral("INSERT INTO ServerConfiguration (alias) VALUES (:alias)"), {{":alias", value}});
        EXPECT_FALSE(query->exec());
        EXPECT_EQ(CountServers(*store), before);
        EXPECT_TRUE(store->LastError());
        store->ClearError();
        return query->lastError();
    }

    /// Why a statement that was prepared fails at `exec`.
    QString Failure(QString const& statement)
    {
        auto const query = store->CreateQuery();
        EXPECT_FALSE(query->prepare(statement));
        EXPECT_FALSE(query->lastError().isEmpty());
        EXPECT_FALSE(store->LastError()) << "it shows at exec";
        EXPECT_FALSE(query->exec());
        EXPECT_FALSE(query->next());
        EXPECT_TRUE(store->LastError());
        EXPECT_EQ(store->LastError()->statement, statement);
        EXPECT_EQ(store->LastError()->text, query->lastError());
        store->ClearError();
        return query->lastError();
    }
};

QString FromUnits(std::initializer_list<ushort> units)
{
    QString text;
    for (ushort const unit : units)
        text += QChar(unit);
    return text;
}

TEST_F(SqliteQuery, TextComesBackExactlyAsItWasGiven)
{
    QString everyUnit;
    for (uint unit = 0; unit <= 0xffff; ++unit) {
        if (!QChar::isSurrogate(unit))
            everyUnit += QChar(unit);
    }
    QString everyPlane;
    for (char32_t code = 0x10000; code <= 0x10ffff; code += 0xfff)
        everyPlane += QString::fromUcs4(&code, 1);

    for (QString const& text : {QStringLiteral("plain"),
                                QStringLiteral("it's \"quoted\" ]]> <x/> ; -- \\ %1 :id ?1"),
                                QStringLiteral(" blanks \t and\r\nlines\n"),
                                FromUnits({0}),
                                FromUnits({'a', 0, 'b', 0}),
                                FromUnits({0xfeff, 'a'}),
                                FromUnits({0xfeff}),
                                FromUnits({0xfffd, 0xfffe, 0xffff}),
                                FromUnits({0xd83d, 0xde00}),
                                QString(1'000'000, QChar(0x20ac)),
                                everyUnit,
                                everyPlane}) {
        QVariant const back = RoundTrip(text);
        EXPECT_EQ(back.userType(), QMetaType::QString);
        EXPECT_TRUE(back.toString() == text) << "of " << text.size() << " units: " << text.left(40).toStdString();
    }
}

TEST_F(SqliteQuery, EmptyAndNullTextsAreKeptApart)
{
    QVariant const empty = RoundTrip(QStringLiteral(""));
    EXPECT_EQ(empty.userType(), QMetaType::QString);
    EXPECT_FALSE(empty.isNull());
    EXPECT_TRUE(empty.toString().isEmpty());

    EXPECT_TRUE(RoundTrip(QString()).isNull());
    EXPECT_TRUE(RoundTrip(QVariant()).isNull());
    EXPECT_EQ(Single(*store, QStringLiteral("SELECT typeof(alias) FROM ServerConfiguration")).toString(),
              QStringLiteral("null"));
}

TEST_F(SqliteQuery, TextsAreComparedExactly)
{
    for (QString const& alias : {QStringLiteral("a"), QStringLiteral("A"), QStringLiteral("a "), FromUnits({'a', 0})})
        ASSERT_TRUE(AddServer(*store, alias));
    for (QString const& alias : {QStringLiteral("a"), QStringLiteral("A"), QStringLiteral("a "), FromUnits({'a', 0})}) {
        std::vector<QVariant> const found = Column(
            *store, QStringLiteral("SELECT alias FROM ServerConfiguration WHERE alias = :alias"), {{":alias", alias}});
        ASSERT_EQ(found.size(), 1u);
        EXPECT_EQ(found.front().toString(), alias);
    }
}

TEST_F(SqliteQuery, LoneSurrogatesAreRefusedAtExecAndQuotedNowhere)
{
    for (QString const& text : {FromUnits({'s', 'e', 'c', 'r', 'e', 't', 0xd83d}),
                                FromUnits({0xde00, 's', 'e', 'c', 'r', 'e', 't'}),
                                FromUnits({'s', 'e', 'c', 'r', 'e', 't', 0xde00, 0xd83d}),
                                FromUnits({0xd83d, 0xd83d, 0xde00})}) {
        QString const reason = Refusal(text);
        EXPECT_TRUE(reason.contains(QStringLiteral(":alias"))) << reason.toStdString();
        EXPECT_FALSE(reason.contains(QStringLiteral("secret"))) << reason.toStdString();
    }
    EXPECT_FALSE(Failure(QStringLiteral("SELECT '%1'").arg(QChar(0xd83d))).isEmpty());
}

TEST_F(SqliteQuery, IntegersComeBackAsTheyWereGiven)
{
    using Limits = std::numeric_limits<qlonglong>;
    for (qlonglong const number : {0LL, -1LL, 2147483647LL, -2147483648LL, Limits::max(), Limits::min()}) {
        ASSERT_TRUE(
            Execute(*store, QStringLiteral("UPDATE Schedules SET syncInterval = :value"), {{":value", number}}));
        QVariant const back = Single(*store, QStringLiteral("SELECT syncInterval FROM Schedules"));
        EXPECT_EQ(back.userType(), QMetaType::LongLong);
        EXPECT_EQ(back.toLongLong(), number);
    }
    ASSERT_TRUE(Execute(*store,
                        QStringLiteral("UPDATE Schedules SET syncInterval = :u, syncScheduleType = :b"),
                        {{":u", 4294967295u}, {":b", true}}));
    EXPECT_EQ(Single(*store, QStringLiteral("SELECT syncInterval FROM Schedules")).toLongLong(), 4294967295LL);
    EXPECT_EQ(Single(*store, QStringLiteral("SELECT syncScheduleType FROM Schedules")).toInt(), 1);
}

TEST_F(SqliteQuery, OtherValuesComeBackOrAreRefused)
{
    ASSERT_TRUE(
        Execute(*store, QStringLiteral("UPDATE Schedules SET syncInterval = :value"), {{":value", QVariant(0.5)}}));
    EXPECT_EQ(Single(*store, QStringLiteral("SELECT syncInterval FROM Schedules")), QVariant(0.5));
    QByteArray const bytes("\0\xff"
                           "a",
                           3);
    EXPECT_EQ(RoundTrip(bytes), QVariant(bytes));
    EXPECT_EQ(RoundTrip(QByteArray("")), QVariant(QByteArray("")));
    EXPECT_TRUE(RoundTrip(QByteArray()).isNull());

    EXPECT_TRUE(Refusal(QSize(1, 2)).contains(QStringLiteral("QSize")));
    EXPECT_TRUE(Refusal(QStringList{QStringLiteral("a")}).contains(QStringLiteral("QStringList")));
    EXPECT_FALSE(Refusal(std::nan("")).isEmpty());
    EXPECT_FALSE(Refusal(std::numeric_limits<qulonglong>::max()).isEmpty());
}

TEST_F(SqliteQuery, NullColumnsReadAsDefaultsWithoutError)
{
    ASSERT_TRUE(Execute(*store, QStringLiteral("INSERT INTO FolderConfiguration (id) VALUES (:id)"), {{":id", 7}}));
    auto const query = Prepared(*store, QStringLiteral("SELECT rootId, name, lastSyncTime FROM FolderConfiguration"));
    ASSERT_TRUE(query->exec());
    ASSERT_TRUE(query->next());
    for (int column = 0; column < 3; ++column)
        EXPECT_TRUE(query->value(column).isNull());
    EXPECT_EQ(query->value(0).toInt(), 0);
    EXPECT_EQ(query->value(1).toString(), QString());
    EXPECT_FALSE(query->value(2).toDateTime().isValid());
}

TEST_F(SqliteQuery, DateTimesKeepTheirClockReadingWhateverTheirTimeSpec)
{
    QDate const date(2024, 7, 3);
    QTime const time(12, 30, 15, 250);
    for (QDateTime const& bound : {QDateTime(date, time, Qt::UTC),
                                   QDateTime(date, time, Qt::LocalTime),
                                   QDateTime(date, time, Qt::OffsetFromUTC, -5 * 3600),
                                   QDateTime(date, time, QTimeZone("Asia/Kathmandu"))}) {
        ASSERT_TRUE(bound.isValid());
        QDateTime const back = DateRoundTrip(bound);
        EXPECT_EQ(back.date(), date) << bound.toString(Qt::ISODate).toStdString();
        EXPECT_EQ(back.time(), time) << bound.toString(Qt::ISODate).toStdString();
    }
    // The file's format: milliseconds of the reading, as if it were UTC.
    EXPECT_EQ(RawStore(StorePath()).Value(QStringLiteral("SELECT startTime FROM Schedules")).toLongLong(),
              QDateTime(date, time, Qt::UTC).toMSecsSinceEpoch());
}

TEST_F(SqliteQuery, DateTimesAtTheEdgesComeBack)
{
    for (QDateTime const& bound : {QDateTime(QDate(1970, 1, 1), QTime(0, 0), Qt::UTC),
                                   QDateTime(QDate(1969, 12, 31), QTime(23, 59, 59, 999), Qt::UTC),
                                   QDateTime(QDate(1, 1, 1), QTime(0, 0), Qt::UTC),
                                   QDateTime(QDate(-4713, 1, 1), QTime(1, 2, 3, 4), Qt::UTC),
                                   QDateTime(QDate(9999, 12, 31), QTime(23, 59, 59, 999), Qt::UTC),
                                   QDateTime(QDate(200000, 2, 28), QTime(5, 6), Qt::UTC)}) {
        QDateTime const back = DateRoundTrip(bound);
        EXPECT_EQ(back.date(), bound.date());
        EXPECT_EQ(back.time(), bound.time());
    }
    // In the night when clocks go back, half past two comes twice: one reading, whichever is meant.
    for (qint64 const seconds : {1729989000, 1729992600}) {
        QDateTime const bound = QDateTime::fromSecsSinceEpoch(seconds, QTimeZone("Europe/Paris"));
        ASSERT_EQ(bound.time(), QTime(2, 30));
        EXPECT_EQ(DateRoundTrip(bound).time(), QTime(2, 30));
    }
}

TEST_F(SqliteQuery, InvalidDateTimesAreNull)
{
    for (QDateTime const& bound :
         {QDateTime(), QDateTime(QDate(), QTime(1, 2), Qt::UTC), QDateTime(QDate(2024, 2, 30), QTime(1, 2), Qt::UTC)}) {
        ASSERT_FALSE(bound.isValid());
        EXPECT_FALSE(DateRoundTrip(bound).isValid());
        EXPECT_TRUE(RawStore(StorePath()).Value(QStringLiteral("SELECT startTime FROM Schedules")).isNull());
    }
}

TEST_F(SqliteQuery, PlaceholderThatIsNeverBoundIsNull)
{
    QString const statement =
        QStringLiteral("INSERT INTO ServerConfiguration (alias, davUrl) VALUES (:alias, :davUrl)");
    ASSERT_TRUE(Execute(*store, statement, {{":alias", 1}, {":davUrl", QStringLiteral("bound")}}));
    ASSERT_TRUE(Execute(*store, statement, {{":alias", 2}})) << "the statement's second use, after a bound one";
    EXPECT_EQ(Column(*store, QStringLiteral("SELECT davUrl FROM ServerConfiguration ORDER BY id")),
              (std::vector<QVariant>{QStringLiteral("bound"), QVariant()}));
}

TEST_F(SqliteQuery, PlaceholdersAreBoundInAnyOrderAndByEachOfTheirPlaces)
{
    QString const statement = QStringLiteral("SELECT :a || :b || :a || :c");
    QVariant const a = QStringLiteral("a");
    QVariant const b = QStringLiteral("b");
    QVariant const c = QStringLiteral("c");
    QVariant const all = QStringLiteral("abac");
    for (int time = 0; time < 2; ++time) {
        EXPECT_EQ(Single(*store, statement, {{":a", a}, {":b", b}, {":c", c}}), all);
        EXPECT_EQ(Single(*store, statement, {{":c", c}, {":b", b}, {":a", a}}), all);
        EXPECT_EQ(Single(*store, statement, {{":b", c}, {":c", c}, {":a", b}, {":a", a}, {":b", b}}), all);
    }
}

TEST_F(SqliteQuery, PlaceholderInBorrowedTextIsTakenByWhatItSaysAtTheCall)
{
    char16_t name[] = u":a";
    QString const borrowed = QString::fromRawData(reinterpret_cast<QChar const*>(name), 2);
    auto const query = Prepared(*store, QStringLiteral("SELECT :a, :b"), {});
    query->bindValue(borrowed, 1);
    name[1] = u'b';
    query->bindValue(borrowed, 2);
    ASSERT_TRUE(query->exec() && query->next());
    EXPECT_EQ(query->value(0), 1);
    EXPECT_EQ(query->value(1), 2);
}

TEST_F(SqliteQuery, PlaceholderThatTheStatementLacksFailsAtExec)
{
    QString const statement = QStringLiteral("INSERT INTO ServerConfiguration (alias) VALUES (:alias)");
    for (char const* placeholder : {":other", "alias", ":Alias", ""}) {
        auto const query = Prepared(*store, statement, {{":alias", 1}, {placeholder, QStringLiteral("secret")}});
        EXPECT_FALSE(query->exec());
        EXPECT_FALSE(query->lastError().contains(QStringLiteral("secret")));
        EXPECT_EQ(store->LastError()->statement, statement);
        store->ClearError();
    }
    EXPECT_EQ(CountServers(*store), 0);
}

TEST_F(SqliteQuery, RefusedValueIsMendedByBindingItsPlaceholderAgain)
{
    auto const query = Prepared(
        *store, QStringLiteral("INSERT INTO ServerConfiguration (alias) VALUES (:alias)"), {{":alias", QSize()}});
    EXPECT_FALSE(query->exec());
    store->ClearError();
    query->bindValue(QStringLiteral(":alias"), QStringLiteral("good"));
    EXPECT_TRUE(query->exec());
    EXPECT_TRUE(query->lastError().isNull());
}

TEST_F(SqliteQuery, QueryRunsAgainWithItsValuesAndWithOthers)
{
    auto const query =
        Prepared(*store, QStringLiteral("INSERT INTO ServerConfiguration (alias) VALUES (:alias)"), {{":alias", 1}});
    EXPECT_TRUE(query->exec());
    EXPECT_TRUE(query->exec());
    query->bindValue(QStringLiteral(":alias"), 2);
    EXPECT_TRUE(query->exec());
    EXPECT_EQ(query->lastInsertId().toInt(), 3);
    EXPECT_EQ(Column(*store, QStringLiteral("SELECT alias FROM ServerConfiguration ORDER BY id")),
              (std::vector<QVariant>{QStringLiteral("1"), QStringLiteral("1"), QStringLiteral("2")}));

    auto const rows = Prepared(*store, QStringLiteral("SELECT id FROM ServerConfiguration ORDER BY id"));
    for (int time = 0; time < 2; ++time) {
        ASSERT_TRUE(rows->exec());
        ASSERT_TRUE(rows->next());
        EXPECT_EQ(rows->value(0).toInt(), 1) << "exec begins with the first row";
    }
}

TEST_F(SqliteQuery, WalksItsRowsOnceAndStandsOnNoneBeforeAndAfter)
{
    ASSERT_TRUE(AddServer(*store, QStringLiteral("a")));
    ASSERT_TRUE(AddServer(*store, QStringLiteral("b")));
    auto const query = Prepared(*store, QStringLiteral("SELECT alias FROM ServerConfiguration ORDER BY id"));
    EXPECT_FALSE(query->next());
    ASSERT_TRUE(query->exec());
    EXPECT_FALSE(query->isValid());
    EXPECT_FALSE(query->value(0).isValid());
    for (char const* alias : {"a", "b"}) {
        EXPECT_TRUE(query->next());
        EXPECT_TRUE(query->isValid());
        EXPECT_EQ(query->value(0).toString(), QString::fromLatin1(alias));
        EXPECT_FALSE(query->value(-1).isValid());
        EXPECT_FALSE(query->value(1).isValid());
    }
    for (int time = 0; time < 2; ++time) {
        EXPECT_FALSE(query->next());
        EXPECT_FALSE(query->isValid());
        EXPECT_FALSE(query->value(0).isValid());
    }
    EXPECT_TRUE(query->lastError().isNull());
}

TEST_F(SqliteQuery, FinishGivesUpTheRowsThatAreLeft)
{
    ASSERT_TRUE(AddServer(*store, QStringLiteral("a")));
    auto const query = Prepared(*store, QStringLiteral("SELECT alias FROM ServerConfiguration"));
    ASSERT_TRUE(query->exec());
    ASSERT_TRUE(query->next());
    query->finish();
    EXPECT_FALSE(query->isValid());
    EXPECT_FALSE(query->next());
    ASSERT_TRUE(query->exec());
    EXPECT_TRUE(query->next());
}

TEST_F(SqliteQuery, WritesTellTheirRowsAndTheNewIdAndNothingElseDoes)
{
    auto const insert = Prepared(*store, QStringLiteral("INSERT INTO ServerConfiguration (alias) VALUES ('a'), ('b')"));
    ASSERT_TRUE(insert->exec());
    EXPECT_EQ(insert->numRowsAffected(), 2);
    EXPECT_EQ(insert->lastInsertId().toInt(), 2);

    auto const update = Prepared(*store, QStringLiteral("UPDATE ServerConfiguration SET alias = 'c'"));
    ASSERT_TRUE(update->exec());
    EXPECT_EQ(update->numRowsAffected(), 2);
    EXPECT_FALSE(update->lastInsertId().isValid());

    auto const missing = Prepared(*store, QStringLiteral("DELETE FROM ServerConfiguration WHERE id = 99"));
    ASSERT_TRUE(missing->exec());
    EXPECT_EQ(missing->numRowsAffected(), 0);

    auto const select = Prepared(*store, QStringLiteral("SELECT * FROM ServerConfiguration"));
    ASSERT_TRUE(select->exec());
    EXPECT_EQ(select->numRowsAffected(), 0);
    EXPECT_FALSE(select->lastInsertId().isValid());

    auto const failing = Prepared(*store, QStringLiteral("INSERT INTO ServerConfiguration (id) VALUES (1)"));
    ASSERT_FALSE(failing->exec());
    EXPECT_EQ(failing->numRowsAffected(), 0);
    EXPECT_FALSE(failing->lastInsertId().isValid());
    store->ClearError();
}

TEST_F(SqliteQuery, BadStatementsShowAtExec)
{
    EXPECT_TRUE(Failure(QStringLiteral("SELECT * FROM ")).contains(StorePath()));
    EXPECT_TRUE(Failure(QStringLiteral("SELECT * FROM Missing WHERE id = :id")).contains(QStringLiteral("Missing")));
    Failure(QStringLiteral("SELECT missing FROM ServerConfiguration"));
    Failure(QStringLiteral("UPDATE  SET alias = 'a'"));
    Failure(QStringLiteral(""));
    Failure(QStringLiteral(" -- only a comment"));

    auto const query = store->CreateQuery();
    EXPECT_FALSE(query->exec()) << "nothing was prepared";
    EXPECT_FALSE(query->lastError().isEmpty());
    store->ClearError();
}

TEST_F(SqliteQuery, StatementMayEndInASemicolonAndBlanksButNotInAnotherStatement)
{
    EXPECT_EQ(Single(*store, QStringLiteral("SELECT 1 ; \n ")).toInt(), 1);
    Failure(QStringLiteral("SELECT 1; DELETE FROM Schedules"));
    Failure(QStringLiteral("SELECT 1") + QChar(QChar::Null) + QStringLiteral("FROM Missing"));
    EXPECT_EQ(Single(*store, QStringLiteral("SELECT count(*) FROM Schedules")).toInt(), 1);
}

TEST_F(SqliteQuery, StatementsThatWouldGoRoundTheStoreAreRefused)
{
    for (char const* statement : {"BEGIN",
                                  "COMMIT",
                                  "ROLLBACK",
                                  "SAVEPOINT a",
                                  "ATTACH ':memory:' AS other",
                                  "PRAGMA synchronous = OFF",
                                  "PRAGMA journal_mode = OFF",
                                  "INSERT INTO ServerConfiguration (alias) VALUES ('a') RETURNING id"})
        Failure(QString::fromLatin1(statement));
    EXPECT_EQ(Single(*store, QStringLiteral("PRAGMA synchronous")).toInt(), 2);
    EXPECT_EQ(CountServers(*store), 0);
}

TEST_F(SqliteQuery, FailedStatementOfSeveralRowsChangesNone)
{
    ASSERT_TRUE(Execute(*store, QStringLiteral("INSERT INTO ServerConfiguration (id) VALUES (2)")));
    EXPECT_FALSE(Execute(*store, QStringLiteral("INSERT INTO ServerConfiguration (id) VALUES (1), (2), (3)")));
    EXPECT_EQ(CountServers(*store), 1);
    store->ClearError();
}

TEST_F(SqliteQuery, TwoQueriesOfTheSameTextWalkTheirOwnRows)
{
    for (char const* alias : {"a", "b", "c"})
        ASSERT_TRUE(AddServer(*store, QString::fromLatin1(alias)));
    QString const text = QStringLiteral("SELECT alias FROM ServerConfiguration WHERE id >= :id ORDER BY id");
    auto const first = Prepared(*store, text, {{":id", 1}});
    ASSERT_TRUE(first->exec());
    ASSERT_TRUE(first->next());
    auto const second = Prepared(*store, text, {{":id", 3}});
    ASSERT_TRUE(second->exec());
    ASSERT_TRUE(second->next());
    EXPECT_EQ(first->value(0).toString(), QStringLiteral("a"));
    EXPECT_EQ(second->value(0).toString(), QStringLiteral("c"));
    EXPECT_FALSE(second->next());
    EXPECT_TRUE(first->next());
    EXPECT_EQ(first->value(0).toString(), QStringLiteral("b"));
}

TEST_F(SqliteQuery, IdentifiersMatchWithoutRegardToCase)
{
    ASSERT_TRUE(AddServer(*store, QStringLiteral("a")));
    EXPECT_EQ(Single(*store, QStringLiteral("SELECT ALIAS FROM serverconfiguration WHERE ID = 1")).toString(),
              QStringLiteral("a"));
    ASSERT_TRUE(Execute(*store, QStringLiteral("INSERT INTO FolderConfiguration (parentId) VALUES (:p)"), {{":p", 0}}));
    EXPECT_EQ(Single(*store, QStringLiteral("SELECT count(*) FROM FolderConfiguration WHERE parentId = '0'")).toInt(),
              1);
    EXPECT_EQ(Single(*store, QStringLiteral("SELECT count(*) FROM FolderConfiguration WHERE parentId=0")).toInt(), 1);
}

} // namespace
