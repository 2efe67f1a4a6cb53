#include "postgres/PostgresDatabaseFactory.h"
#include "postgres/support/CuttingProxy.h"
#include "postgres/support/PostgresServer.h"
#include "reliability/ManagerScript.h"
#include "reliability/WritingLoop.h"
#include "support/QtPrinters.h"
#include "support/RawStore.h"
#include "support/TemporarySettings.h"

#include <gtest/gtest.h>

#include <QLoggingCategory>

#include <functional>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace manager_network_faults_test {
namespace {

using namespace sync::database;
using namespace tandry::test;
using Cut = CuttingProxy::Cut;

std::string NameOf(Cut cut)
{
    switch (cut) {
    case Cut::BeforeRequest:
        return "ConnectionCutBeforeARequest";
    case Cut::BeforeAnswer:
        return "ConnectionCutBeforeAnAnswer";
    case Cut::RequestSwallowed:
        return "SwallowedRequest";
    case Cut::AnswerSwallowed:
        return "SwallowedAnswer";
    case Cut::RequestLate:
        break;
    }
    return "LateRequest";
}

/// Runs the operations of all managers, each on the script's rows, and lets the network fail at one of its requests.
class ManagerNetworkFaults : public testing::TestWithParam<Cut>
{
protected:
    ManagerNetworkFaults() { QLoggingCategory::setFilterRules("tandry.*=false"_q); } // there are many errors
    ~ManagerNetworkFaults() override
    {
        QLoggingCategory::setFilterRules(QString());
        store.reset();
        raw.Run("DROP SCHEMA IF EXISTS tandry_%1 CASCADE;DROP SCHEMA IF EXISTS saved CASCADE"_q.arg(_profile));
    }

    void SetUp() override
    {
        OpenOptions options;
        options.busyTimeoutMsec = 20'000;
        StoreError error;
        store =
            PostgresDatabaseFactory::Open(proxy.Uri(_profile, "options=-cstatement_timeout%3D400"_q), error, options);
        ASSERT_NE(store, nullptr) << error.text.toStdString();
        QObject::connect(store.get(), &StoreFactory::CommitFailed, [this](StoreError const& lost) {
            ++_commitFailures;
            _isUnknown = _isUnknown || lost.kind == StoreErrorKind::OutcomeUnknown;
        });
        Managers managers(store);
        FillScriptStore(managers);
        ASSERT_FALSE(store->LastError());
        raw.Run("UPDATE AuthenticationConfiguration SET encryptedPassword = 'of old'"_q);
        SaveRows();
    }

    static bool Hangs() { return GetParam() != Cut::BeforeRequest && GetParam() != Cut::BeforeAnswer; }

    /// In the short form one of so many requests fails, and in the long one each, or fewer of those that take a second.
    static int Step()
    {
        bool const isLong = SoakNumber("TANDRY_SOAK_ROUNDS", 0) > 0;
        return Hangs() ? (isLong ? 5 : 60) : (isLong ? 1 : 4);
    }

    /// Calls `run` with the proxy set to each of the operation's requests in turn, as far as the form of the test goes.
    template <class Operation>
    void AtEachRequest(Operation const& operation, std::function<bool()> const& run)
    {
        constexpr int Spread = 7; // neither in step with the requests of an operation nor a divisor of a step
        int request = 1 + _operations++ * Spread % Step();
        for (bool isHit = true; isHit; request += Step()) {
            SCOPED_TRACE(std::string(operation.name) + ", request " + std::to_string(request));
            ResetRows();
            _commitFailures = 0;
            _isUnknown = false;
            proxy.CutAt(request, GetParam());
            isHit = run();
            _faults += isHit ? 1 : 0;
        }
    }

    /// Prints how often the network has failed below these operations.
    void Print(char const* operations) const
    {
        std::cout << "managers' " << operations << ", " << NameOf(GetParam()) << ": " << _faults << " faults"
                  << std::endl;
        EXPECT_GT(_faults, 0);
    }

    bool StopFaults()
    {
        bool const isHit = proxy.hasCut();
        proxy.CutNoMore();
        return isHit;
    }

