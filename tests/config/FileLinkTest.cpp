#include "config/FileLink.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <QObject>

#include <type_traits>

namespace {

using sync::config::FileLink;

static_assert(std::has_virtual_destructor_v<FileLink>);
static_assert(!std::is_base_of_v<QObject, FileLink>);

TEST(FileLink, DefaultRecordPointsNowhereAndIsInvalid)
{
    FileLink const link;
    EXPECT_EQ(link.fileId, -1);
    EXPECT_TRUE(link.path.isNull());
    EXPECT_TRUE(link.refId.isNull());
    EXPECT_TRUE(link.serverFileId.isNull());
    EXPECT_FALSE(link.IsValid());
}

struct ValidityCase
{
    char const* name;
    int fileId;
    QString path;
    QString refId;
    QString serverFileId;
    bool valid;
};

class FileLinkValidity : public testing::TestWithParam<ValidityCase>
{};

TEST_P(FileLinkValidity, NeedsAnIdAServerIdOrAPath)
{
    FileLink link;
    link.fileId = GetParam().fileId;
    link.path = GetParam().path;
    link.refId = GetParam().refId;
    link.serverFileId = GetParam().serverFileId;
    EXPECT_EQ(link.IsValid(), GetParam().valid);
}

INSTANTIATE_TEST_SUITE_P(
    Links,
    FileLinkValidity,
    testing::Values(ValidityCase{"FileIdZeroAlone", 0, {}, {}, {}, true},
                    ValidityCase{"FileIdMinusTwoAlone", -2, {}, {}, {}, true},
                    ValidityCase{"PathAlone", -1, QStringLiteral("a"), {}, {}, true},
                    ValidityCase{"ServerIdAlone", -1, {}, {}, QStringLiteral("s"), true},
                    ValidityCase{"RefIdAlone", -1, {}, QStringLiteral("r"), {}, false},
                    ValidityCase{"EmptyTexts", -1, QStringLiteral(""), QStringLiteral(""), QStringLiteral(""), false}),
    [](auto const& test) { return test.param.name; });

TEST(FileLink, CopyAndAssignmentCarryAllMembers)
{
    FileLink source;
    source.fileId = 7;
    source.path = QStringLiteral("path");
    source.refId = QStringLiteral("ref");
    source.serverFileId = QStringLiteral("server");

    FileLink const copy(source);
    FileLink assigned;
    assigned = source;
    FileLink& self = assigned;
    assigned = self;

    for (FileLink const& link : {copy, assigned}) {
        EXPECT_EQ(link.fileId, 7);
        EXPECT_EQ(link.path, QStringLiteral("path"));
        EXPECT_EQ(link.refId, QStringLiteral("ref"));
        EXPECT_EQ(link.serverFileId, QStringLiteral("server"));
    }
}

} // namespace
