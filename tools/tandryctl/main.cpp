#include "CommandLine.h"
#include "Program.h"
#include "Terminal.h"

#include "database/SqliteProcess.h"

#include <QCoreApplication>
#if QT_VERSION_MAJOR == 5
#include <QTextCodec>
#endif

int main(int argc, char** argv)
{
    tandryctl::OccupyClosedStreams();
    sync::database::DisableSqliteMemoryStatistics();
#if QT_VERSION_MAJOR == 5
    // File names and output are UTF-8 in every locale, so that a name always means the same file. Qt 6 knows no other.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
    QCoreApplication const application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tandry"));
    tandryctl::SetTerminalUse({});

    tandryctl::CommandLine commandLine;
    tandryctl::DeclareCommands(commandLine);
    return static_cast<int>(commandLine.Run(argc, argv));
}
