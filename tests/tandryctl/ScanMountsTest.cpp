// Scans of roots with other file systems in them.

#include "ToolFixture.h"

#include <QFile>

using namespace tandryctl::test;

namespace {

class ScanMountsTest : public ToolTest
{
protected:
    void SetUp() override
    {
        Init();
        AddRoot("docs"_q, "/s"_q);
        MakeDirectory("docs/usb"_q);
        WriteFile("docs/here"_q);
    }

    int Files() { return Json({"list"_q, "files"_q}).size(); }
};

} // namespace

/// Runs a script with mounts, or skips the test.
#define RUN_WITH_MOUNTS(ran, script)                                                                                   \
    auto const ran = RunWithMounts(script);                                                                            \
    if (!ran)                                                                                                          \
        GTEST_SKIP() << "nothing may be mounted here";                                                                 \
    static_assert(true, "takes the semicolon")

TEST_F(ScanMountsTest, MountInsideIsReadAndNamed)
{
    RUN_WITH_MOUNTS(ran, "mount -t tmpfs stick docs/usb; touch docs/usb/a; tandryctl scan");
    EXPECT_EQ(ran->status, 0) << ran->err.toStdString();
    EXPECT_TRUE(ran->out.contains("mounts inside: '"_q + At("docs/usb") + "' (tmpfs stick)\n"_q))
        << ran->out.toStdString();
    EXPECT_EQ(Files(), 2);
}

TEST_F(ScanMountsTest, OneFileSystemLeavesOutMountsAndNamesThem)
{
    RUN_WITH_MOUNTS(ran, "mount -t tmpfs stick docs/usb; touch docs/usb/a; tandryctl scan --one-file-system");
    EXPECT_EQ(ran->status, 0) << ran->err.toStdString();
    EXPECT_TRUE(ran->out.contains("left out: 1 mount '"_q + At("docs/usb") + "' (tmpfs stick)\n"_q))
        << ran->out.toStdString();
    EXPECT_EQ(Files(), 1);
}

TEST_F(ScanMountsTest, OneFileSystemPrunesNothingOfAMount)
{
    RUN_WITH_MOUNTS(ran,
                    "mount -t tmpfs stick docs/usb; touch docs/usb/a; tandryctl scan; rm docs/here docs/usb/a;"
                    "tandryctl scan --one-file-system --prune");
    EXPECT_EQ(ran->status, 0) << ran->err.toStdString();
    EXPECT_TRUE(ran->out.contains("0 unchanged, 1 pruned"_q)) << ran->out.toStdString();
    ASSERT_EQ(Files(), 1);
    EXPECT_EQ(Json({"list"_q, "files"_q}).first().toObject().value("clientPath"_q).toString(), At("docs/usb/a"));
}

TEST_F(ScanMountsTest, JsonHasTheMounts)
{
    RUN_WITH_MOUNTS(ran, "mount -t tmpfs stick docs/usb; tandryctl scan --json");
    QString const mount = "'"_q + At("docs/usb") + "' (tmpfs stick)"_q;
    EXPECT_EQ(ran->json().first().toObject().value("mounts"_q).toArray(), QJsonArray{mount});
}
