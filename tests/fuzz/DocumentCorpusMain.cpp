// Usage: document_corpus [--check] FILE
//
// Writes texts to FILE, each with what Qt 5.15's QDomDocument has of it: what the readers of stored documents have to
// read with every Qt. --check compares the FILE with QDomDocument instead.

#include "fuzz/DocumentAgreement.h"
#include "fuzz/DocumentGenerator.h"
#include "support/DocumentCorpus.h"

#include <QFile>
#include <QStringList>

#include <cstdio>
#include <cstdlib>
#include <cstring>

using namespace tandry::fuzz;
using tandry::test::CorpusDocument;

namespace {

constexpr int GeneratedTexts = 250;
constexpr int LongestGeneratedText = 350;

/// Text of an element, or value of an attribute.
QStringList Contents()
{
    QStringList contents{
        QStringLiteral(""),
        QStringLiteral(" "),
        QStringLiteral("\n"),
        QStringLiteral(" v "),
        QStringLiteral("a\r\nb"),
        QStringLiteral("a\rb"),
        QStringLiteral("a\n\rb"),
        QStringLiteral("\r"),
        QStringLiteral("a\tb"),
        QStringLiteral("&amp;&lt;&gt;&quot;&apos;"),
        QStringLiteral("&#65;&#x42;&#x1F4C4;"),
        QStringLiteral("a&#13;&#10;b"),
        QStringLiteral("a&#x9;b"),
        QStringLiteral("a&#0;b"),
        QStringLiteral("a&#x1;b"),
        QStringLiteral("a&#xD800;b"),
        QStringLiteral("a&#xFFFE;b"),
        QStringLiteral("a&#x110000;b"),
        QStringLiteral("a&#;b"),
        QStringLiteral("a&#xZ;b"),
        QStringLiteral("&unknown;"),
        QStringLiteral("a&unknown;b"),
        QStringLiteral("a&nbsp;&eacute;b"),
        QStringLiteral("a & b"),
        QStringLiteral("a&b"),
        QStringLiteral("&;"),
        QStringLiteral("%p;"),
        QStringLiteral("a>b"),
        QStringLiteral("a]]>b"),
        QStringLiteral("a<b"),
        QStringLiteral("a<b/>c"),
        QStringLiteral("<b>c</b>d"),
        QStringLiteral("<!-- c -->v"),
        QStringLiteral("<!-- a -- b -->v"),
        QStringLiteral("<?p d?>v"),
        QStringLiteral("<![CDATA[v]]>"),
        QStringLiteral("<![CDATA[]]>"),
        QStringLiteral("<![CDATA[]]>v"),
        QStringLiteral("<![CDATA[ ]]>"),
        QStringLiteral("<![CDATA[a\r\nb\rc]]>"),
        QStringLiteral("<![CDATA[a]]]]><![CDATA[>b]]>"),
        QStringLiteral("<![CDATA[&amp;<b>&x;]]>"),
        QStringLiteral("v<![CDATA[w]]>"),
        QStringLiteral(" <![CDATA[v]]> "),
        QStringLiteral("<![cdata[v]]>"),
        QStringLiteral("<![CDATA[v"),
        QStringLiteral("'"),
        QStringLiteral("%1"),
    };
    // Characters that XML forbids, or that its versions treat differently.
    for (int const unit : {0x0,
                           0x1,
                           0x8,
                           0xB,
                           0xC,
                           0x1F,
                           0x7F,
                           0x80,
                           0x85,
                           0x9F,
                           0xA0,
                           0x2028,
                           0xD83D,
                           0xDE00,
                           0xFEFF,
                           0xFFFD,
                           0xFFFE,
                           0xFFFF})
        contents.append(QLatin1Char('a') + QString(QChar(unit)) + QLatin1Char('b'));
    contents.append(QStringLiteral("a\U0001F4C4b"));
    return contents;
}

/// A whole document but for the part before its root element, or for the part behind it.
QString const Root = QStringLiteral("<r FileDate='2020-01-02T03:04:05'><a FileId='1' Path='p'>v</a></r>");

QStringList Beginnings()
{
    return {
        QStringLiteral("\uFEFF"),
        QStringLiteral("\uFEFF<?xml version='1.0'?>"),
        QStringLiteral(" "),
        QStringLiteral("\n\t\r\n"),
        QStringLiteral("text"),
        QStringLiteral("&amp;"),
        QStringLiteral("<?xml version='1.0'?>"),
        QStringLiteral(" <?xml version='1.0'?>"),
        QStringLiteral("<?xml version='1.1'?>"),
        QStringLiteral("<?xml version='1.2'?>"),
        QStringLiteral("<?xml version='2.0'?>"),
        QStringLiteral("<?xml version='x'?>"),
        QStringLiteral("<?xml?>"),
        QStringLiteral("<?XML version='1.0'?>"),
        QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"),
        QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-16\"?>"),
        QStringLiteral("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\xE4"),
        QStringLiteral("<?xml version=\"1.0\" encoding=\"no-such\"?>"),
        QStringLiteral("<?xml version=\"1.0\" encoding=\"\"?>"),
        QStringLiteral("<?xml version='1.0' encoding='UTF-8' standalone='yes'?>"),
        QStringLiteral("<?xml version='1.0' standalone='maybe'?>"),
        QStringLiteral("<?xml encoding='UTF-8' version='1.0'?>"),
        QStringLiteral("<?xml version='1.0' other='1'?>"),
        QStringLiteral("<?xml version='1.0'"),
        QStringLiteral("<?p?>"),
        QStringLiteral("<?p d?><!-- c -->"),
        QStringLiteral("<!-- c --><?p d?>\n<!DOCTYPE r>\n<!-- d -->"),
        QStringLiteral("<!DOCTYPE r>"),
        QStringLiteral("<!doctype r>"),
        QStringLiteral("<!DOCTYPE other>"),
        QStringLiteral("<!DOCTYPE r><!DOCTYPE r>"),
        QStringLiteral("<!DOCTYPE>"),
        QStringLiteral("<!DOCTYPE r SYSTEM 'r.dtd'>"),
        QStringLiteral("<!DOCTYPE r PUBLIC '-//X//Y' \"r.dtd\">"),
        QStringLiteral("<!DOCTYPE r PUBLIC 'x'>"),
        QStringLiteral("<!DOCTYPE r []>"),
        QStringLiteral("<!DOCTYPE r [<!ELEMENT r ANY>]>"),
        QStringLiteral("<!DOCTYPE r [<!ATTLIST a RefId CDATA 'default'>]>"),
        QStringLiteral("<!DOCTYPE r [<!ATTLIST a RefId CDATA #FIXED 'f' ServerFileId ID #IMPLIED>]>"),
        QStringLiteral("<!DOCTYPE r [<!NOTATION n SYSTEM 'x'>]>"),
        QStringLiteral("<!DOCTYPE r [<!-- c --><?p d?>]>"),
        QStringLiteral("<!DOCTYPE r [%p;]>"),
        QStringLiteral("<!DOCTYPE r [<!-- <!ENTITY e 'v'> -->]>"),
        QStringLiteral("<!DOCTYPE r [ <!ELEMENT r (a)"),
        QStringLiteral("<b/>"),
        QStringLiteral("</b>"),
        QStringLiteral("<![CDATA[x]]>"),
    };
}

