#include "tools/findings/Record.h"

#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <random>

using namespace tandry::findings;

namespace {

QByteArray Hex(char const* digits)
{
    return QByteArray::fromHex(digits);
}

std::optional<quint64> Varint(char const* digits, int* end = nullptr)
{
    int offset = 0;
    std::optional<quint64> const number = ReadVarint(Hex(digits), offset);
    if (end != nullptr)
        *end = offset;
    return number;
}

} // namespace

TEST(RecordTest, VarintHasOneToNineBytes)
{
    int end = 0;
    EXPECT_EQ(Varint("00", &end), 0u);
    EXPECT_EQ(end, 1);
    EXPECT_EQ(Varint("7f"), 127u);
    EXPECT_EQ(Varint("8100", &end), 128u);
    EXPECT_EQ(end, 2);
    EXPECT_EQ(Varint("ff7f"), 16383u);
    EXPECT_EQ(Varint("ffffffffffffffff7f", &end), 0xffffffffffffff7fu);
    EXPECT_EQ(end, 9);
    EXPECT_EQ(Varint("ffffffffffffffffff"), 0xffffffffffffffffu);
}

TEST(RecordTest, VarintThatEndsEarlyIsNone)
{
    int end = 7;
    EXPECT_EQ(Varint("", &end), std::nullopt);
    EXPECT_EQ(end, 0);
    EXPECT_EQ(Varint("80"), std::nullopt);
    EXPECT_EQ(Varint("ffffffffffffffff"), std::nullopt);
}

TEST(RecordTest, IntegersOfAllSizesKeepTheirSign)
{
    auto const values = DecodeRecord(Hex("09010203040506"
                                         "0809"
                                         "ff"
                                         "8000"
                                         "7fffff"
                                         "80000000"
                                         "000000000001"
                                         "8000000000000000"));
    ASSERT_TRUE(values);
    std::vector<qlonglong> const expected{-1, -32768, 8388607, -2147483648LL, 1, INT64_MIN, 0, 1};
    ASSERT_EQ(values->size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ((*values)[i], QVariant(expected[i])) << i;
}

TEST(RecordTest, NullRealTextAndBlobHaveTheirTypes)
{
    auto const values = DecodeRecord(Hex("0600070d0f10"
                                         "3ff8000000000000"
                                         "41"
                                         "0102"));
    ASSERT_TRUE(values);
    ASSERT_EQ(values->size(), 5u);
    EXPECT_FALSE((*values)[0].isValid());
    EXPECT_EQ((*values)[1], QVariant(1.5));
    EXPECT_EQ((*values)[2], QVariant(QStringLiteral("")));
    EXPECT_FALSE((*values)[2].isNull());
    EXPECT_EQ((*values)[3], QVariant(QStringLiteral("A")));
    EXPECT_EQ((*values)[4], QVariant(Hex("0102")));
}

TEST(RecordTest, TextKeepsALeadingByteOrderMark)
{
    auto const values = DecodeRecord(Hex("0215efbbbf61"));
    ASSERT_TRUE(values);
    EXPECT_EQ((*values)[0].toString().toUtf8(), Hex("efbbbf61"));
}

TEST(RecordTest, HeaderThatDoesNotDescribeTheBytesIsNoRecord)
{
    EXPECT_FALSE(DecodeRecord(QByteArray()));
    EXPECT_FALSE(DecodeRecord(Hex("0201")));     // a value is missing
    EXPECT_FALSE(DecodeRecord(Hex("02010505"))); // a byte too many
    EXPECT_FALSE(DecodeRecord(Hex("0901")));     // the header is longer than the record
    EXPECT_FALSE(DecodeRecord(Hex("020a")));     // a type that is not in use
    EXPECT_FALSE(DecodeRecord(Hex("0282")));     // a type that ends early
    EXPECT_FALSE(DecodeRecord(Hex("00")));       // a header without itself
    EXPECT_FALSE(DecodeRecord(Hex("0affffffffffffffffff")));
}

TEST(RecordTest, TextThatNoStoreAcceptsIsNoRecord)
{
    EXPECT_FALSE(DecodeRecord(Hex("020fff")));     // not UTF-8
    EXPECT_FALSE(DecodeRecord(Hex("020f00")));     // U+0000
    EXPECT_FALSE(DecodeRecord(Hex("0213eda080"))); // a lone surrogate
}

TEST(RecordTest, RandomBytesAreReadWithoutReachingBeyondThem)
{
    std::mt19937 random(1);
    for (int run = 0; run < 20'000; ++run) {
        QByteArray bytes(int(random() % 40), '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(random() % (run % 2 == 0 ? 256 : 16));
        auto const values = DecodeRecord(bytes);
        EXPECT_TRUE(!values || !bytes.isEmpty());
    }
}
