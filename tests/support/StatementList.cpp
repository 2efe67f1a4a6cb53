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

} // namespace tandry::test
