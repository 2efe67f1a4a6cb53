#include "support/FileManagerFixture.h"
#include "support/QtPrinters.h"
#include "support/SmallStack.h"

#include <QDomDocument>

#include <climits>

namespace {

using namespace sync::config;
using namespace tandry::test;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::NiceMock;
using testing::SizeIs;

FileLink Link(int fileId, QString const& path, QString const& refId = {}, QString const& serverFileId = {})
{
    FileLink link;
    link.fileId = fileId;
    link.path = path;
    link.refId = refId;
    link.serverFileId = serverFileId;
    return link;
}

/// The document as the manager writes and reads it for the column. The root folder isn't on record, so no link that
/// has a relative path or none is resolved: its id becomes -1.
class FileLinksText : public testing::Test
{
protected:
    QString Write(QList<FileLink> const& links, QDateTime const& date)
    {
        FileConfiguration file;
        file.clientPath = "relative/file"_q;
        file.fileLinks = links;
        file.fileDate = date;
        EXPECT_TRUE(_manager.Update(file));
        QString text = _store->Executions().back().bindings.back().value.toString();
        EXPECT_FALSE(text.isNull());
        return text;
    }

    FileConfiguration Read(QString const& text)
    {
        Row row(24);
        row[23] = text;
        _store->PlayRows({row});
        return _manager.GetFileConfigurationById(1);
    }

