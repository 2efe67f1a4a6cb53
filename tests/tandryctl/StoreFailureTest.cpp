#include "tools/tandryctl/StoreFailure.h"
#include "support/QtPrinters.h"

#include "database/StoreError.h"

#include <gtest/gtest.h>

#include <iterator>
#include <set>

using namespace tandryctl;
using namespace tandry::test;
using sync::database::StoreError;
using sync::database::StoreErrorKind;

namespace {

StoreError ErrorOf(StoreErrorKind kind)
{
    StoreError error;
    error.text = "/a/store.db: it failed"_q;
    error.kind = kind;
    return error;
}

struct KindRow
{
    StoreErrorKind kind;
    FailureCode code;
};

constexpr KindRow Kinds[] = {
    {StoreErrorKind::Locked, FailureCode::StoreLocked},
    {StoreErrorKind::Full, FailureCode::StoreFull},
    {StoreErrorKind::ReadOnly, FailureCode::StoreReadOnly},
    {StoreErrorKind::Damaged, FailureCode::StoreDamaged},
    {StoreErrorKind::Moved, FailureCode::StoreMoved},
    {StoreErrorKind::Refused, FailureCode::StoreRefused},
    {StoreErrorKind::OutcomeUnknown, FailureCode::StoreOutcomeUnknown},
    {StoreErrorKind::ConnectionLost, FailureCode::StoreFailed},
    {StoreErrorKind::Other, FailureCode::StoreFailed},
    {StoreErrorKind::OlderVersion, FailureCode::StoreRefused},
    {StoreErrorKind::NewerVersion, FailureCode::StoreRefused},
    {StoreErrorKind::NotClosed, FailureCode::StoreRefused},
};

} // namespace

TEST(StoreFailure, HasTheCodeOfItsKindAndExitStatusThree)
{
    for (KindRow const& row : Kinds) {
        Failure const failure = StoreFailure(ErrorOf(row.kind));
        EXPECT_EQ(failure.code(), row.code);
        EXPECT_EQ(StatusOf(failure.code()), ExitStatus::Failed);
        EXPECT_EQ(failure.message(), "/a/store.db: it failed"_q);
    }
}

TEST(StoreFailure, HasAHintForEachKind)
{
    std::set<QString> hints;
    for (KindRow const& row : Kinds) {
        QString const hint = StoreFailure(ErrorOf(row.kind)).hint();
        EXPECT_FALSE(hint.isEmpty());
        hints.insert(hint);
    }
    EXPECT_EQ(hints.size(), std::size(Kinds) - 1); // one for a lost connection and for any other error
}

TEST(StoreFailure, NamesTheCommandThatHelps)
{
    auto const hint = [](StoreErrorKind kind) { return StoreFailure(ErrorOf(kind)).hint(); };
    EXPECT_TRUE(hint(StoreErrorKind::Damaged).contains("tandryctl recover"_q));
    EXPECT_TRUE(hint(StoreErrorKind::Damaged).contains("tandryctl restore"_q));
    EXPECT_TRUE(hint(StoreErrorKind::OlderVersion).contains("tandryctl init"_q));
    EXPECT_TRUE(hint(StoreErrorKind::NewerVersion).contains("tandryctl restore"_q));
    EXPECT_TRUE(hint(StoreErrorKind::NotClosed).contains("tandryctl init"_q));
}

TEST(StoreFailure, TakesTheCommandsHintOnlyForOtherErrors)
{
    EXPECT_EQ(StoreFailure(ErrorOf(StoreErrorKind::Other), "give another name"_q).hint(), "give another name"_q);
    EXPECT_NE(StoreFailure(ErrorOf(StoreErrorKind::Full), "give another name"_q).hint(), "give another name"_q);
}

TEST(StoreFailure, OfACopyNamesTheTemporaryFolderForItsFaultsAlone)
{
    for (KindRow const& row : Kinds) {
        Failure const failure = CopyFailure(ErrorOf(row.kind));
        bool const isFoldersFault = row.kind == StoreErrorKind::Full || row.kind == StoreErrorKind::ReadOnly;
        EXPECT_EQ(failure.hint(), isFoldersFault ? AdviceOnTemporaryFolder() : StoreFailure(ErrorOf(row.kind)).hint());
        EXPECT_EQ(failure.code(), isFoldersFault ? FailureCode::StoreFailed : row.code);
    }
}

TEST(StoreFailure, KeepsItsMessageOnOneLine)
{
    StoreError error = ErrorOf(StoreErrorKind::Other);
    error.text = "/a\nb: it failed"_q;
    EXPECT_EQ(StoreFailure(error).message(), "/a\\nb: it failed"_q);
}