QStringList Ends()
{
    return {
        QStringLiteral("\n"),
        QStringLiteral(" \r\n"),
        QStringLiteral("text"),
        QStringLiteral("&x;"),
        QStringLiteral("<!-- c -->"),
        QStringLiteral("<?p d?>"),
        QStringLiteral("<b/>"),
        QStringLiteral("<r/>"),
        QStringLiteral("</r>"),
        QStringLiteral("<"),
        QString(QChar(0)),
        QStringLiteral("<![CDATA[x]]>"),
        QStringLiteral("<!DOCTYPE r>"),
    };
}

/// Tags of the elements within the root, and other texts beside them.
QStringList Children()
{
    return {
        QStringLiteral("<a FileId='1' FileId='2' Path='p' Path='q'>v</a>"),
        QStringLiteral("<a FileId='1' Path='p' a='1' a='2'/>"),
        QStringLiteral("<a  FileId = '1'\r\n\tPath = \"p\" >v</a >"),
        QStringLiteral("<a FileId='1'Path='p'>v</a>"),
        QStringLiteral("<a FileId=1 Path=p>v</a>"),
        QStringLiteral("<a FileId='1' Path>v</a>"),
        QStringLiteral("<a FileId='1' Path='p>v</a>"),
        QStringLiteral("<a FileId='1' Path='p' / >"),
        QStringLiteral("<a FileId='1' Path='p'/>tail"),
        QStringLiteral("< a FileId='1' Path='p'/>"),
        QStringLiteral("<a>1</a><a>2</a>"),
        QStringLiteral("<a>1</b>"),
        QStringLiteral("<a>1</A>"),
        QStringLiteral("<a>1"),
        QStringLiteral("<a><a FileId='1' Path='p'>1</a></a>"),
        QStringLiteral("<p:a FileId='1' p:Path='p'>v</p:a>"),
        QStringLiteral("<p:a xmlns:p='u' FileId='1' Path='p'>v</p:a>"),
        QStringLiteral("<a xmlns='u' FileId='1' Path='p'>v</a>"),
        QStringLiteral("<a xmlns:p='' FileId='1' Path='p'>v</a>"),
        QStringLiteral("<a xmlns:xml='u' FileId='1' Path='p'>v</a>"),
        QStringLiteral("<:a FileId='1' Path='p'>v</:a>"),
        QStringLiteral("<a: FileId='1' Path='p'>v</a:>"),
        QStringLiteral("<a:b:c FileId='1' Path='p'>v</a:b:c>"),
        QStringLiteral("<xml FileId='1' Path='p'>v</xml>"),
        QStringLiteral("<1a FileId='1' Path='p'>v</1a>"),
        QStringLiteral("<-a FileId='1' Path='p'>v</-a>"),
        QStringLiteral("<a.b-c_1 FileId='1' Path='p'>v</a.b-c_1>"),
        QStringLiteral("<\u00E4\u4E2D FileId='1' Path='p'>v</\u00E4\u4E2D>"),
        QStringLiteral("<a\u00B7\u0301 FileId='1' Path='p'>v</a\u00B7\u0301>"),
        QStringLiteral("<\u00D7 FileId='1' Path='p'>v</\u00D7>"),
        QStringLiteral("<a\u2028 FileId='1' Path='p'>v</a>"),
        QStringLiteral("<\U00010400 FileId='1' Path='p'>v</\U00010400>"),
        QStringLiteral("text<a FileId='1' Path='p'>v</a>text"),
        QStringLiteral("<!-- c --><?p d?>&x;<![CDATA[s]]>"),
        QStringLiteral("<a FileId='1' Path='p' xml:space='preserve'> </a>"),
        QStringLiteral("<a FileId='1' RefId='r' ServerFileId='s' Path='p'/><b FileId='-1' Path='q'/><c/>"),
        QStringLiteral(
            "<a FileId='' Path='p'/><a FileId=' 7 ' Path='p'/><a FileId='+7' Path='p'/><a FileId='07' Path='p'/>"),
        QStringLiteral("<a FileId='0x7' Path='p'/><a FileId='7.0' Path='p'/><a FileId='7,000' Path='p'/>"),
        QStringLiteral(
            "<a FileId='2147483647' Path='p'/><a FileId='2147483648' Path='q'/><a FileId='-2147483649' Path='r'/>"),
        QStringLiteral("<a FileId='\u0661' Path='p'/><a FileId='7a' Path='p'/><a FileId='- 7' Path='p'/>"),
    };
}

