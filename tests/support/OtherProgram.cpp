#include "support/OtherProgram.h"

#include <gtest/gtest.h>

#include <csignal>

namespace tandry::test {

OtherProgram::OtherProgram(QString const& store, QStringList const& command)
{
    _process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    _process.start(QStringLiteral(TANDRY_OTHER_PROGRAM), QStringList{store} + command);
    EXPECT_TRUE(_process.waitForStarted(-1)) << _process.errorString().toStdString();
}

OtherProgram::~OtherProgram()
{
    Wait();
}

void OtherProgram::WaitForLock()
{
    EXPECT_TRUE(_process.waitForReadyRead(-1)) << "it could not lock the file";
}

int OtherProgram::Wait()
{
    _process.closeWriteChannel();
    _process.waitForFinished(-1);
    return _process.exitStatus() == QProcess::NormalExit ? _process.exitCode() : -SIGKILL;
}

} // namespace tandry::test
