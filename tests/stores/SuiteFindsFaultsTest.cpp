#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QProcess>
#include <QProcessEnvironment>

#include <ostream>

namespace {

struct Fault
{
    char const* rule;
    /// The case that must fail on a store that breaks the rule.
    char const* suiteCase;
};

void PrintTo(Fault const& fault, std::ostream* out)
{
    *out << fault.rule;
}

/// Runs one case of the suite, in another program, on a store that breaks a rule.
class SuiteFindsFaults : public testing::TestWithParam<Fault>
{
protected:
    static bool PassesOn(char const* rule)
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

TEST_P(SuiteFindsFaults, CaseFailsOnAStoreThatBreaksTheRule)
{
    EXPECT_TRUE(PassesOn("no rule"));
    EXPECT_FALSE(PassesOn(GetParam().rule));
}

INSTANTIATE_TEST_SUITE_P(
    Rules,
    SuiteFindsFaults,
    testing::Values(Fault{"gives each listing its own position", "QuerySuite.SimultaneousListingsKeepTheirPositions"},
                    Fault{"is on no row behind the last", "QuerySuite.IsValidOnlyWhileOnARow"},
                    Fault{"returns false for a bad statement", "QuerySuite.StatementWithoutATableFailsAtExec"},
                    Fault{"does not keep bound values", "QuerySuite.PlaceholderDoesNotKeepTheValueOfAnEarlierQuery"},
                    Fault{"treats an unbound placeholder as NULL", "QuerySuite.UnboundPlaceholderIsNull"},
                    Fault{"gives each query its own id", "QuerySuite.LastInsertIdIsTheIdOfTheQuerysOwnRow"},
                    Fault{"counts matching rows", "QuerySuite.RowsAffectedCountsMatchingRowsEvenIfNoneChanges"},
                    Fault{"keeps 64 bits", "ValueSuite.SizesOf64BitsComeBack"},
                    Fault{"keeps blanks", "ValueSuite.TextsComeBackUnchanged"},
                    Fault{"distinguishes empty from null", "ValueSuite.EmptyTextComesBackEmptyAndIsFoundByAnEmptyText"},
                    Fault{"refuses a text that it cannot keep", "ValueSuite.LoneSurrogatesComeBackOrAreRefused"},
                    Fault{"keeps milliseconds", "ValueSuite.DateInUtcComesBackWithItsMilliseconds"},
                    Fault{"stores the clock reading", "ValueSuite.DateWithAnOffsetKeepsItsClockReading"},
                    Fault{"returns the clock reading", "ValueSuite.HourThatSummerTimeSkipsComesBack"},
                    Fault{"keeps the writes of a scope", "ScopeSuite.EndWithoutCommitKeepsTheWrites"},
                    Fault{"shows the writes of a scope together", "ScopeSuite.InnerEndDoesNotEndTheOuterTransaction"},
                    Fault{"undoes only the failed statement", "ScopeSuite.FailedStatementUndoesNothingBeforeIt"},
                    Fault{"commits no client transaction at a scope's end",
                          "ClientTransactionSuite.ScopeInsideATransactionCommitsNothing"},
                    Fault{"refuses a second transaction",
                          "ClientTransactionSuite.SecondTransactionIsRefusedAndTheFirstContinues"},
                    Fault{"refuses to end a transaction that was not begun",
                          "ClientTransactionSuite.CommitAndRollbackWithoutATransactionAreRefused"},
                    Fault{"rolls a transaction back", "ClientTransactionSuite.RollbackUndoesTheWrites"}));

} // namespace
