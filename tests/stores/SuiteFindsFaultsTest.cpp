#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QProcess>
#include <QProcessEnvironment>

#include <ostream>

namespace {

struct Fault
{
    char const* rule;
    /// The case that must fail over a store which breaks the rule.
    char const* suiteCase;
};

void PrintTo(Fault const& fault, std::ostream* out)
{
    *out << fault.rule;
}

/// The suite's case over a store of another program, and whether it passed.
class SuiteFindsFaults : public testing::TestWithParam<Fault>
{
protected:
    static bool PassesOver(char const* rule)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("TANDRY_STORE_FAULT"), QString::fromUtf8(rule));
        QString const name = QStringLiteral("Faulty/") + QString::fromUtf8(GetParam().suiteCase) + QStringLiteral("/0");
        QProcess suite;
        suite.setProcessEnvironment(environment);
        suite.start(QCoreApplication::applicationDirPath() + QStringLiteral("/faulty_store_suite"),
                    {QStringLiteral("--gtest_filter=") + name, QStringLiteral("--gtest_brief=0")});
        EXPECT_TRUE(suite.waitForFinished(60'000));
        EXPECT_EQ(suite.exitStatus(), QProcess::NormalExit);
        QByteArray const output = suite.readAllStandardOutput();
        bool const passed = output.contains("[       OK ] " + name.toUtf8());
        EXPECT_NE(passed, output.contains("[  FAILED  ] " + name.toUtf8())) << output.constData();
        EXPECT_EQ(suite.exitCode() == 0, passed);
        return passed;
    }
};

TEST_P(SuiteFindsFaults, CaseFailsOverTheStoreThatBreaksTheRule)
{
    EXPECT_TRUE(PassesOver("nothing is broken"));
    EXPECT_FALSE(PassesOver(GetParam().rule));
}

INSTANTIATE_TEST_SUITE_P(
    Rules,
    SuiteFindsFaults,
    testing::Values(
        Fault{"gives each listing its own place", "QuerySuite.ListingsAtTheSameTimeKeepTheirPlaces"},
        Fault{"stands on no row behind the last", "QuerySuite.IsValidOnlyWhileOnARow"},
        Fault{"answers a bad statement with false", "QuerySuite.StatementWithoutATableFailsAtExec"},
        Fault{"forgets what was bound", "QuerySuite.PlaceholderForgetsWhatAnEarlierQueryBound"},
        Fault{"takes a missing value as NULL", "QuerySuite.PlaceholderThatIsNeverBoundIsNull"},
        Fault{"tells each query its own id", "QuerySuite.LastInsertIdIsTheIdOfTheQuerysOwnRow"},
        Fault{"counts the rows that match", "QuerySuite.RowsAffectedCountsTheRowsThatMatchEvenWhenNoneOfThemChanges"},
        Fault{"keeps 64 bits", "ValueSuite.SizesOf64BitsComeBack"},
        Fault{"keeps blanks", "ValueSuite.TextsComeBackAsTheyWereGiven"},
        Fault{"tells empty from null", "ValueSuite.EmptyTextComesBackEmptyAndIsFoundByAnEmptyText"},
        Fault{"refuses what it can't keep", "ValueSuite.LoneSurrogatesComeBackOrAreRefused"},
        Fault{"keeps milliseconds", "ValueSuite.DateInUtcComesBackWithItsMilliseconds"},
        Fault{"keeps the clock reading", "ValueSuite.DateWithAnOffsetKeepsItsClockReading"},
        Fault{"gives the clock reading back", "ValueSuite.HourThatSummerTimeSkipsComesBack"},
        Fault{"keeps what a scope wrote", "ScopeSuite.EndWithoutCommitKeepsTheWrites"},
        Fault{"shows a scope's writes together", "ScopeSuite.InnerEndDoesNotEndTheOuterTransaction"},
        Fault{"undoes only the statement that failed", "ScopeSuite.FailedStatementUndoesNothingBeforeIt"},
        Fault{"ends no bracket at a scope's end", "BracketSuite.ScopeInsideABracketEndsNothing"},
        Fault{"refuses a second bracket", "BracketSuite.SecondTransactionIsRefusedAndTheFirstGoesOn"},
        Fault{"refuses to end what wasn't begun", "BracketSuite.CommitAndRollbackWithoutABracketAreRefused"},
        Fault{"takes a bracket back", "BracketSuite.RollbackTakesTheWritesBack"}));

} // namespace