    std::shared_ptr<RecordingStore> const _store = std::make_shared<RecordingStore>();
    FileConfigManager _manager{_store, nullptr, std::make_shared<NiceMock<MockFolderConfigManager>>()};
};

const QDateTime Date(QDate(2024, 5, 6), QTime(7, 8, 9), Qt::UTC);

// Written.

TEST_F(FileLinksText, OfNoLinksAndAnInvalidDateIsEmpty)
{
    EXPECT_EQ(Write({}, QDateTime()), QStringLiteral(""));
}

TEST_F(FileLinksText, OfNoLinksAndADateIsAnElementThatReadsBackAsTheDate)
{
    QString const text = Write({}, Date);
    EXPECT_EQ(text, "<FileLinks FileDate=\"2024-05-06T07:08:09Z\"/>\n"_q);
    EXPECT_THAT(Read(text).fileLinks, IsEmpty());
    EXPECT_EQ(Read(text).fileDate, Date);
    EXPECT_EQ(Read(text).fileDate.timeSpec(), Qt::UTC);
}

TEST_F(FileLinksText, HasOneElementForEachValidLinkInOrderOneBlankIn)
{
    QString const text =
        Write({Link(-1, "first"_q, "r"_q, "s"_q), Link(-1, {}, "alone"_q), Link(-1, "second"_q)}, Date);
    QStringList const lines = text.split(QLatin1Char('\n'));
    ASSERT_THAT(lines, SizeIs(5));
    EXPECT_EQ(lines[0], "<FileLinks FileDate=\"2024-05-06T07:08:09Z\">"_q);
    EXPECT_TRUE(lines[1].startsWith(" <FileLink "_q) && lines[1].endsWith("/>"_q));
    EXPECT_TRUE(lines[2].startsWith(" <FileLink "_q) && lines[2].endsWith("/>"_q));
    EXPECT_EQ(lines[3], "</FileLinks>"_q);
    EXPECT_EQ(lines[4], ""_q);

    QDomDocument document;
    ASSERT_TRUE(document.setContent(text));
    QDomElement const first = document.documentElement().firstChildElement();
    EXPECT_EQ(first.attributes().count(), 4);
    EXPECT_EQ(first.attribute("FileId"_q), "-1"_q);
    EXPECT_EQ(first.attribute("RefId"_q), "r"_q);
    EXPECT_EQ(first.attribute("ServerFileId"_q), "s"_q);
    EXPECT_EQ(first.attribute("Path"_q), "first"_q);
    QDomElement const second = first.nextSiblingElement();
    EXPECT_EQ(second.attributes().count(), 4); // empty texts are written as well
    EXPECT_EQ(second.attribute("Path"_q), "second"_q);
    EXPECT_TRUE(second.nextSiblingElement().isNull());
}

TEST_F(FileLinksText, OfOnlyInvalidLinksIsAnElementThatReadsAsNothingAndIsThenWrittenEmpty)
{
    QString const text = Write({Link(-1, {}, "alone"_q)}, QDateTime());
    EXPECT_EQ(text, "<FileLinks FileDate=\"\"/>\n"_q);
    FileConfiguration const file = Read(text);
    EXPECT_THAT(file.fileLinks, IsEmpty());
    EXPECT_FALSE(file.fileDate.isValid());
    EXPECT_EQ(Write(file.fileLinks, file.fileDate), QStringLiteral(""));
}

TEST_F(FileLinksText, KeepsTheIdMinusOneOfALinkWithAPath)
{
    QString const text = Write({Link(-1, "a"_q)}, Date);
    EXPECT_TRUE(text.contains("FileId=\"-1\""_q));
    FileConfiguration const file = Read(text);
    ASSERT_THAT(file.fileLinks, SizeIs(1));
    EXPECT_EQ(file.fileLinks[0].fileId, -1);
    EXPECT_EQ(file.fileLinks[0].path, "a"_q);
}

TEST_F(FileLinksText, LosesMillisecondsOfTheDate)
{
    EXPECT_EQ(Read(Write({}, Date.addMSecs(789))).fileDate, Date);
}

struct DateCase
{
    char const* name;
    QDateTime date;
    char const* text;
};

class FileLinksDate : public FileLinksText, public testing::WithParamInterface<DateCase>
{};

TEST_P(FileLinksDate, IsWrittenWithItsOffsetAndReadAsUtc)
{
    QString const text = Write({}, GetParam().date);
    EXPECT_EQ(text, "<FileLinks FileDate=\"%1\"/>\n"_q.arg(QString::fromUtf8(GetParam().text)));
    EXPECT_EQ(Read(text).fileDate, Date);
    EXPECT_EQ(Read(text).fileDate.timeSpec(), Qt::UTC);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds,
    FileLinksDate,
    testing::Values(DateCase{"Utc", Date, "2024-05-06T07:08:09Z"},
                    DateCase{"LocalTime", QDateTime(Date.date(), Date.time(), Qt::LocalTime), "2024-05-06T07:08:09"},
                    DateCase{"OffsetEast",
                             QDateTime(Date.date(), Date.time(), Qt::OffsetFromUTC, 2 * 3600),
                             "2024-05-06T07:08:09+02:00"},
                    DateCase{"OffsetWest",
                             QDateTime(Date.date(), Date.time(), Qt::OffsetFromUTC, -(9 * 3600 + 1800)),
                             "2024-05-06T07:08:09-09:30"}),
    [](auto const& test) { return test.param.name; });

class FileLinksOddText : public FileLinksText, public testing::WithParamInterface<QString>
{};

TEST_P(FileLinksOddText, ComesBackExactly)
{
    QString const odd = GetParam();
    FileConfiguration const file = Read(Write({Link(-1, odd, odd, odd)}, Date));
    ASSERT_THAT(file.fileLinks, SizeIs(1));
    EXPECT_EQ(file.fileLinks[0].path, odd);
    EXPECT_EQ(file.fileLinks[0].refId, odd);
    EXPECT_EQ(file.fileLinks[0].serverFileId, odd);
}

INSTANTIATE_TEST_SUITE_P(Texts,
                         FileLinksOddText,
                         testing::Values("a<b>&\"c'd"_q,
                                         "]]>"_q,
                                         "&amp;&#65;"_q,
                                         "tab\tline\nreturn\rend"_q,
                                         "  blanks  "_q,
                                         "\u00fc\u4e2d\u0301"_q,
                                         "\U0001F4C4"_q));

// Read.

TEST_F(FileLinksText, ThatIsEmptyLeavesTheDateInvalidInUtc)
{
    for (QString const& text : {QString(), QStringLiteral("")}) {
        FileConfiguration const file = Read(text);
        EXPECT_THAT(file.fileLinks, IsEmpty());
        EXPECT_FALSE(file.fileDate.isValid());
        EXPECT_EQ(file.fileDate.timeSpec(), Qt::UTC);
    }
}

TEST_F(FileLinksText, ThatIsNoXmlReadsAsNoLinksAndAnInvalidDate)
{
    for (QString const& text : {"no XML at all"_q, " "_q, "<"_q, "<a"_q}) {
        FileConfiguration const file = Read(text);
        EXPECT_THAT(file.fileLinks, IsEmpty());
        EXPECT_FALSE(file.fileDate.isValid());
    }
}

TEST_F(FileLinksText, ThatIsNoXmlLeavesTheRestOfTheRowToBeRead)
{
    Row row = ToRow(DistinctFile());
    row[23] = "no XML at all"_q;
    _store->PlayRows({row});
    FileConfiguration const file = _manager.GetFileConfigurationById(101);
    EXPECT_EQ(file.id, 101);
    EXPECT_EQ(file.checkSumMD5, "check sum MD5"_q);
}

TEST_F(FileLinksText, ThatNestsElementsAThousandLevelsDeepIsRead)
{
    QString const text = "<a FileDate=\"2024-05-06T07:08:09Z\">%1%2<b FileId=\"2\"/></a>"_q.arg(
        "<b FileId=\"1\">"_q.repeated(999), "</b>"_q.repeated(999));
    FileConfiguration const file = OnSmallStack([&] { return Read(text); });
    EXPECT_THAT(file.fileLinks, SizeIs(2));
    EXPECT_EQ(file.fileDate, Date);
}

class FileLinksRefusedText : public FileLinksText, public testing::WithParamInterface<QString>
{};

TEST_P(FileLinksRefusedText, ReadsAsNoLinksAndAnInvalidDate)
{
    FileConfiguration const file = OnSmallStack([&] {
        return Read(GetParam() + "<FileLinks FileDate=\"2024-05-06T07:08:09Z\"><FileLink FileId=\"1\"/></FileLinks>"_q);
    });
    EXPECT_THAT(file.fileLinks, IsEmpty());
    EXPECT_FALSE(file.fileDate.isValid());
    EXPECT_EQ(file.fileDate.timeSpec(), Qt::UTC);
}

INSTANTIATE_TEST_SUITE_P(
    Texts,
    FileLinksRefusedText,
    testing::Values("<a FileDate=\"2024-05-06T07:08:09Z\">"_q + "<b FileId=\"1\">"_q.repeated(1000),
                    "<a FileDate=\"2024-05-06T07:08:09Z\">"_q + "<b FileId=\"1\">"_q.repeated(50'000),
                    "<!DOCTYPE a [<!ELEMENT a "_q + "("_q.repeated(70'000),
                    "<!DOCTYPE a [<!ELEMENT a ANY><!ENTITY e 'v'>]>"_q,
                    "<!DOCTYPE a [<!-- %1 -->]>"_q.arg(QString(1024, QLatin1Char(' '))),
                    "<a FileDate=\"2024-05-06T07:08:09Z\""_q + " b=''"_q.repeated(100) + ">"_q));

TEST_F(FileLinksText, CountsElementsWhateverTheirNameAndNothingElse)
{
    FileConfiguration const file = Read("<Any FileDate=\"2024-05-06T07:08:09Z\">text<!-- note --><a FileId=\"1\"/>"
                                        "<![CDATA[data]]><?target data?><b Path=\"p\" Other=\"o\"><a FileId=\"9\"/></b>"
                                        "</Any>"_q);
    ASSERT_THAT(file.fileLinks, SizeIs(2));
    EXPECT_EQ(file.fileLinks[0].fileId, 1);
    EXPECT_EQ(file.fileLinks[1].path, "p"_q);
    EXPECT_EQ(file.fileDate, Date);
}

TEST_F(FileLinksText, GivesALinkWithoutAttributesTheIdZeroAndKeepsIt)
{
    FileConfiguration const file = Read("<FileLinks><FileLink/></FileLinks>"_q);
    ASSERT_THAT(file.fileLinks, SizeIs(1));
    EXPECT_EQ(file.fileLinks[0].fileId, 0);
    EXPECT_TRUE(file.fileLinks[0].path.isEmpty());
    EXPECT_TRUE(file.fileLinks[0].refId.isEmpty());
    EXPECT_TRUE(file.fileLinks[0].serverFileId.isEmpty());
    EXPECT_TRUE(file.fileLinks[0].IsValid());
    EXPECT_FALSE(file.fileDate.isValid());
}

TEST_F(FileLinksText, GivesALinkWhoseIdIsNoNumberTheIdZero)
{
    FileConfiguration const file = Read("<a><b FileId=\"x\"/><b FileId=\"0x10\"/><b FileId=\"4294967296\"/>"
                                        "<b FileId=\"-2147483648\"/></a>"_q);
    std::vector<int> ids;
    for (FileLink const& link : file.fileLinks)
        ids.push_back(link.fileId);
    EXPECT_THAT(ids, ElementsAre(0, 0, 0, INT_MIN));
}

TEST_F(FileLinksText, DropsAnElementThatPointsNowhere)
{
    FileConfiguration const file = Read("<a><b FileId=\"-1\" RefId=\"r\"/><b FileId=\"2\"/></a>"_q);
    ASSERT_THAT(file.fileLinks, SizeIs(1));
    EXPECT_EQ(file.fileLinks[0].fileId, 2);
}

TEST_F(FileLinksText, WithABadDateKeepsItsLinks)
{
    FileConfiguration const file = Read("<a FileDate=\"yesterday\"><b FileId=\"2\"/></a>"_q);
    EXPECT_FALSE(file.fileDate.isValid());
    EXPECT_EQ(file.fileDate.timeSpec(), Qt::UTC);
    EXPECT_THAT(file.fileLinks, SizeIs(1));
}

// Updates of rows whose text no manager wrote.

TEST_F(FileLinksText, OfDeeplyNestedElementsKeepsItsLinksAndPropertiesWhenTheFileIsUpdated)
{
    QString const nested = "<b FileId=\"2\" Path=\"p\">%1%2</b>"_q.arg("<c>"_q.repeated(900), "</c>"_q.repeated(900));
    Row row(24);
    row[11] = "<n>%1<d>1</d></n>"_q.arg(nested);
    row[23] = "<a FileDate=\"2024-05-06T07:08:09Z\">%1</a>"_q.arg(nested);
    _store->PlayRows({row});
    FileConfiguration const file = _manager.GetFileConfigurationById(1);
    EXPECT_TRUE(_manager.Update(file));

    Row updated(24);
    for (Binding const& binding : _store->Executions().back().bindings) {
        if (binding.placeholder == ":nameValueProperties"_q)
            updated[11] = binding.value;
        if (binding.placeholder == ":fileLinks"_q)
            updated[23] = binding.value;
    }
    _store->PlayRows({updated});
    FileConfiguration const again = _manager.GetFileConfigurationById(1);
    EXPECT_EQ(again.nameValueProperties, (QMap<QString, QString>{{"b"_q, ""_q}, {"d"_q, "1"_q}}));
    ASSERT_THAT(again.fileLinks, SizeIs(1));
    EXPECT_EQ(again.fileLinks[0].path, "p"_q);
    EXPECT_EQ(again.fileDate, Date);
}

} // namespace
