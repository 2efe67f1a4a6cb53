#include "interf/IQSqlQueryWrapper.h"

#include "support/QtPrinters.h"
#include "support/StatementList.h"
#include "support/StoreFixture.h"

#include <gtest/gtest.h>

#include <QStringList>

namespace {

using namespace tandry::test;

class StatementPlans : public StoreFixture
{
protected:
    /// Returns the steps of SQLite's plan for a statement.
    QStringList PlanOf(QString const& statement) const
    {
        QStringList steps;
        for (auto const& row : RawStore(StorePath()).Rows("EXPLAIN QUERY PLAN "_q + statement))
            steps.append(row.at(3).toString());
        return steps;
    }

    /// Whether a plan reads a whole table, or reads it to make an index for this one run.
    static bool ReadsAWholeTable(QStringList const& steps)
    {
        for (QString const& step : steps) {
            if (step.startsWith("SCAN"_q) || step.contains("AUTOMATIC"_q))
                return true;
        }
        return false;
    }
};

TEST_F(StatementPlans, FindTheRowsOfEachConditionThroughAnIndex)
{
    int checked = 0;
    for (QString const& statement : ListedStatements()) {
        if (!statement.contains(" WHERE "_q) || statement.contains(" NOT IN "_q))
            continue;
        QStringList const steps = PlanOf(statement);
        EXPECT_FALSE(steps.isEmpty()) << qPrintable(statement);
        EXPECT_FALSE(ReadsAWholeTable(steps)) << qPrintable(statement + "\n"_q + steps.join("\n"_q));
        ++checked;
    }
    EXPECT_GT(checked, 100);
}

TEST_F(StatementPlans, CheckTellsAWholeTableFromAnIndex)
{
    EXPECT_TRUE(ReadsAWholeTable(PlanOf("SELECT name FROM FileConfiguration WHERE checkSum = 'x'"_q)));
    EXPECT_TRUE(ReadsAWholeTable(
        PlanOf("SELECT a.id FROM FileConfiguration AS a JOIN FileConfiguration AS b ON a.checkSum = b.checkSum"_q)));
    EXPECT_FALSE(ReadsAWholeTable(PlanOf("SELECT name FROM FileConfiguration WHERE id = 1"_q)));
}

TEST_F(StatementPlans, EachListedStatementIsOneThatTheStoreCanRun)
{
    for (QString const& statement : ListedStatements()) {
        auto const query = store->CreateQuery();
        EXPECT_TRUE(query->prepare(statement)) << qPrintable(statement);
        EXPECT_TRUE(query->exec()) << qPrintable(statement);
    }
}

} // namespace
