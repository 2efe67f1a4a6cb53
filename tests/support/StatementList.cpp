#include "support/StatementList.h"

#include <gtest/gtest.h>

#include <QFile>

namespace tandry::test {

std::vector<QString> ListedStatements()
{
    std::vector<QString> statements;
    QFile file(QStringLiteral(TANDRY_TEST_DATA "/statements.txt"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(file.errorString());
    while (!file.atEnd()) {
        QByteArray const line = file.readLine();
        if (!line.startsWith('"'))
            continue;
        EXPECT_TRUE(line.endsWith("\"\n")) << line.constData();
        statements.push_back(QString::fromUtf8(line.mid(1, line.size() - 3)));
    }
    return statements;
}

QString ListedStatement(std::string const& beginning, std::string const& end)
{
    std::vector<QString> found;
    for (QString const& statement : ListedStatements()) {
        if (statement.startsWith(QString::fromStdString(beginning)) && statement.endsWith(QString::fromStdString(end)))
            found.push_back(statement);
    }
    EXPECT_EQ(found.size(), 1) << beginning << "…" << end;
    return found.size() == 1 ? found.front() : QString();
}

} // namespace tandry::test
