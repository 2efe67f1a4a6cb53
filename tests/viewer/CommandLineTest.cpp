#include "tools/viewer/CommandLine.h"

#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

namespace {

using namespace tandry::test;
using tandry::viewer::CommandLine;
using Request = CommandLine::Request;

/// Sets an environment variable, or unsets it, and puts it back.
class Variable
{
public:
    Variable(char const* name, char const* value)
        : _name(name)
        , _isSet(qEnvironmentVariableIsSet(name))
        , _before(qgetenv(name))
    {
        if (value != nullptr)
            qputenv(name, value);
        else
            qunsetenv(name);
    }
    ~Variable()
    {
        if (_isSet)
            qputenv(_name, _before);
        else
            qunsetenv(_name);
    }
    Q_DISABLE_COPY_MOVE(Variable)

private:
    char const* const _name;
    bool const _isSet;
    QByteArray const _before;
};

struct RunResult
{
    int status;
    QString out;
    QString err;
};

RunResult RunViewer(QStringList const& arguments)
{
    QProcess process;
    process.start(QStringLiteral(TANDRY_VIEWER_PROGRAM), arguments);
    EXPECT_TRUE(process.waitForFinished());
    return {process.exitCode(),
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

TEST(ViewerCommandLine, TakesTheStoreByOptionOrByName)
{
    Variable const variable("TANDRY_STORE", "/of/the/variable.db");
    EXPECT_EQ(CommandLine({"--store"_q, "/a.db"_q}).storePath, "/a.db"_q);
    EXPECT_EQ(CommandLine({"--store=/a.db"_q}).storePath, "/a.db"_q);
    EXPECT_EQ(CommandLine({"/a.db"_q}).storePath, "/a.db"_q);
    EXPECT_EQ(CommandLine({"--"_q, "--a.db"_q}).storePath, "--a.db"_q);
    EXPECT_EQ(CommandLine(QStringList()).storePath, "/of/the/variable.db"_q);
}

TEST(ViewerCommandLine, TakesTheUsersOwnStoreIfNoneIsNamed)
{
    Variable const store("TANDRY_STORE", nullptr);
    Variable const data("XDG_DATA_HOME", "/home/ada/data");
    EXPECT_EQ(CommandLine(QStringList()).storePath, "/home/ada/data/tandry/tandry.db"_q);
}

TEST(ViewerCommandLine, RefusesTwoStoresAnEmptyNameAndUnknownOptions)
{
    Variable const store("TANDRY_STORE", nullptr);
    for (QStringList const& arguments : {QStringList{"/a"_q, "/b"_q},
                                         QStringList{"--store"_q, "/a"_q, "/b"_q},
                                         QStringList{""_q},
                                         QStringList{"--store"_q, ""_q},
                                         QStringList{"--write"_q}}) {
        CommandLine const line(arguments);
        EXPECT_EQ(line.request, Request::Refuse) << arguments.join(QLatin1Char(' ')).toStdString();
        EXPECT_FALSE(line.fault.isEmpty());
    }
    Variable const emptyStore("TANDRY_STORE", "");
    EXPECT_EQ(CommandLine(QStringList()).request, Request::Refuse);
}

TEST(ViewerCommandLine, RefusesAStoreOnAServerWithoutShowingItsPassword)
{
    for (char const* name : {"postgresql://u:hunter2@h/d", "POSTGRES://u:hunter2@h/d", "host = h password = hunter2"}) {
        Variable const store("TANDRY_STORE", name);
        CommandLine const line{QStringList()};
        EXPECT_EQ(line.request, Request::Refuse) << name;
        EXPECT_TRUE(line.fault.contains("tandryctl copy"_q)) << line.fault.toStdString();
        EXPECT_FALSE(line.fault.contains("hunter2"_q));
    }
    Variable const store("TANDRY_STORE", "folder=1/password=2.db");
    EXPECT_NE(CommandLine(QStringList()).request, Request::Refuse);
}

TEST(ViewerProgram, PrintsHelpAndVersionWithoutADisplay)
{
    Variable const platform("QT_QPA_PLATFORM", "there-is-none");
    for (QString const& option : {"--help"_q, "-h"_q}) {
        RunResult const ran = RunViewer({option});
        EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
        EXPECT_EQ(ran.out, tandry::viewer::HelpText());
    }
    for (QString const& option : {"--version"_q, "-V"_q}) {
        RunResult const ran = RunViewer({option});
        EXPECT_EQ(ran.status, 0) << ran.err.toStdString();
        EXPECT_EQ(ran.out, "tandry-viewer " TANDRY_VIEWER_VERSION "\n"_q);
    }
}

TEST(ViewerProgram, SaysByItsStatusThatItsOutputWasLost)
{
    QProcess process;
    process.setStandardOutputFile("/dev/full"_q);
    process.start(QStringLiteral(TANDRY_VIEWER_PROGRAM), {"--help"_q});
    ASSERT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.exitCode(), 3);
}

TEST(ViewerProgram, ReportsWrongUsageInOneLine)
{
    QTemporaryDir const folder;
    Variable const runtime("XDG_RUNTIME_DIR", folder.path().toUtf8().constData()); // Qt asks for it
    RunResult const ran = RunViewer({"--write"_q});
    EXPECT_EQ(ran.status, 2);
    EXPECT_EQ(ran.out, QString());
    EXPECT_EQ(ran.err, "tandry-viewer: unknown option 'write'; see 'tandry-viewer --help'\n"_q);
}

TEST(ViewerManual, NamesEveryOption)
{
    QFile file(QStringLiteral(TANDRY_VIEWER_MANUAL));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QString const manual = QString::fromUtf8(file.readAll()).remove(QLatin1Char('\\'));
    auto matches = QRegularExpression("--[a-z]+"_q).globalMatch(tandry::viewer::HelpText());
    ASSERT_TRUE(matches.hasNext());
    while (matches.hasNext()) {
        QString const option = matches.next().captured();
        EXPECT_TRUE(manual.contains(option)) << option.toStdString();
    }
}

} // namespace
