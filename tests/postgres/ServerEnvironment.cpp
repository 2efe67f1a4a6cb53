#include "postgres/support/PostgresServer.h"

#include <gtest/gtest.h>

namespace {

/// Skips all cases where there is no server.
class ServerEnvironment : public testing::Environment
{
public:
    void SetUp() override
    {
        QString const problem = tandry::test::PostgresServer::Shared().problem();
        if (!problem.isNull())
            GTEST_SKIP() << problem.toStdString();
    }
};

testing::Environment* const environment = testing::AddGlobalTestEnvironment(new ServerEnvironment);

} // namespace
