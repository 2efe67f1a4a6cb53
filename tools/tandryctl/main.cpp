#include "CommandLine.h"
#include "Program.h"
#include "Terminal.h"

#include "database/SqliteProcess.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QTextCodec>

int main(int argc, char** argv)
{
    tandryctl::OccupyClosedStreams();
    sync::database::DisableSqliteMemoryStatistics();
    // File names and output are UTF-8 in every locale, so that a name always means the same file.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    QCoreApplication const application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tandry"));
    // The commands print the store's errors themselves.
    QLoggingCategory::setFilterRules(QStringLiteral("tandry.database*=false"));

    tandryctl::CommandLine commandLine;
    tandryctl::DeclareCommands(commandLine);
    return static_cast<int>(commandLine.Run(argc, argv));
}
