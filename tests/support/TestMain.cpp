// The kind of application that a program's tests need; `tandry_test` sets it.
#ifndef TANDRY_TEST_APPLICATION
#define TANDRY_TEST_APPLICATION QCoreApplication
#endif

#include <QtGlobal>
#include QT_STRINGIFY(TANDRY_TEST_APPLICATION)

#include <gmock/gmock.h>

#include <csignal>

#include <unistd.h>

// The test programs don't wait for the disk. What one process has written every other one sees, also when the first was
// killed; only a power cut shows what was flushed, and the tests simulate theirs (`UnflushedWrites`).
extern "C" Q_DECL_EXPORT int fsync(int)
{
    return 0;
}

extern "C" Q_DECL_EXPORT int fdatasync(int)
{
    return 0;
}

int main(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
    // A job in the background of a shell ignores an interrupt, and so would the programs that the tests interrupt.
    static_cast<void>(std::signal(SIGINT, SIG_DFL));
    // Windows get neither a screen nor a graphics card.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
#if QT_VERSION_MAJOR == 5
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
#endif
    TANDRY_TEST_APPLICATION const application(argc, argv);
    return RUN_ALL_TESTS();
}
