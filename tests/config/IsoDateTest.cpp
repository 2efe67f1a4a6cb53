#include "config/IsoDate.h"

#include "support/QtPrinters.h"

#include <QDateTime>
#include <QStringList>

#include <gtest/gtest.h>

#include <random>

/// `DocumentCorpus.IsReadAsQt5ReadsIt` reads chosen dates with either Qt.
namespace iso_date_test {
namespace {

using namespace tandry::test;
using sync::config::ReadIsoDate;

TEST(IsoDate, IsTheClockReadingWhateverTheZone)
{
    QDateTime const expected(QDate(2020, 1, 2), QTime(3, 4, 5), Qt::UTC);
    for (char const* text : {"2020-01-02T03:04:05", "2020-01-02T03:04:05Z", "2020-01-02 03:04:05-23:59"})
        EXPECT_EQ(ReadIsoDate(QString::fromLatin1(text)), expected) << text;
    EXPECT_EQ(ReadIsoDate(QString()), QDateTime({}, {}, Qt::UTC));
}

#if QT_VERSION_MAJOR == 5

/// Replaces, inserts and removes a few characters.
QString Changed(QString text, std::mt19937& random)
{
    QString const characters = "0123456789:.,-+TtZz x/ \u0661\u2003"_q;
    for (auto changes = random() % 5; changes > 0; --changes) {
        int const place = int(random() % unsigned(text.size()));
        QChar const character = characters.at(int(random() % unsigned(characters.size())));
        switch (random() % 3) {
        case 0:
            text.insert(place, character);
            break;
        case 1:
            text[place] = character;
            break;
        default:
            text.remove(place, 1);
        }
    }
    return text;
}

TEST(IsoDate, OfAnyTextIsWhatQt5Reads)
{
    QStringList const texts{"2020-01-02T03:04:05.6789"_q,
                            "2020-01-02T03:04:05.9999Z"_q,
                            "2020-01-02T03:04:05+02:00"_q,
                            "2020-01-02T03:04:05-0230"_q,
                            "2020-01-02T03:04.99999"_q,
                            "2020-01-02T24:00:00.000"_q};
    constexpr int rounds = 100'000;
    std::mt19937 random; // the same texts in each run
    int valid = 0;
    for (int round = 0; round < rounds; ++round) {
        QString const text = Changed(texts.at(int(random() % unsigned(texts.size()))), random);
        QDateTime byQt = QDateTime::fromString(text, Qt::ISODate);
        byQt.setTimeSpec(Qt::UTC);
        ASSERT_EQ(ReadIsoDate(text), byQt) << text.toStdString();
        valid += byQt.isValid() ? 1 : 0;
    }
    EXPECT_GT(valid, rounds / 10);
    EXPECT_LT(valid, rounds / 10 * 9);
}

#endif

} // namespace
} // namespace iso_date_test
