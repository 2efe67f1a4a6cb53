#include "tools/viewer/BackgroundReader.h"

#include "ViewerFixture.h"

#include <QCoreApplication>
#include <QSemaphore>
#include <QThread>

#include <atomic>

namespace {

using namespace tandry::test;
using tandry::viewer::BackgroundReader;

TEST(ABackgroundReader, ReadsOnAThreadOfItsOwnAndAnswersOnTheWindows)
{
    BackgroundReader reader;
    QThread const* readOn = nullptr;
    QThread const* answeredOn = nullptr;
    reader.Read([&]() -> BackgroundReader::Answer {
        readOn = QThread::currentThread();
        return [&] { answeredOn = QThread::currentThread(); };
    });
    EXPECT_FALSE(reader.isIdle());
    ASSERT_TRUE(WaitUntil([&] { return answeredOn != nullptr; }));
    EXPECT_TRUE(reader.isIdle());
    EXPECT_EQ(answeredOn, QThread::currentThread());
    EXPECT_NE(readOn, QThread::currentThread());
}

TEST(ABackgroundReader, AnswersOnlyTheNewestReadingAndSkipsThoseThatWait)
{
    BackgroundReader reader;
    QSemaphore firstMayEnd;
    std::atomic<int> readings = 0;
    QStringList answers;
    auto const readingOf = [&](QString const& name, QSemaphore* wait) {
        return [&, name, wait]() -> BackgroundReader::Answer {
            ++readings;
            if (wait != nullptr)
                wait->acquire();
            return [&answers, name] { answers.append(name); };
        };
    };
    reader.Read(readingOf("first"_q, &firstMayEnd));
    ASSERT_TRUE(WaitUntil([&] { return readings == 1; }));
    reader.Read(readingOf("second"_q, nullptr));
    reader.Read(readingOf("third"_q, nullptr));
    firstMayEnd.release();
    ASSERT_TRUE(WaitUntil([&] { return reader.isIdle(); }));
    EXPECT_EQ(answers, QStringList{"third"_q});
    EXPECT_EQ(readings, 2);
}

TEST(ABackgroundReader, ReadsOnceMoreAfterAnyNumberOfRenewals)
{
    BackgroundReader reader;
    int answers = 0;
    reader.Read([&]() -> BackgroundReader::Answer { return [&] { ++answers; }; });
    for (int i = 0; i < 10; ++i)
        reader.Renew();
    ASSERT_TRUE(WaitUntil([&] { return reader.isIdle(); }));
    EXPECT_EQ(answers, 2);
}

TEST(ABackgroundReader, GivesNoAnswerAfterItWasStoppedOrDestroyed)
{
    bool isAnswered = false;
    {
        BackgroundReader reader;
        auto const reading = [&]() -> BackgroundReader::Answer { return [&] { isAnswered = true; }; };
        reader.Read(reading);
        reader.Stop();
        reader.Renew();
        EXPECT_TRUE(reader.isIdle());
        reader.Read(reading);
    }
    QCoreApplication::processEvents();
    EXPECT_FALSE(isAnswered);
}

} // namespace
