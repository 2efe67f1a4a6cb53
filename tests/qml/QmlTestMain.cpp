#include <QGuiApplication>

#include <gmock/gmock.h>

// Windows need another application than the other tests have, here one without a screen and a graphics card.
int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    testing::InitGoogleMock(&argc, argv);
    QGuiApplication const application(argc, argv);
    return RUN_ALL_TESTS();
}
