#include "tools/tandryctl/Text.h"
#include "support/QtPrinters.h"

#include <QByteArray>
#include <QProcess>
#include <QStringList>

#include <gtest/gtest.h>

using namespace tandryctl;
using namespace tandry::test;

namespace {

struct PrintableRow
{
    char const* what;
    QString text;
    QString printable;
};

class PrintableTest : public testing::TestWithParam<PrintableRow>
{};

QString Unit(ushort unit)
{
    return QString(QChar(unit));
}

} // namespace

TEST_P(PrintableTest, ReturnsOneSafeLine)
{
    EXPECT_EQ(Printable(GetParam().text), GetParam().printable);
}

INSTANTIATE_TEST_SUITE_P(
    Texts,
    PrintableTest,
    testing::Values(PrintableRow{"plain", "letters 2024"_q, "letters 2024"_q},
                    PrintableRow{"empty", QString(), QString()},
                    PrintableRow{"quotes", "a'b\"c"_q, "a'b\"c"_q},
                    PrintableRow{"other scripts", "Grüße 日本語 привет"_q, "Grüße 日本語 привет"_q},
                    PrintableRow{"emoji of several code points", "👩‍👧"_q, "👩‍👧"_q},
                    PrintableRow{"accent of its own", "cafe"_q + Unit(0x301) + "!"_q, "cafe\\u0301!"_q},
                    PrintableRow{"composed accent", "caf"_q + Unit(0xe9), "caf"_q + Unit(0xe9)},
                    PrintableRow{"sign that stands for a letter", Unit(0x212b), "\\u212b"_q},
                    PrintableRow{"parts of a syllable", Unit(0x1112) + Unit(0x1161), "\\u1112\\u1161"_q},
                    PrintableRow{"mark without a composed form", "x"_q + Unit(0x301), "x"_q + Unit(0x301)},
                    PrintableRow{"accent behind an escape", "\n"_q + Unit(0x301), "\\n\\u0301"_q},
                    PrintableRow{"line break", "a\nb"_q, "a\\nb"_q},
                    PrintableRow{"carriage return and tab", "a\r\tb"_q, "a\\r\\tb"_q},
                    PrintableRow{"terminal command", "\x1b[31mred"_q, "\\x1b[31mred"_q},
                    PrintableRow{"delete", "a\x7f"_q, "a\\x7f"_q},
                    PrintableRow{"upper control", Unit(0x9b), "\\x9b"_q},
                    PrintableRow{"embedded null", QString(QLatin1Char('\0')), "\\x00"_q},
                    PrintableRow{"backslash", "a\\nb"_q, "a\\\\nb"_q},
                    PrintableRow{"line separator", Unit(0x2028), "\\u2028"_q},
                    PrintableRow{"right-to-left override", "a\u202Etxt.exe"_q, "a\\u202etxt.exe"_q},
                    PrintableRow{"characters without width",
                                 Unit(0xad) + Unit(0x200b) + Unit(0x2060) + Unit(0xfeff),
                                 "\\xad\\u200b\\u2060\\ufeff"_q},
                    PrintableRow{"lone high surrogate", Unit(0xd800) + "x"_q, "\\ud800x"_q},
                    PrintableRow{"lone low surrogate", "x"_q + Unit(0xdc00), "x\\udc00"_q},
                    PrintableRow{"high surrogate at the end", "x"_q + Unit(0xdbff), "x\\udbff"_q}));

namespace {

struct QuotedRow
{
    char const* what;
    QByteArray bytes;
    QByteArray word;
};

class QuotedTest : public testing::TestWithParam<QuotedRow>
{};

} // namespace

TEST_P(QuotedTest, ReturnsAWordOfTheShell)
{
    QuotedRow const& row = GetParam();
    EXPECT_EQ(QuotedBytes(row.bytes).toUtf8(), row.word);
    if (std::optional<QString> const text = DecodeUtf8(row.bytes)) {
        EXPECT_EQ(Quoted(*text).toUtf8(), row.word);
    }
}

TEST_P(QuotedTest, IsReadBackByAShell)
{
    QuotedRow const& row = GetParam();
    QProcess shell;
    shell.start("bash"_q, {"-c"_q, "printf %s "_q + QuotedBytes(row.bytes)});
    ASSERT_TRUE(shell.waitForFinished());
    EXPECT_EQ(shell.exitCode(), 0);
    EXPECT_EQ(shell.readAllStandardOutput(), row.bytes);
}

