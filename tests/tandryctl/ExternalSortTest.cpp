#include "tools/tandryctl/ExternalSort.h"
#include "support/QtPrinters.h"

#include <QDataStream>
#include <QString>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

using namespace tandryctl;
using namespace tandry::test;

namespace {

struct Numbered
{
    QString name;
    int number = 0;

    qint64 bytes() const { return 1; }
};

bool operator==(Numbered const& left, Numbered const& right)
{
    return left.name == right.name && left.number == right.number;
}

void PrintTo(Numbered const& value, std::ostream* out)
{
    *out << value.name.toStdString() << ' ' << value.number;
}

QDataStream& operator<<(QDataStream& stream, Numbered const& value)
{
    return stream << value.name << value.number;
}

QDataStream& operator>>(QDataStream& stream, Numbered& value)
{
    return stream >> value.name >> value.number;
}

struct ByName
{
    bool operator()(Numbered const& left, Numbered const& right) const { return left.name < right.name; }
};

using Sort = ExternalSort<Numbered, ByName>;

std::vector<Numbered> ValuesOf(Sort& sort)
{
    std::vector<Numbered> values;
    for (Sort::Reader reader(sort); reader.value() != nullptr; reader.Advance())
        values.push_back(*reader.value());
    return values;
}

/// Names that occur several times, in no order, numbered.
std::vector<Numbered> SomeValues(int count)
{
    std::mt19937 random(1);
    std::vector<Numbered> values;
    for (int i = 0; i < count; ++i)
        values.push_back({QString::number(random() % 500), i});
    return values;
}

} // namespace

TEST(ExternalSort, NothingIsSortedToNothing)
{
    Sort sort;
    EXPECT_TRUE(ValuesOf(sort).empty());
}

TEST(ExternalSort, EqualValuesKeepTheirOrderInMemoryAndInRuns)
{
    std::vector<Numbered> sorted = SomeValues(5000);
    for (qint64 const mostBytes : {qint64(1), qint64(7), qint64(2500), qint64(4999), Sort::MostBytes}) {
        Sort sort(mostBytes);
        for (Numbered const& value : SomeValues(5000))
            sort.Add(value);
        std::stable_sort(sorted.begin(), sorted.end(), ByName());
        EXPECT_EQ(ValuesOf(sort), sorted) << mostBytes;
    }
}

TEST(ExternalSort, NoMoreValuesThanAllowedAreInMemory)
{
    Sort sort(100);
    std::size_t most = 0;
    for (Numbered const& value : SomeValues(5000)) {
        sort.Add(value);
        most = std::max(most, sort.held());
    }
    EXPECT_EQ(most, 99u);
    Sort::Reader const reader(sort);
    EXPECT_EQ(sort.held(), 0u) << "a run while it is read";
}

TEST(ExternalSort, ValuesLongerThanABlockAreReadWhole)
{
    Sort sort(2);
    QString const longest(100'000, QLatin1Char('b'));
    for (QString const& name : {"c"_q, longest, "a"_q, QString(QChar(0xd800)), QString()})
        sort.Add({name, 0});
    std::vector<Numbered> const expected{{QString(), 0}, {"a"_q, 0}, {longest, 0}, {"c"_q, 0}, {QChar(0xd800), 0}};
    EXPECT_EQ(ValuesOf(sort), expected);
}

TEST(ExternalSort, SeveralReadersReadEachForItself)
{
    Sort sort(10);
    for (Numbered const& value : SomeValues(200))
        sort.Add(value);
    Sort::Reader reader(sort);
    reader.Advance();
    Numbered const second = *reader.value();
    std::vector<Numbered> const all = ValuesOf(sort);
    EXPECT_EQ(all.size(), 200u);
    EXPECT_EQ(second, all.at(1));
    reader.Advance();
    EXPECT_EQ(*reader.value(), all.at(2));
}
