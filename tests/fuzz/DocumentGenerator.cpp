#include "fuzz/DocumentGenerator.h"

#include "config/FileLinksDocument.h"
#include "config/NameValueDocument.h"
#include "config/XmlLimits.h"

#include <algorithm>
#include <initializer_list>
#include <vector>

namespace tandry::fuzz {

namespace {

using sync::config::FileLink;
using sync::config::XmlLimits;

/// Returns ASCII texts, texts of these UTF-16 units, and names of these lengths.
QStringList Texts(std::initializer_list<char const*> ascii,
                  std::initializer_list<std::vector<ushort>> others,
                  std::initializer_list<int> lengths)
{
    QStringList texts;
    for (char const* text : ascii)
        texts.append(QLatin1String(text));
    for (std::vector<ushort> const& units : others)
        texts.append(QString(reinterpret_cast<QChar const*>(units.data()), static_cast<int>(units.size())));
    for (int const length : lengths)
        texts.append(QString(length, QLatin1Char('n')));
    return texts;
}

QStringList const& Names()
{
    static QStringList const names = Texts({"FeatureName",
                                            "a",
                                            "b",
                                            "B",
                                            "_",
                                            ":",
                                            "p:a",
                                            "a-1.2",
                                            "xml",
                                            "NameValueXml",
                                            "FileLink",
                                            "FileDate",
                                            "1",
                                            "-",
                                            "two words",
                                            "a>",
                                            "a/",
                                            "a='1'"},
                                           {{0xE4}, {'a', 0xB7}, {0x4E2D, 0x6587}, {0xD801, 0xDC00}, {0xFF41}},
                                           {255, 256, 257, 513});
    return names;
}

/// Characters and markup that XML readers treat differently, and parts of the library's own documents.
QStringList const& Pieces()
{
    static QStringList const pieces = Texts({" ",
                                             "  ",
                                             "\t",
                                             "\n",
                                             "\r",
                                             "\r\n",
                                             "<",
                                             ">",
                                             "/",
                                             "&",
                                             ";",
                                             "#",
                                             "\"",
                                             "'",
                                             "=",
                                             "]",
                                             "]]",
                                             "]]>",
                                             "]]]>",
                                             "[",
                                             "!",
                                             "?",
                                             "-",
                                             "a",
                                             "1",
                                             "<![CDATA[",
                                             "<![CDATA[]]>",
                                             "<!--",
                                             "-->",
                                             "<!-- c -->",
                                             "<?p d?>",
                                             "<?",
                                             "?>",
                                             "</",
                                             "/>",
                                             "<a>",
                                             "</a>",
                                             "<a/>",
                                             "&amp;",
                                             "&lt;",
                                             "&gt;",
                                             "&quot;",
                                             "&apos;",
                                             "&#x9;",
                                             "&#xa;",
                                             "&#xA;",
                                             "&#xd;",
                                             "&#10;",
                                             "&#x0;",
                                             "&#xd83d;",
                                             "&#xFFFE;",
                                             "&#65;",
                                             "&e;",
                                             "&#x9",
                                             "<?xml version=\"1.0\"?>",
                                             "<?xml version=\"1.1\" encoding=\"UTF-16\"?>",
                                             "<!DOCTYPE NameValueXml>",
                                             "<!DOCTYPE a [<!ELEMENT a ANY>]>",
                                             "<!DOCTYPE a [<!ENTITY e 'v'>]>",
                                             "<!DOCTYPE a [<!-- ' > --><?p \">?><!ATTLIST a b CDATA '>'>]>",
                                             "<NameValueXml>",
                                             "<NameValueXml/>",
                                             "</NameValueXml>",
                                             "<FileLinks FileDate=\"",
                                             "<FileLinks>",
                                             "</FileLinks>",
                                             "<FileLink",
                                             " FileId=\"1\"",
                                             " FileId='1'",
                                             " RefId=\"\"",
                                             " ServerFileId=\"s\"",
                                             " Path=\"p\"",
                                             " xmlns:p=\"u\"",
                                             " \n"},
                                            {{0},
                                             {1},
                                             {0x1F},
                                             {0x7F},
                                             {0x85},
                                             {0xA0},
                                             {0x2028},
                                             {0xD83D},
                                             {0xDE00},
                                             {0xD83D, 0xDE00},
                                             {0xDE00, 0xD83D},
                                             {0xFEFF},
                                             {0xFFFD},
                                             {0xFFFE},
                                             {0xFFFF}},
                                            {});
    return pieces;
}

} // namespace

QString DocumentGenerator::Next()
{
    if (Once(500))
        return AtTheLimits();
    QString text = Once(2) ? NameValues() : FileLinks();
    for (int changes = Number(4); changes > 0; --changes)
        Change(text);
    return text;
}

QString DocumentGenerator::Name()
{
    return Once(3) ? OneOf(Names()) : QStringLiteral("Key%1").arg(Number(20));
}

QString DocumentGenerator::Value()
{
    QString value;
    for (int pieces = Number(4); pieces > 0; --pieces) {
        if (Once(3))
            value += OneOf(Pieces());
        else if (Once(20))
            value += QString(254 + Number(4), QLatin1Char('v'));
        else
            value += QStringLiteral("value %1").arg(Number(1000));
    }
    return value;
}

QString DocumentGenerator::NameValues()
{
    QMap<QString, QString> properties;
    for (int entries = Number(4); entries > 0; --entries)
        properties[Name()] = Value();
    return sync::config::WriteNameValues(properties);
}

QString DocumentGenerator::FileLinks()
{
    QList<FileLink> links;
    for (int count = Number(4); count > 0; --count) {
        FileLink link;
        link.fileId = Number(3) - 1;
        link.path = Value();
        link.refId = Once(2) ? Value() : QString();
        link.serverFileId = Once(2) ? Value() : QString();
        links.append(link);
    }
    QDateTime const date =
        Once(4) ? QDateTime() : QDateTime::fromMSecsSinceEpoch(qint64(Number(2'000'000'000)) * 1000, Qt::UTC);
    return sync::config::WriteFileLinks(links, date);
}

/// Returns a document with nearly as many levels or attributes as are read, or a few more, and something odd after
/// them.
QString DocumentGenerator::AtTheLimits()
{
    static QStringList const opened = Texts({"<e a='>' b=\"/>\">",
                                             "<e a=\"x/y\">",
                                             "<e><!-- <c> /> -->",
                                             "<e><c/>",
                                             "<e><c></c>",
                                             "<e><![CDATA[<c></e>]]>",
                                             "<e><?p <c> ?>"},
                                            {},
                                            {});
    static QStringList const attributes = Texts({" a=\"\"", " b = 'x==y'", " c=\"/ >\"", " d='&lt;'"}, {}, {});
    static QStringList const last = Texts({"<f/>", "<f a='/'/>", "<f></f>", "<f", "<f>", "&e;", "<!--"}, {}, {});

    QString text = QStringLiteral("<x a='1' b='2'><a c='3'>1</a>");
    QString end;
    if (Once(2)) {
        int const levels = XmlLimits::Levels - 3 + Number(4);
        for (int level = 0; level < levels; ++level)
            text += Once(20) ? OneOf(opened) : QStringLiteral("<e>");
        end = QStringLiteral("</e>").repeated(levels);
    }
    else {
        text += QStringLiteral("<e");
        for (int count = XmlLimits::Attributes - 2 + Number(4); count > 0; --count)
            text += OneOf(attributes);
        text += Once(2) ? QStringLiteral("/>") : QStringLiteral("></e>");
    }
    if (Once(2))
        text += OneOf(last);
    if (Once(4))
        text += OneOf(Pieces());
    return Once(2) ? text : text + end + QStringLiteral("<b>2</b></x>");
}

void DocumentGenerator::Change(QString& text)
{
    int const position = Number(text.size() + 1);
    int const size = Number(std::min(text.size() - position, 12) + 1);
    switch (Number(5)) {
    case 0:
        text.insert(position, OneOf(Pieces()));
        break;
    case 1:
        text.remove(position, size);
        break;
    case 2:
        text.replace(position, std::min(size, 1), OneOf(Pieces()));
        break;
    case 3:
        text.insert(Number(text.size() + 1), text.mid(position, size * (1 + Number(8))));
        break;
    default:
        text.truncate(Once(4) ? position : text.size() - Number(2));
    }
}

} // namespace tandry::fuzz
