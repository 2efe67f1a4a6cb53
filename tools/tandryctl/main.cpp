#include "CommandLine.h"
#include "Program.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QTextCodec>

int main(int argc, char** argv)
{
    // File names and output are UTF-8 whatever the locale says, so that a name means the same at every call.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    QCoreApplication const application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tandry"));
    // The store's reasons reach the user as the command's own message.
    QLoggingCategory::setFilterRules(QStringLiteral("tandry.database*=false"));

    tandryctl::CommandLine commandLine;
    tandryctl::DeclareCommands(commandLine);
    return static_cast<int>(commandLine.Run(argc, argv));
}