QStringList Dates()
{
    return {
        QStringLiteral("2020-01-02"),
        QStringLiteral("2020-01-02T03"),
        QStringLiteral("2020-01-02T03:04"),
        QStringLiteral("2020-01-02T03:04:05Z"),
        QStringLiteral("2020-01-02T03:04:05z"),
        QStringLiteral("2020-01-02t03:04:05"),
        QStringLiteral("2020-01-02 03:04:05"),
        QStringLiteral("2020-01-02T03:04:05+02:00"),
        QStringLiteral("2020-01-02T03:04:05+0200"),
        QStringLiteral("2020-01-02T03:04:05+02"),
        QStringLiteral("2020-01-02T03:04:05-23:59"),
        QStringLiteral("2020-01-02T03:04:05.678"),
        QStringLiteral("2020-01-02T03:04:05,678Z"),
        QStringLiteral("2020-01-02T03:04:05.6789"),
        QStringLiteral("2020-01-02T03:04:05.9999"),
        QStringLiteral("2020-01-02T24:00:00"),
        QStringLiteral("2020-01-02T24:00:01"),
        QStringLiteral("2020-01-02T03:04:60"),
        QStringLiteral("2020-01-02T03.5"),
        QStringLiteral("2020-01-02T03:04.5"),
        QStringLiteral("2020-02-30T03:04:05"),
        QStringLiteral("2020-3-29T02:30:00"),
        QStringLiteral("2020-03-29T02:30:00"),
        QStringLiteral("2020-01-02T3:4:5"),
        QStringLiteral("20200102T030405"),
        QStringLiteral("2020-002T03:04:05"),
        QStringLiteral("0000-01-02T03:04:05"),
        QStringLiteral("-2020-01-02T03:04:05"),
        QStringLiteral("12020-01-02T03:04:05"),
        QStringLiteral("9999-12-31T23:59:59"),
        QStringLiteral("0001-01-01T00:00:00"),
        QStringLiteral(" 2020-01-02T03:04:05"),
        QStringLiteral("2020-01-02T03:04:05 "),
        QStringLiteral("2020-01-02T03:04:05 Z"),
        QStringLiteral("2020-01-02T03:04:05x"),
        QStringLiteral("2020-01-02T03:04:05."),
        QStringLiteral("2020-01-02T03:04:05. "),
        QStringLiteral("2020-01-02T03:04:05.6 "),
        QStringLiteral("2020-01-02T03:04:05.+6"),
        QStringLiteral("2020-01-02T03:04:05.6x"),
        QStringLiteral("2020-01-02T03:04:05.67899x"),
        QStringLiteral("2020-01-02T03:04:+5"),
        QStringLiteral("2020-01-02T03:04: 5"),
        QStringLiteral("2020-01-02T03:04:5"),
        QStringLiteral("2020-01-02T03:04."),
        QStringLiteral("2020-01-02T03:04.99999"),
        QStringLiteral("2020-01-02T03:04.+5Z"),
        QStringLiteral("2020-01-02T03:04x"),
        QStringLiteral("2020-01-02T24:00:00.0004"),
        QStringLiteral("2020-01-02T24:00:00.0005"),
        QStringLiteral("2020-01-02T03:04:05+"),
        QStringLiteral("2020-01-02T03:04:05+2"),
        QStringLiteral("2020-01-02T03:04:05+24"),
        QStringLiteral("2020-01-02T03:04:05+02:60"),
        QStringLiteral("2020-01-02T03:04:05+02: 0"),
        QStringLiteral("2020-01-02T03:04:05+02:000"),
        QStringLiteral("2020-01-02T\u0660\u0663:04:05"),
        QStringLiteral("2020\u20100102T03:04:05"),
        QStringLiteral("2020+01+02T03:04:05"),
        QStringLiteral("2020-01-0203:04:05"),
        QStringLiteral("2020-01-02T"),
        QStringLiteral("2020-01"),
        QStringLiteral("03:04:05"),
        QStringLiteral("2020/01/02T03:04:05"),
        QStringLiteral("Thu Jan 2 03:04:05 2020"),
    };
}

