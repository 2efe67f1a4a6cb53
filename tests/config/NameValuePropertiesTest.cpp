#include "config/DatabaseConfigurationManager.h"

#include "support/Conversation.h"
#include "support/SmallStack.h"

#include <gtest/gtest.h>

#include <QDomDocument>
#include <QMap>

#include <memory>
#include <type_traits>

namespace name_value_properties_test {
namespace {

using namespace tandry::test;
using sync::config::DatabaseConfigurationManager;
using Properties = QMap<QString, QString>;

static_assert(!std::is_default_constructible_v<DatabaseConfigurationManager>);
static_assert(std::has_virtual_destructor_v<DatabaseConfigurationManager>);
static_assert(!std::is_base_of_v<QObject, DatabaseConfigurationManager>);
// Reading is const and writing isn't, as clients have them.
static_assert(std::is_same_v<decltype(&DatabaseConfigurationManager::ToNameValuePropertyMap),
                             Properties (DatabaseConfigurationManager::*)(QString) const>);
static_assert(std::is_same_v<decltype(&DatabaseConfigurationManager::ToNameValuePropertyString),
                             QString (DatabaseConfigurationManager::*)(Properties)>);

class NameValueProperties : public testing::Test
{
protected:
    Properties Read(QString const& text) { return _manager.ToNameValuePropertyMap(text); }
    QString Write(Properties const& properties) { return _manager.ToNameValuePropertyString(properties); }

private:
    DatabaseConfigurationManager _manager{std::make_shared<RecordingStore>()};
};

TEST_F(NameValueProperties, OneEntryIsADocumentOfFourLines)
{
    EXPECT_EQ(Write({{"FeatureName"_q, "F"_q}}),
              "<!DOCTYPE NameValueXml>\n"
              "<NameValueXml>\n"
              " <FeatureName><![CDATA[F]]></FeatureName>\n"
              "</NameValueXml>\n"_q);
}

TEST_F(NameValueProperties, EmptyMapIsAnEmptyRootAndNoEmptyText)
{
    EXPECT_EQ(Write({}), "<!DOCTYPE NameValueXml>\n<NameValueXml/>\n"_q);
}

TEST_F(NameValueProperties, EmptyMapIsWhatADocumentMakesOfItsRootAlone)
{
    QDomDocument document("NameValueXml"_q);
    document.appendChild(document.createElement("NameValueXml"_q));
    EXPECT_EQ(Write({}), document.toString(1));
    EXPECT_EQ(Read(document.toString(1)), Properties());
}

TEST_F(NameValueProperties, NullOrEmptyTextIsAnEmptyMap)
{
    EXPECT_EQ(Read(QString()), Properties());
    EXPECT_EQ(Read(""_q), Properties());
}

TEST_F(NameValueProperties, TextThatIsNoDocumentIsAnEmptyMap)
{
    EXPECT_EQ(Read("no document"_q), Properties());
    EXPECT_EQ(Read("{\"a\": \"b\"}"_q), Properties());
}

TEST_F(NameValueProperties, ElementWithoutChildIsAKeyWithAnEmptyValue)
{
    for (QString const& text : {"<NameValueXml><a/></NameValueXml>"_q, "<NameValueXml><a></a></NameValueXml>"_q}) {
        Properties const properties = Read(text);
        EXPECT_EQ(properties.keys(), QStringList{"a"_q});
        EXPECT_TRUE(properties["a"_q].isEmpty());
    }
}

TEST_F(NameValueProperties, EmptyValueComesBackAsAKeyWithAnEmptyValue)
{
    EXPECT_EQ(Read(Write({{"a"_q, ""_q}, {"b"_q, QString()}})), (Properties{{"a"_q, ""_q}, {"b"_q, ""_q}}));
}

TEST_F(NameValueProperties, KeysAreSortedByCodeUnitWhateverTheOrderOfInsertion)
{
    Properties properties;
    properties["b"_q] = "2"_q;
    properties["\xef\xbd\x81"_q] = "5"_q;     // U+FF41, one unit that is greater than a surrogate
    properties["\xf0\x90\x90\x80"_q] = "4"_q; // U+10400, a pair of surrogates
    properties["a"_q] = "1"_q;
    properties["\xc3\xa4"_q] = "3"_q;
    properties["B"_q] = "0"_q;
    EXPECT_EQ(Write(properties),
              "<!DOCTYPE NameValueXml>\n"
              "<NameValueXml>\n"
              " <B><![CDATA[0]]></B>\n"
              " <a><![CDATA[1]]></a>\n"
              " <b><![CDATA[2]]></b>\n"
              " <\xc3\xa4><![CDATA[3]]></\xc3\xa4>\n"
              " <\xf0\x90\x90\x80><![CDATA[4]]></\xf0\x90\x90\x80>\n"
              " <\xef\xbd\x81><![CDATA[5]]></\xef\xbd\x81>\n"
              "</NameValueXml>\n"_q);
}

TEST_F(NameValueProperties, MarkupStandsUnescapedInTheTextAndComesBackUnchanged)
{
    QString const value = "<a b=\"c\">&amp;'</a><!-- d --><?e?>"_q;
    QString const text = Write({{"k"_q, value}});
    EXPECT_TRUE(text.contains("<k><![CDATA["_q + value + "]]></k>"_q));
    EXPECT_EQ(Read(text), (Properties{{"k"_q, value}}));
}

TEST_F(NameValueProperties, OddValuesComeBackUnchanged)
{
    QStringList const values{"  "_q,
                             "\n"_q,
                             "\r\n \t"_q,
                             " a "_q,
                             "]"_q,
                             "]]"_q,
                             ">"_q,
                             "%1 %2"_q,
                             "'; DROP TABLE Schedules; --"_q,
                             "\xf0\x9f\x98\x80"_q,
                             "\xd8\xa7\xd9\x84"_q,
                             QString(QChar(0xd83d)),
                             "a"_q + QChar(0) + "b"_q,
                             QString(100000, QLatin1Char('x'))};
    for (QString const& value : values)
        EXPECT_EQ(Read(Write({{"k"_q, value}})), (Properties{{"k"_q, value}}));
}

TEST_F(NameValueProperties, EndOfASectionInAValueIsWrittenAsItStands)
{
    EXPECT_EQ(Write({{"k"_q, "a]]>b"_q}}),
              "<!DOCTYPE NameValueXml>\n<NameValueXml>\n <k><![CDATA[a]]>b]]></k>\n</NameValueXml>\n"_q);
}

TEST_F(NameValueProperties, KeyThatIsNoXmlNameIsWrittenAsItStands)
{
    for (QString const& key : {"two words"_q, "1"_q, "a<b"_q})
        EXPECT_EQ(Write({{key, "v"_q}}),
                  "<!DOCTYPE NameValueXml>\n<NameValueXml>\n <"_q + key + "><![CDATA[v]]></"_q + key +
                      ">\n</NameValueXml>\n"_q);
}

TEST_F(NameValueProperties, TextUnderTheRootIsAnEntryWithAnEmptyValue)
{
    EXPECT_EQ(Read("<NameValueXml>text<a>1</a></NameValueXml>"_q), (Properties{{"#text"_q, ""_q}, {"a"_q, "1"_q}}));
}

TEST_F(NameValueProperties, AllChildrenOfTheRootCountElementsOrNot)
{
    EXPECT_EQ(Read("<NameValueXml><!-- c --><?p d?><a>1</a></NameValueXml>"_q),
              (Properties{{"#comment"_q, ""_q}, {"p"_q, ""_q}, {"a"_q, "1"_q}}));
}

TEST_F(NameValueProperties, RootAndDocumentTypeOfAnyNameAreReadAlike)
{
    EXPECT_EQ(Read("<other><a>1</a></other>"_q), (Properties{{"a"_q, "1"_q}}));
    EXPECT_EQ(Read("<?xml version=\"1.0\"?><!DOCTYPE x><x y=\"z\"><a b=\"c\">1</a></x>"_q),
              (Properties{{"a"_q, "1"_q}}));
}

TEST_F(NameValueProperties, PlainTextIsAValueLikeASection)
{
    EXPECT_EQ(Read("<n><a>1 &lt; 2</a><b><![CDATA[1 < 2]]></b></n>"_q),
              (Properties{{"a"_q, "1 < 2"_q}, {"b"_q, "1 < 2"_q}}));
}

TEST_F(NameValueProperties, OnlyTheFirstChildOfAnEntryIsRead)
{
    EXPECT_EQ(Read("<n><a><![CDATA[1]]><![CDATA[2]]></a><b>1<c/>2</b><d><e>3</e></d></n>"_q),
              (Properties{{"a"_q, "1"_q}, {"b"_q, "1"_q}, {"d"_q, ""_q}}));
}

TEST_F(NameValueProperties, LastOfTwoEntriesWithOneNameWins)
{
    EXPECT_EQ(Read("<n><a>1</a><b>2</b><a>3</a></n>"_q), (Properties{{"a"_q, "3"_q}, {"b"_q, "2"_q}}));
}

TEST_F(NameValueProperties, TextThatBreaksOffGivesWhatStandsBeforeTheBreak)
{
    Properties const properties = Read("<NameValueXml><a><![CDATA[1]]></a><b><![CDATA[2"_q);
    EXPECT_EQ(properties["a"_q], "1"_q);
    EXPECT_TRUE(properties["b"_q].isEmpty());
}

TEST_F(NameValueProperties, PrefixIsPartOfTheKey)
{
    EXPECT_EQ(Read("<n xmlns:p=\"u\"><p:a>1</p:a></n>"_q), (Properties{{"p:a"_q, "1"_q}}));
}

// Texts that no manager wrote. Each is read on a small stack, and none costs more than its length.

/// Elements nested so many levels deep, the outermost included; the innermost ones may stay open.
QString Nested(int levels, bool closed = true)
{
    QString const opened = "<x>"_q + "<a>"_q.repeated(levels - 1);
    return closed ? opened + "</a>"_q.repeated(levels - 1) + "<b>1</b></x>"_q : opened;
}

TEST_F(NameValueProperties, OfElementsNestedAThousandLevelsDeepAreRead)
{
    EXPECT_EQ(OnSmallStack([&] { return Read(Nested(1000)); }), (Properties{{"a"_q, ""_q}, {"b"_q, "1"_q}}));
    EXPECT_EQ(OnSmallStack([&] { return Read(Nested(1000, false)); }), (Properties{{"a"_q, ""_q}}));
}

TEST_F(NameValueProperties, OfElementsNestedDeeperThanAThousandLevelsAreNone)
{
    for (int const levels : {1001, 10'000, 100'000}) {
        EXPECT_EQ(OnSmallStack([&] { return Read(Nested(levels)); }), Properties()) << levels;
        EXPECT_EQ(OnSmallStack([&] { return Read(Nested(levels, false)); }), Properties()) << levels;
    }
}

TEST_F(NameValueProperties, OfAnEmptyElementBelowAThousandLevelsAreNone)
{
    QString const opened = "<x>"_q + "<a>"_q.repeated(999);
    EXPECT_EQ(Read(opened), (Properties{{"a"_q, ""_q}}));
    EXPECT_EQ(Read(opened + "<b/>"_q), Properties());
    EXPECT_EQ(Read(opened + "</a><b/>"_q), (Properties{{"a"_q, ""_q}}));
}

TEST_F(NameValueProperties, OfATextThatBreaksOffBehindAThousandLevelsAreRead)
{
    QString const opened = "<x>"_q + "<a>"_q.repeated(999);
    for (QString const& rest : {"<"_q, "<1>"_q, "<a b>"_q, "<a b=c>"_q, "<a &>"_q, "&a<a>"_q})
        EXPECT_EQ(Read(opened + rest), (Properties{{"a"_q, ""_q}})) << rest.toStdString();
}

TEST_F(NameValueProperties, TagsInCommentsSectionsInstructionsAndAttributesAreNoLevels)
{
    QString const tags = "<a>"_q.repeated(2000);
    EXPECT_EQ(Read("<x><!--%1--><b>1</b></x>"_q.arg(tags)), (Properties{{"#comment"_q, ""_q}, {"b"_q, "1"_q}}));
    EXPECT_EQ(Read("<x><a><![CDATA[%1]]></a><b>1</b></x>"_q.arg(tags)), (Properties{{"a"_q, tags}, {"b"_q, "1"_q}}));
    EXPECT_EQ(Read("<x><?p %1?><b>1</b></x>"_q.arg(tags)), (Properties{{"p"_q, ""_q}, {"b"_q, "1"_q}}));
    EXPECT_EQ(Read("<x a=\"%1\" c='%1'><b>1</b></x>"_q.arg(">"_q.repeated(2000))), (Properties{{"b"_q, "1"_q}}));
    EXPECT_EQ(Read("<x>%1</x>"_q.arg("<a/>"_q.repeated(2000))), (Properties{{"a"_q, ""_q}}));
}

TEST_F(NameValueProperties, OfADtdWithManyOpeningBracketsAreNone)
{
    QString const text = "<!DOCTYPE x [<!ELEMENT x "_q + "("_q.repeated(70'000);
    EXPECT_EQ(OnSmallStack([&] { return Read(text); }), Properties());
}

TEST_F(NameValueProperties, OfADtdOfAKilobyteAreRead)
{
    QString const content = "<x><a>1</a></x>"_q;
    auto const padded = [](int size) {
        QString const text =
            "<!DOCTYPE x [<!ELEMENT x %1a%2>"_q.arg("("_q.repeated(490), ")"_q.repeated(490)) + "%1]>"_q;
        return text.arg(QString(size - text.size() + 2, QLatin1Char(' ')));
    };
    ASSERT_EQ(padded(1024).size(), 1024);
    EXPECT_EQ(OnSmallStack([&] { return Read(padded(1024) + content); }), (Properties{{"a"_q, "1"_q}}));
    EXPECT_EQ(Read(padded(1025) + content), Properties());
}

TEST_F(NameValueProperties, OfDtdsOfAKilobyteInAllAreRead)
{
    QString const dtd = "<!DOCTYPE x [<!NOTATION n SYSTEM '%1'>]>\n"_q.arg("]>"_q.repeated(200));
    EXPECT_EQ(Read(dtd.repeated(2) + "<x><a>1</a></x>"_q), (Properties{{"a"_q, "1"_q}}));
    EXPECT_EQ(Read(dtd.repeated(3) + "<x><a>1</a></x>"_q), Properties());
}

TEST_F(NameValueProperties, OfADtdThatDeclaresEntitiesAreNone)
{
    for (QString const& declaration : {"<!ENTITY e \"v\">"_q,
                                       "<!ENTITY e SYSTEM \"f\">"_q,
                                       "<!ENTITY % e \"v\">"_q,
                                       "<!ELEMENT x ANY><!-- ' --><?p \"?><!ENTITY e 'v'>"_q})
        EXPECT_EQ(Read("<!DOCTYPE x [%1]><x><a>1</a></x>"_q.arg(declaration)), Properties())
            << declaration.toStdString();
}

TEST_F(NameValueProperties, OfADtdThatOnlyMentionsEntitiesAreRead)
{
    for (QString const& mention : {"<!-- <!ENTITY e \"v\"> -->"_q,
                                   "<?p <!ENTITY e \"v\"> ?>"_q,
                                   "<!ELEMENT ENTITY ANY>"_q,
                                   "<!ATTLIST x a ENTITY #IMPLIED b CDATA '&lt;!ENTITY'>"_q,
                                   "<!NOTATION n SYSTEM '<!ENTITY e \"v\">'>"_q})
        EXPECT_EQ(Read("<!DOCTYPE x [%1]><x><a>1</a></x>"_q.arg(mention)), (Properties{{"a"_q, "1"_q}}))
            << mention.toStdString();
}

TEST_F(NameValueProperties, OfEntitiesThatExpandWithoutEndAreNone)
{
    QString chain = "<!DOCTYPE x [<!ENTITY e0 \"\">"_q;
    for (int i = 1; i < 5000; ++i)
        chain += "<!ENTITY e%1 \"&e%2;\">"_q.arg(i).arg(i - 1);
    EXPECT_EQ(Read(chain + "]><x><a>&e4999;</a><b>1</b></x>"_q), Properties());

    QString const repeated = "<!DOCTYPE x [<!ENTITY e \"%1\">]><x><a>%2</a></x>"_q;
    EXPECT_EQ(Read(repeated.arg("v"_q.repeated(20'000), "&e;"_q.repeated(10'000))), Properties());
    EXPECT_EQ(Read(repeated.arg("<a>"_q.repeated(100'000), "&e;"_q)), Properties());
}

TEST_F(NameValueProperties, OfAnElementWithAHundredAttributesAreRead)
{
    auto const withAttributes = [](int count, QString const& end) {
        QString text = "<x><a"_q;
        for (int i = 0; i < count; ++i)
            text += " a%1='='"_q.arg(i);
        return text + end + "<b>1</b></x>"_q;
    };
    for (QString const& end : {"></a>"_q, "/>"_q}) {
        EXPECT_EQ(Read(withAttributes(100, end)), (Properties{{"a"_q, ""_q}, {"b"_q, "1"_q}}));
        EXPECT_EQ(Read(withAttributes(101, end)), Properties());
    }
    EXPECT_EQ(Read("<x>"_q + "<a b='1'/>"_q.repeated(200) + "</x>"_q), (Properties{{"a"_q, ""_q}}));
}

TEST_F(NameValueProperties, MayHoldAnyNumberOfTagsInTheirValues)
{
    Properties const properties{{"Key"_q, "<a>"_q.repeated(100'000)}};
    EXPECT_EQ(Read(Write(properties)), properties);
}

TEST_F(NameValueProperties, MayBeManyThousands)
{
    Properties properties;
    for (int i = 0; i < 3000; ++i)
        properties["Key%1"_q.arg(i)] = "value"_q;
    EXPECT_EQ(Read(Write(properties)), properties);
}

TEST_F(NameValueProperties, LoseTheCharactersThatTheProgramHasQtDrop)
{
    QString const text = Write({{"k"_q, "a\U0001F4C4b"_q}});
    QDomImplementation::setInvalidDataPolicy(QDomImplementation::DropInvalidChars);
    Properties const properties = Read(text);
    // Most of Qt 5 takes all characters of two units for invalid, and the last ones of 5.15 do not.
    QString const kept = QDomDocument().createTextNode("a\U0001F4C4b"_q).data();
    QDomImplementation::setInvalidDataPolicy(QDomImplementation::AcceptInvalidChars);
    EXPECT_EQ(properties, (Properties{{"k"_q, kept}}));
    EXPECT_EQ(Read(text), (Properties{{"k"_q, "a\U0001F4C4b"_q}}));
}

TEST(DatabaseConfigurationManager, TakesOneShareOfTheFactoryAndMakesNoCall)
{
    auto const store = std::make_shared<RecordingStore>();
    {
        DatabaseConfigurationManager const manager(store);
        EXPECT_EQ(store.use_count(), 2);
    }
    EXPECT_EQ(store.use_count(), 1);
    EXPECT_EQ(store->QueriesCreated(), 0);
}

TEST(DatabaseConfigurationManager, CopySharesTheFactory)
{
    auto const store = std::make_shared<RecordingStore>();
    DatabaseConfigurationManager const manager(store);
    {
        DatabaseConfigurationManager const copy(manager);
        EXPECT_EQ(store.use_count(), 3);
    }
    EXPECT_EQ(store.use_count(), 2);
}

TEST(DatabaseConfigurationManager, AssignmentTakesTheOtherFactoryAndReleasesItsOwn)
{
    auto const old = std::make_shared<RecordingStore>();
    auto const other = std::make_shared<RecordingStore>();
    DatabaseConfigurationManager manager(old);
    DatabaseConfigurationManager const source(other);
    EXPECT_EQ(&(manager = source), &manager);
    EXPECT_EQ(old.use_count(), 1);
    EXPECT_EQ(other.use_count(), 3);
}

TEST(DatabaseConfigurationManager, AssignmentToItselfKeepsTheFactory)
{
    auto const store = std::make_shared<RecordingStore>();
    DatabaseConfigurationManager manager(store);
    DatabaseConfigurationManager const& same = manager;
    manager = same;
    EXPECT_EQ(store.use_count(), 2);
}

/// Tells when it goes, and who could still see it then.
class WatchedStore : public RecordingStore
{
public:
    explicit WatchedStore(std::weak_ptr<RecordingStore> other, bool* otherWasKept)
        : _other(std::move(other))
        , _otherWasKept(otherWasKept)
    {}
    ~WatchedStore() override { *_otherWasKept = _other.use_count() == 2; }

private:
    std::weak_ptr<RecordingStore> _other;
    bool* _otherWasKept;
};

TEST(DatabaseConfigurationManager, AssignmentReleasesTheOldFactoryAfterTheNewOneIsInPlace)
{
    bool newWasKept = false;
    auto other = std::make_shared<RecordingStore>();
    DatabaseConfigurationManager manager(std::make_shared<WatchedStore>(other, &newWasKept));
    DatabaseConfigurationManager const source(std::move(other));
    manager = source;
    EXPECT_TRUE(newWasKept);
}

} // namespace
} // namespace name_value_properties_test
