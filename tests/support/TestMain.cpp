#include <QCoreApplication>

#include <gmock/gmock.h>

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
    QCoreApplication const application(argc, argv);
    return RUN_ALL_TESTS();
}
