#include "tools/viewer/DetailsText.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QLocale>
#include <QVariant>

namespace tandry::viewer {

using findings::Explanation;
using findings::ExplanationPart;
using findings::Fact;
using findings::Finding;
using findings::FoundRow;
using findings::Severity;

namespace {

/// Puts the rich text together.
class Writer
{
    Q_DECLARE_TR_FUNCTIONS(tandry::viewer::DetailsText)

public:
    void WriteConclusion(Explanation const& explanation)
    {
        _html += QStringLiteral("<h3>%1</h3><p><b>%2</b></p>")
                     .arg(explanation.path.toHtmlEscaped(), explanation.Conclusion().toHtmlEscaped());
    }

    void WriteFindings(std::vector<Finding> const& findings)
    {
        for (Finding const& finding : findings) {
            QString const heading = finding.kind->severity == Severity::Fault ? tr("Fault") : tr("Note");
            _html += QStringLiteral("<p><b>%1:</b> %2").arg(heading, Escaped(finding.kind->meaning));
            for (FoundRow const& row : finding.rows) {
                if (!row.detail.isEmpty())
                    _html += QStringLiteral(" (%1)").arg(row.detail.toHtmlEscaped());
            }
            QString const remedy = finding.kind->isFixable
                                       ? tr("'tandryctl doctor --fix' does this: %1").arg(Text(finding.kind->remedy))
                                       : Text(finding.kind->remedy);
            _html += QStringLiteral("<br>%1</p>").arg(remedy.toHtmlEscaped());
        }
    }

    void WriteFailedSearch()
    {
        _html += QStringLiteral("<p>%1</p>").arg(tr("The store could not be searched for faults.").toHtmlEscaped());
    }

    void WritePart(ExplanationPart const& part)
    {
        _html += QStringLiteral("<h4>%1</h4><table cellspacing=\"2\">").arg(part.title.toHtmlEscaped());
        for (Fact const& fact : part.facts)
            _html += QStringLiteral("<tr><td>%1&nbsp;&nbsp;</td><td>%2</td></tr>")
                         .arg(fact.name.toHtmlEscaped(), ValueOf(fact).toHtmlEscaped());
        _html += QStringLiteral("</table>");
    }

    QString html() const { return _html; }

private:
    static QString Text(char const* text) { return QString::fromUtf8(text); }
    static QString Escaped(char const* text) { return Text(text).toHtmlEscaped(); }

    static QString ValueOf(Fact const& fact)
    {
        if (!fact.words.isNull())
            return fact.words;
        switch (fact.value.userType()) {
        case QMetaType::Bool:
            return fact.value.toBool() ? tr("yes") : tr("no");
        case QMetaType::QDateTime:
            return QLocale().toString(fact.value.toDateTime().toLocalTime(), QLocale::LongFormat);
        case QMetaType::LongLong:
            return QLocale().toString(fact.value.toLongLong());
        default:
            return fact.value.toString();
        }
    }

    QString _html;
};

} // namespace

QString DetailsText(Explanation const& explanation, std::optional<std::vector<Finding>> const& findings)
{
    Writer writer;
    writer.WriteConclusion(explanation);
    if (findings)
        writer.WriteFindings(*findings);
    else
        writer.WriteFailedSearch();
    for (ExplanationPart const& part : explanation.parts)
        writer.WritePart(part);
    return writer.html();
}

} // namespace tandry::viewer
