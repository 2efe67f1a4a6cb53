#include "database/SqliteDatabaseFactory.h"
#include "reliability/StoreForWriting.h"
#include "support/ChildProcess.h"
#include "support/QtPrinters.h"
#include "support/RawStore.h"

#include <gmock/gmock.h>

#include <QTemporaryDir>

#include <array>
#include <csignal>
#include <iostream>
#include <random>

#include <unistd.h>

namespace {

using namespace tandry::test;
using sync::database::JournalMode;
using sync::database::SqliteDatabaseFactory;

class KilledProcessTest : public testing::TestWithParam<JournalMode>
{};

TEST_P(KilledProcessTest, LosesNoAcknowledgedWriteAndLeavesNoPartialOne)
{
    unsigned const seed = std::random_device()();
    std::mt19937 random(seed);
    int acknowledged = 0;
    int lost = 0;
    for (int round = 0; round < Rounds(); ++round) {
        SCOPED_TRACE("seed %1, round %2"_q.arg(seed).arg(round).toStdString());
        QTemporaryDir const folder;
        QString const path = folder.filePath("store.db"_q);
        RowStates const before = MakeStoreForWriting(path, GetParam());

        std::array<int, 2> ends{};
        ASSERT_EQ(pipe(ends.data()), 0);
        auto const writerSeed = static_cast<unsigned>(random());
        ChildProcess writer([&] {
            close(ends[0]);
            return WriteUntilFailure(
                SqliteDatabaseFactory::Open(path), folder.path(), writerSeed, fdopen(ends[1], "w"));
        });
        close(ends[1]);
        std::FILE* const pipeEnd = fdopen(ends[0], "r");
        WriterReport report(pipeEnd, before);
        ASSERT_TRUE(report.ReadAcknowledgements(1 + int(random() % 40))) << "the writer failed before it was killed";
        // Waits a random time, so that the kill is not tied to a step of the writer.
        for (unsigned long volatile spins = random() % 2'000'000; spins > 0; spins = spins - 1) {
        }
        ASSERT_EQ(kill(writer.id(), SIGKILL), 0);
        ASSERT_EQ(writer.Wait(), -SIGKILL);
        report.ReadRest();
        std::fclose(pipeEnd);

        QString error;
        ASSERT_NE(SqliteDatabaseFactory::Open(path, &error), nullptr) << error.toStdString();
        RawStore raw(path);
        EXPECT_EQ(raw.Value("PRAGMA integrity_check"_q).toString(), "ok"_q);
        EXPECT_EQ(raw.Value("SELECT count(*) FROM FolderConfiguration WHERE rootId = -1"_q).toInt(), 0);
        std::vector<QByteArray> const lostNow = report.Lost(ReadRows(path));
        EXPECT_THAT(lostNow, testing::IsEmpty());
        acknowledged += report.acknowledged();
        lost += int(lostNow.size());
    }
    std::cout << (GetParam() == JournalMode::WriteAheadLog ? "log" : "journal") << ": " << Rounds() << " kills, "
              << acknowledged << " writes acknowledged, " << lost << " lost" << std::endl;
    EXPECT_GT(acknowledged, 0);
}

INSTANTIATE_TEST_SUITE_P(Each,
                         KilledProcessTest,
                         testing::Values(JournalMode::WriteAheadLog, JournalMode::Rollback),
                         [](auto const& parameter) {
                             return parameter.param == JournalMode::WriteAheadLog ? "Log" : "Journal";
                         });

} // namespace
