// Commands whose temporary folder does not take what they put there.

#include "ToolFixture.h"

#include "support/ReleasedStores.h"

#include <QFile>

using namespace tandryctl::test;

namespace {

class TemporaryFolderTest : public ToolTest
{
protected:
    void ExpectAdvice(QStringList const& command, int status)
    {
        for (QString const& noFolder : {StorePath(), At("missing")}) {
            SCOPED_TRACE((command.join(QLatin1Char(' ')) + " with TMPDIR="_q + noFolder).toStdString());
            RunResult const ran =
                RunWithoutStore(QStringList{"--store"_q, StorePath()} + command, {"TMPDIR="_q + noFolder});
            EXPECT_EQ(ran.status, status);
            EXPECT_EQ(ran.out, QString());
            EXPECT_TRUE(ran.err.contains(noFolder)) << ran.err.toStdString();
            EXPECT_TRUE(
                ran.err.endsWith("; name another folder, with enough room, in the environment variable TMPDIR\n"_q))
                << ran.err.toStdString();
        }
    }
};

} // namespace

TEST_F(TemporaryFolderTest, AdviceIsTheSameInAllCommandsThatCopyTheStore)
{
    Init();
    RunSuccessfully({"backup"_q, At("other.db")});
    ExpectAdvice({"export"_q}, 3);
    ExpectAdvice({"bundle"_q, At("bundle.tar")}, 3);
    ExpectAdvice({"diff"_q, "--with"_q, At("other.db")}, 3);
    ExpectAdvice({"scan"_q, "--dry-run"_q}, 3);
    ExpectAdvice({"recover"_q, At("other.db"), "--to"_q, At("new.db"), "--dry-run"_q}, 3);
    ExpectAdvice({"copy"_q, "--from"_q, StorePath(), "--to"_q, At("new.db")}, 1);
    EXPECT_FALSE(QFile::exists(At("bundle.tar")));
    EXPECT_FALSE(QFile::exists(At("new.db")));
}

TEST_F(TemporaryFolderTest, AdviceIsGivenForAStoreThatIsReadFromACopy)
{
    tandry::test::OlderStores().front().CopyTo(StorePath());
    ExpectAdvice({"list"_q, "roots"_q}, 3);
}
