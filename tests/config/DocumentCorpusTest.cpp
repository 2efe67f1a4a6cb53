#include "config/FileLinksDocument.h"
#include "config/NameValueDocument.h"

#include "support/DocumentCorpus.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <QFile>

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

TEST(DocumentCorpus, IsReadAsQt5ReadsIt)
{
    QFile file(QStringLiteral(TANDRY_DOCUMENT_CORPUS));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(file.errorString());
    std::vector<CorpusDocument> const documents = FromCorpus(file.readAll());
    EXPECT_GT(documents.size(), 500);
    for (CorpusDocument const& document : documents) {
        SCOPED_TRACE(ToLiteral(document.text).constData());
        EXPECT_EQ(Read(document.text).toStdString(), document.read.toStdString());
    }
}

} // namespace
} // namespace document_corpus_test
