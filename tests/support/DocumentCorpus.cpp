#include "support/DocumentCorpus.h"

namespace tandry::test {

using sync::config::FileLink;

namespace {

constexpr char const* TextLine = "text ";

QString FromLiteral(QByteArray const& literal)
{
    QString text;
    for (int i = 1; i < literal.size() - 1; ++i) {
        if (literal[i] != '\\') {
            text += QLatin1Char(literal[i]);
        }
        else if (literal[++i] == 'u') {
            text += QChar(literal.mid(i + 1, 4).toUShort(nullptr, 16));
            i += 4;
        }
        else {
            text += QLatin1Char(literal[i]);
        }
    }
    return text;
}

} // namespace

QByteArray ToLiteral(QString const& text)
{
    if (text.isNull())
        return "null";
    QByteArray literal("\"");
    for (QChar const unit : text) {
        if (unit == QLatin1Char('"') || unit == QLatin1Char('\\'))
            literal += '\\';
        if (unit >= QLatin1Char(' ') && unit <= QLatin1Char('~'))
            literal += unit.toLatin1();
        else
            literal += "\\u" + QByteArray::number(unit.unicode(), 16).rightJustified(4, '0');
    }
    return literal + '"';
}

QByteArray Describe(QMap<QString, QString> const& properties, QList<FileLink> const& links, QDateTime const& date)
{
    QByteArray lines;
    for (auto entry = properties.cbegin(); entry != properties.cend(); ++entry)
        lines += "property " + ToLiteral(entry.key()) + ' ' + ToLiteral(entry.value()) + '\n';
    lines += "date " + (date.isValid() ? date.toString(Qt::ISODateWithMs).toLatin1() : QByteArray("invalid")) +
             (date.timeSpec() == Qt::UTC ? " UTC\n" : " not UTC\n");
    for (FileLink const& link : links)
        lines += "link " + QByteArray::number(link.fileId) + ' ' + ToLiteral(link.refId) + ' ' +
                 ToLiteral(link.serverFileId) + ' ' + ToLiteral(link.path) + '\n';
    return lines;
}

QByteArray ToCorpus(std::vector<CorpusDocument> const& documents)
{
    QByteArray corpus;
    for (CorpusDocument const& document : documents)
        corpus += TextLine + ToLiteral(document.text) + '\n' + document.read;
    return corpus;
}

std::vector<CorpusDocument> FromCorpus(QByteArray const& corpus)
{
    std::vector<CorpusDocument> documents;
    for (QByteArray const& line : corpus.split('\n')) {
        if (line.startsWith(TextLine))
            documents.push_back({FromLiteral(line.mid(static_cast<int>(qstrlen(TextLine)))), {}});
        else if (!line.isEmpty() && !documents.empty())
            documents.back().read += line + '\n';
    }
    return documents;
}

} // namespace tandry::test