QStringList Texts()
{
    QStringList texts;
    for (QString const& content : Contents()) {
        QString const attribute = QString(content).replace(QLatin1Char('"'), QLatin1Char('\''));
        texts.append(QStringLiteral("<r FileDate=\"2020-01-02T03:04:05\"><a>") + content +
                     QStringLiteral("</a><b>2</b></r>"));
        texts.append(QStringLiteral("<r>") + content + QStringLiteral("<b FileId='2'>2</b></r>"));
        texts.append(QStringLiteral("<r FileDate='2020-01-02T03:04:05'><a FileId='1' Path=\"") + attribute +
                     QStringLiteral("\" RefId='r'/><b>2</b></r>"));
        texts.append(QStringLiteral("<NameValueXml>\n <a><![CDATA[") + content +
                     QStringLiteral("]]></a>\n <b><![CDATA[2]]></b>\n</NameValueXml>\n"));
        texts.append(QStringLiteral("<r><!--") + content + QStringLiteral("--><?p ") + content +
                     QStringLiteral("?><a>1</a></r>"));
    }
    for (QString const& beginning : Beginnings())
        texts.append(beginning + Root);
    for (QString const& end : Ends())
        texts.append(Root + end);
    for (QString const& child : Children())
        texts.append(QStringLiteral("<r FileDate='2020-01-02T03:04:05'>") + child + QStringLiteral("<z>9</z></r>"));
    for (QString const& date : Dates())
        texts.append(QStringLiteral("<r FileDate='") + date + QStringLiteral("'/>"));

    // At each place where a text can break off.
    QString const whole = QStringLiteral(
        "<!DOCTYPE r><r FileDate='2020-01-02T03:04:05'><a FileId='1'><![CDATA[v]]></a><b>&lt;</b><!--c--></r>");
    for (int size = 1; size < whole.size(); ++size)
        texts.append(whole.left(size));

    DocumentGenerator generator(1);
    for (int generated = 0; generated < GeneratedTexts;) {
        QString const text = generator.Next();
        if (text.isEmpty() || text.size() > LongestGeneratedText)
            continue;
        texts.append(text);
        ++generated;
    }
    return texts;
}