INSTANTIATE_TEST_SUITE_P(
    Names,
    QuotedTest,
    testing::Values(
        QuotedRow{"plain", "letters 2024", "'letters 2024'"},
        QuotedRow{"empty", "", "''"},
        QuotedRow{"backslash", "example\\ada", "'example\\ada'"},
        QuotedRow{"apostrophe", "it's", "'it'\\''s'"},
        QuotedRow{"what a shell would expand", "$HOME `x` \"*\" !1", "'$HOME `x` \"*\" !1'"},
        QuotedRow{"other scripts and an emoji", "Grüße 日本語 👩‍👧", "'Grüße 日本語 👩‍👧'"},
        QuotedRow{"line break", "a\nb", "$'a\\nb'"},
        QuotedRow{"tab, backslash and apostrophe", "\t\\'", "$'\\t\\\\\\''"},
        QuotedRow{"terminal command before a digit",
                  "\x1b[31m\x07"
                  "7",
                  "$'\\033[31m\\0077'"},
        QuotedRow{"right-to-left override", "a\u202Etxt.exe", "$'a\\342\\200\\256txt.exe'"},
        QuotedRow{"lone byte", "caf\xe9 n", "$'caf\\351 n'"},
        QuotedRow{"lone byte beside a letter", "\xe9\xc3\xa9'", "$'\\351é\\''"},
        QuotedRow{"byte order mark before a lone byte", "\xef\xbb\xbf\xff", "$'\\357\\273\\277\\377'"},
        QuotedRow{"incomplete character at the end", "a\xe2\x82", "$'a\\342\\202'"}));

TEST(Quoted, ShowsALoneSurrogateByItsNumber)
{
    EXPECT_EQ(Quoted(Unit(0xd800) + "x"_q), "$'\\ud800x'"_q);
}

TEST(OneLine, KeepsBackslashesAndEscapesLineBreaks)
{
    EXPECT_EQ(OneLine("a\\b\nc"_q), "a\\b\\nc"_q);
}

TEST(DisplayWidth, OfLettersIsTheirNumber)
{
    EXPECT_EQ(DisplayWidth("über"_q), 4);
}

TEST(DisplayWidth, OfACharacterOutsideTheBasicPlaneCountsItOnce)
{
    EXPECT_EQ(DisplayWidth("𝔞"_q), 1);
}

TEST(DisplayWidth, OfWideCharactersIsTwoEach)
{
    EXPECT_EQ(DisplayWidth("日本"_q), 4);
}

TEST(Counted, UsesTheSingularForOne)
{
    EXPECT_EQ(Counted(0, "folder", "folders"), "0 folders"_q);
    EXPECT_EQ(Counted(1, "folder", "folders"), "1 folder"_q);
    EXPECT_EQ(Counted(2, "folder", "folders"), "2 folders"_q);
}

TEST(JoinWithAnd, JoinsWithCommasAndAFinalAnd)
{
    QString const a = "a"_q;
    QString const b = "b"_q;
    QString const c = "c"_q;
    EXPECT_EQ(JoinWithAnd({}), QString());
    EXPECT_EQ(JoinWithAnd({a}), "a"_q);
    EXPECT_EQ(JoinWithAnd({a, b}), "a and b"_q);
    EXPECT_EQ(JoinWithAnd({a, b, c}), "a, b and c"_q);
}

TEST(DecodeUtf8, KeepsAByteOrderMarkAtTheFront)
{
    EXPECT_EQ(DecodeUtf8("\xef\xbb\xbfname"), Unit(0xfeff) + "name"_q);
}

TEST(DecodeUtf8, KeepsAnEncodedReplacementCharacter)
{
    EXPECT_EQ(DecodeUtf8("\xef\xbf\xbd"), Unit(0xfffd));
}

TEST(DecodeUtf8, RefusesBytesOfAnotherEncoding)
{
    EXPECT_FALSE(DecodeUtf8("caf\xe9"));
    EXPECT_FALSE(DecodeUtf8("\xe9tude"));
}

TEST(DecodeUtf8, RefusesAnIncompleteCharacter)
{
    EXPECT_FALSE(DecodeUtf8("a\xe2\x82"));
}

TEST(DecodeUtf8, RefusesAnEncodedSurrogate)
{
    EXPECT_FALSE(DecodeUtf8("\xed\xa0\x80"));
}

TEST(DecodeUtf8, RefusesAnOverlongSlash)
{
    EXPECT_FALSE(DecodeUtf8("\xc0\xaf"));
}

TEST(ShortenedText, KeepsBothEndsInTheWidth)
{
    EXPECT_EQ(Shortened("/home/ada/letter.txt"_q, 20), "/home/ada/letter.txt"_q);
    EXPECT_EQ(Shortened("/home/ada/letter.txt"_q, 11), "/home…r.txt"_q);
    EXPECT_EQ(Shortened("/home/ada/letter.txt"_q, 12), "/home…er.txt"_q);
    EXPECT_EQ(Shortened("abc"_q, 1), "…"_q);
}

TEST(ShortenedText, KeepsCharactersWhole)
{
    EXPECT_EQ(Shortened("日本語日本語"_q, 8), "日…本語"_q);
    EXPECT_EQ(DisplayWidth(Shortened("日本語日本語"_q, 6)), 5); // the next character takes two columns
    QString const family = "👩‍👧"_q;
    QString const shortened = Shortened("aaaaaa"_q + family + "bbbbbb"_q, 9);
    EXPECT_EQ(shortened, "aaaa…bbbb"_q);
}
