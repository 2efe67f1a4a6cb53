#include "database/SqliteDatabaseFactory.h"
#include "reliability/StoreForWriting.h"
#include "support/FaultyFiles.h"
#include "support/QtPrinters.h"
#include "support/StoreFixture.h"
#include "support/UnflushedWrites.h"

#include <gmock/gmock.h>

#include <sqlite3.h>

#include <cstdio>
#include <iostream>
#include <memory>
#include <random>

namespace {

using namespace tandry::test;
using sync::database::SqliteDatabaseFactory;

/// Simulates a power cut while a program writes: the disk has what was flushed, and any part of the rest.
class PowerCut : public EachJournalMode
{
protected:
    void SetUp() override {}
};

TANDRY_IN_EACH_JOURNAL_MODE(PowerCut);

TEST_P(PowerCut, LosesNoAcknowledgedWriteAndLeavesNoPartialOne)
{
    unsigned const seed = std::random_device()();
    std::mt19937 random(seed);
    FaultyFiles files;
    int acknowledged = 0;
    int lost = 0;
    for (int round = 0; round < Rounds(); ++round) {
        SCOPED_TRACE("seed %1, round %2"_q.arg(seed).arg(round).toStdString());
        QTemporaryDir const place;
        QString const path = place.filePath("store.db"_q);
        RowStates const before = MakeStoreForWriting(path, GetParam());
        std::unique_ptr<std::FILE, int (*)(std::FILE*)> const reportFile(std::tmpfile(), &std::fclose);

        UnflushedWrites writes;
        files.Tell(&writes);
        files.Fail(100 + int(random() % 3000), SQLITE_IOERR, AllOperations, true);
        EXPECT_EQ(
            WriteUntilFailure(SqliteDatabaseFactory::Open(path), place.path(), unsigned(random()), reportFile.get()),
            1);
        ASSERT_TRUE(files.Recover());
        files.Tell(nullptr);
        writes.CutPower(random);

        std::rewind(reportFile.get());
        WriterReport report(reportFile.get(), before);
        report.ReadRest();
        QString error;
        ASSERT_NE(SqliteDatabaseFactory::Open(path, &error), nullptr) << error.toStdString();
        EXPECT_EQ(RawStore(path).Value("PRAGMA integrity_check"_q).toString(), "ok"_q);
        std::vector<QByteArray> const lostNow = report.Lost(ReadRows(path));
        EXPECT_THAT(lostNow, testing::IsEmpty());
        acknowledged += report.acknowledged();
        lost += int(lostNow.size());
    }
    std::cout << (UsesLog() ? "log" : "journal") << ": " << Rounds() << " power cuts, " << acknowledged
              << " writes acknowledged, " << lost << " lost" << std::endl;
    EXPECT_GT(acknowledged, 0);
}

} // namespace
