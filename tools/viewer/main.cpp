#include "tools/viewer/CommandLine.h"
#include "tools/viewer/MainWindow.h"

#include "database/SqliteProcess.h"

#include <QApplication>
#if QT_VERSION_MAJOR == 5
#include <QTextCodec>
#endif

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <memory>

namespace {

using tandry::viewer::CommandLine;
using tandry::viewer::MainWindow;

constexpr int Done = 0;
constexpr int WrongUsage = 2;
constexpr int Failed = 3;

/// Whether the program only prints something, which takes no display.
bool NeedsNoWindow(int argc, char** argv)
{
    return std::any_of(argv + 1, argv + argc, [](QByteArray const& argument) {
        return argument == "-h" || argument == "--help" || argument == "-V" || argument == "--version";
    });
}

std::unique_ptr<QCoreApplication> MakeApplication(int& argc, char** argv)
{
    if (NeedsNoWindow(argc, argv))
        return std::make_unique<QCoreApplication>(argc, argv);
#if QT_VERSION_MAJOR == 5
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
    QGuiApplication::setDesktopFileName(QStringLiteral("org.example.tandry.Viewer"));
    return std::make_unique<QApplication>(argc, argv);
}

/// Returns the exit status.
int Print(QString const& text)
{
    bool const isPrinted = std::fputs(text.toUtf8().constData(), stdout) >= 0 && std::fflush(stdout) == 0;
    return isPrinted ? Done : Failed;
}

} // namespace

int main(int argc, char** argv)
{
    sync::database::DisableSqliteMemoryStatistics();
#if QT_VERSION_MAJOR == 5
    // File names are UTF-8 in every locale, so that a name always means the same file. Qt 6 knows no other.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
#endif
    std::unique_ptr<QCoreApplication> const application = MakeApplication(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tandry-viewer"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TANDRY_VIEWER_VERSION));

    CommandLine const line(QCoreApplication::arguments().mid(1));
    switch (line.request) {
    case CommandLine::Request::PrintHelp:
        return Print(tandry::viewer::HelpText());
    case CommandLine::Request::PrintVersion:
        return Print(QStringLiteral("tandry-viewer " TANDRY_VIEWER_VERSION "\n"));
    case CommandLine::Request::Refuse:
        std::cerr << "tandry-viewer: " << line.fault.toStdString() << "; see 'tandry-viewer --help'\n";
        return WrongUsage;
    case CommandLine::Request::ShowStore:
        break;
    }
    QGuiApplication::setApplicationDisplayName(MainWindow::tr("Tandry Viewer"));
    MainWindow window;
    window.Open(line.storePath);
    window.show();
    return QCoreApplication::exec();
}
