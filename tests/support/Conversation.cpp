#include "support/Conversation.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tandry::test {

namespace {

Execution MakeExecution(QString const& statement, std::vector<Bound> const& bindings, int scopeDepth)
{
    return {statement, {bindings.begin(), bindings.end()}, scopeDepth, true};
}

} // namespace

Execution Read(QString const& statement, std::vector<Bound> const& bindings)
{
    return MakeExecution(statement, bindings, 0);
}

Execution Read(char const* statement, std::vector<Bound> const& bindings)
{
    return Read(QString::fromUtf8(statement), bindings);
}

Execution Written(QString const& statement, std::vector<Bound> const& bindings)
{
    return MakeExecution(statement, bindings, 1);
}

Execution Written(char const* statement, std::vector<Bound> const& bindings)
{
    return Written(QString::fromUtf8(statement), bindings);
}

void ExpectConversation(RecordingStore const& store, std::vector<Execution> const& expected)
{
    std::vector<Execution> const& actual = store.Executions();
    for (std::size_t i = 0; i < std::max(actual.size(), expected.size()); ++i) {
        SCOPED_TRACE("statement " + std::to_string(i + 1));
        if (i >= expected.size()) {
            ADD_FAILURE() << "unexpected: " << testing::PrintToString(actual[i].statement);
            continue;
        }
        if (i >= actual.size()) {
            ADD_FAILURE() << "missing: " << testing::PrintToString(expected[i].statement);
            continue;
        }
        EXPECT_EQ(actual[i].statement, expected[i].statement);
        EXPECT_EQ(actual[i].bindings, expected[i].bindings);
        EXPECT_EQ(actual[i].scopeDepth, expected[i].scopeDepth);
    }
}

QString OneProperty(char const* key, char const* value)
{
    return QStringLiteral("<!DOCTYPE NameValueXml>\n<NameValueXml>\n <%1><![CDATA[%2]]></%1>\n</NameValueXml>\n")
        .arg(QString::fromUtf8(key), QString::fromUtf8(value));
}

QString NoProperties()
{
    return QStringLiteral("<!DOCTYPE NameValueXml>\n<NameValueXml/>\n");
}

} // namespace tandry::test