    OperationOutcome OutcomeOf(bool answer) const
    {
        return {answer, store->LastError().has_value(), _commitFailures > 0, _isUnknown};
    }

    RowTexts Rows()
    {
        RowTexts rows;
        for (auto const& row : raw.Rows(_selectRows))
            rows.insert(row[0].toString(), row[1].toString());
        return rows;
    }

    void ResetRows() { raw.Run(_resetRows); }

    CuttingProxy proxy;
    std::shared_ptr<PostgresDatabaseFactory> store;

private:
    /// Keeps the rows that there are now, and makes the statements that read all rows and put the kept ones back.
    void SaveRows()
    {
        QString save = "CREATE SCHEMA saved;"_q;
        QStringList selects;
        for (auto const& table : raw.Rows("SELECT table_name FROM information_schema.columns WHERE table_schema = "
                                          "current_schema AND column_name = 'id' AND is_identity = 'YES'"_q)) {
            QString const name = table[0].toString();
            save += "CREATE TABLE saved.%1 AS SELECT * FROM %1;"_q.arg(name);
            _resetRows +=
                "DELETE FROM %1;INSERT INTO %1 SELECT * FROM saved.%1;"
                "SELECT setval(pg_get_serial_sequence('%1', 'id'), coalesce(max(id), 0) + 1, false) FROM %1;"_q.arg(
                    name);
            selects.append("SELECT '%1 ' || id, CAST(t AS text) FROM %1 t"_q.arg(name));
        }
        EXPECT_EQ(selects.size(), 8) << "tables";
        _selectRows = selects.join(" UNION ALL "_q);
        raw.Run(save);
    }

    TemporarySettings _settings;
    QString const _profile = PostgresServer::NewProfile();
    int _operations = 0;
    int _faults = 0;
    int _commitFailures = 0;
    bool _isUnknown = false;
    QString _selectRows;
    QString _resetRows;

protected:
    RawStore raw{PostgresServer::Shared().Uri(_profile)};
};

INSTANTIATE_TEST_SUITE_P(For,
                         ManagerNetworkFaults,
                         testing::Values(Cut::BeforeRequest,
                                         Cut::BeforeAnswer,
                                         Cut::RequestSwallowed,
                                         Cut::AnswerSwallowed,
                                         Cut::RequestLate),
                         [](auto const& parameter) { return NameOf(parameter.param); });

TEST_P(ManagerNetworkFaults, AnyOperationThatWritesTellsWhatHasHappened)
{
    RowTexts const before = Rows();
    for (WritingOperation const& operation : WritingOperations()) {
        ResetRows();
        {
            Managers managers(store);
            EXPECT_TRUE(operation.run(managers, *store)) << operation.name;
            EXPECT_FALSE(store->LastError()) << operation.name;
        }
        RowTexts const after = Rows();
        AtEachRequest(operation, [&] {
            Managers managers(store);
            bool const answer = operation.run(managers, *store);
            bool const isHit = StopFaults();
            OperationOutcome const outcome = OutcomeOf(answer);
            EXPECT_TRUE(isHit || (outcome.succeeded() && !outcome.hasError));
            store->ClearError();
            RowTexts const found = Rows();
            EXPECT_TRUE(MatchesOutcome(operation, outcome, before, after, found));
            if (!outcome.succeeded() && !outcome.isUnknown && operation.failing == Failing::AllOrNothing) {
                EXPECT_TRUE(operation.run(managers, *store)) << "on a new connection";
                EXPECT_EQ(Rows().size(), after.size());
            }
            store->ClearError();
            return isHit;
        });
    }
    Print("writes");
}

TEST_P(ManagerNetworkFaults, AnyOperationThatReadsIsRepeated)
{
    for (ReadingOperation const& operation : ReadingOperations()) {
        QString const expected = [&] {
            Managers managers(store);
            return operation.run(managers);
        }();
        AtEachRequest(operation, [&] {
            Managers managers(store);
            EXPECT_EQ(operation.run(managers), expected);
            EXPECT_FALSE(store->LastError());
            store->ClearError();
            return StopFaults();
        });
    }
    Print("reads");
}

} // namespace
} // namespace manager_network_faults_test
