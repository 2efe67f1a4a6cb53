#include "config/FileLinksDocument.h"
#include "config/NameValueDocument.h"

#include "support/DocumentCorpus.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QStringList>

/// Texts with what Qt 5.15's QDomDocument has of them, in a file that tests/fuzz/DocumentCorpusMain.cpp writes: clients
/// with Qt 6 read the same, and lose nothing when they write it again.
namespace document_corpus_test {
namespace {

using namespace tandry::test;

QByteArray Read(QString const& text)
{
    QDateTime date;
    auto const links = sync::config::ReadFileLinks(text, date);
    return Describe(sync::config::ReadNameValues(text), links, date);
}

/// Texts that the library does not write, and that Qt 6 reads otherwise by itself: references to characters beyond 16
/// bits, which Qt 5 cuts off, and times without minutes, with more than milliseconds, or with something behind them.
bool IsReadOtherwise(QString const& text)
{
    static QStringList const texts{
        "<r FileDate=\"2020-01-02T03:04:05\"><a>&#65;&#x42;&#x1F4C4;</a><b>2</b></r>"_q,
        "<r FileDate='2020-01-02T03:04:05'><a FileId='1' Path=\"&#65;&#x42;&#x1F4C4;\" RefId='r'/><b>2</b></r>"_q,
        "<r FileDate=\"2020-01-02T03:04:05\"><a>a&#x110000;b</a><b>2</b></r>"_q,
        "<r FileDate='2020-01-02T03:04:05'><a FileId='1' Path=\"a&#x110000;b\" RefId='r'/><b>2</b></r>"_q,
        "<r FileDate='2020-01-02T03'/>"_q,
        "<r FileDate='2020-01-02T03.5'/>"_q,
        "<r FileDate='2020-01-02T03:04:05.9999'/>"_q,
        "<r FileDate='2020-01-02T03:04:05 '/>"_q,
        "<r FileDate='2020-01-02T03:04:05 Z'/>"_q,
        "<r FileDate='2020-01-02T03:04:05x'/>"_q};
    return QT_VERSION_MAJOR != 5 && texts.contains(text);
}

TEST(DocumentCorpus, IsReadAsQt5ReadsIt)
{
    QFile file(QStringLiteral(TANDRY_DOCUMENT_CORPUS));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(file.errorString());
    std::vector<CorpusDocument> const documents = FromCorpus(file.readAll());
    EXPECT_GT(documents.size(), 500);
    for (CorpusDocument const& document : documents) {
        SCOPED_TRACE(ToLiteral(document.text).constData());
        if (IsReadOtherwise(document.text))
            EXPECT_NE(Read(document.text).toStdString(), document.read.toStdString());
        else
            EXPECT_EQ(Read(document.text).toStdString(), document.read.toStdString());
    }
}

} // namespace
} // namespace document_corpus_test
