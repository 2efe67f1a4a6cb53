#include <QApplication>

#include <gmock/gmock.h>

#include <unistd.h>

// As in the other test programs: a power cut is not part of any test.
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
    qputenv("QT_QPA_PLATFORM", "offscreen");
#if QT_VERSION_MAJOR == 5
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
#endif
    QApplication const application(argc, argv);
    return RUN_ALL_TESTS();
}