CorpusDocument ReadByQt(QString const& text)
{
    FileLinks const links = FileLinksByQt(text);
    return {text, tandry::test::Describe(NameValuesByQt(text), links.links, links.date)};
}

int Write(QFile& file)
{
    std::vector<CorpusDocument> documents;
    for (QString const& text : Texts()) {
        if (IsWithinLimits(text))
            documents.push_back(ReadByQt(text));
    }
    QByteArray const corpus = tandry::test::ToCorpus(documents);
    if (!file.open(QIODevice::WriteOnly) || file.write(corpus) != corpus.size() || !file.flush()) {
        std::fprintf(stderr, "cannot write %s: %s\n", qPrintable(file.fileName()), qPrintable(file.errorString()));
        return EXIT_FAILURE;
    }
    std::printf("%zu texts written\n", documents.size());
    return EXIT_SUCCESS;
}

int Check(QFile& file)
{
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "cannot read %s: %s\n", qPrintable(file.fileName()), qPrintable(file.errorString()));
        return EXIT_FAILURE;
    }
    std::vector<CorpusDocument> const documents = tandry::test::FromCorpus(file.readAll());
    int different = 0;
    for (CorpusDocument const& document : documents) {
        QByteArray const read = ReadByQt(document.text).read;
        if (read == document.read)
            continue;
        ++different;
        std::fprintf(stderr,
                     "%s\nthe file has\n%sQt has\n%s\n",
                     tandry::test::ToLiteral(document.text).constData(),
                     document.read.constData(),
                     read.constData());
    }
    std::printf("%zu texts, %d of them read differently\n", documents.size(), different);
    return documents.empty() || different > 0 ? EXIT_FAILURE : EXIT_SUCCESS;
}

} // namespace

int main(int argc, char** argv)
{
    bool const isCheck = argc == 3 && std::strcmp(argv[1], "--check") == 0;
    if (argc != 2 && !isCheck) {
        std::fprintf(stderr, "Usage: document_corpus [--check] FILE\n");
        return EXIT_FAILURE;
    }
    QFile file(QString::fromLocal8Bit(argv[argc - 1]));
    return isCheck ? Check(file) : Write(file);
}
