#include "tools/viewer/DetailsText.h"

#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <QRegularExpression>
#include <QTextDocument>

#include <algorithm>

namespace {

using namespace tandry::test;
using tandry::findings::Explanation;
using tandry::findings::Finding;
using tandry::findings::FindingKinds;
using tandry::viewer::DetailsText;

QString PlainText(QString const& html)
{
    QTextDocument document;
    document.setHtml(html);
    return document.toPlainText();
}

Explanation ExplanationOf(QString const& path)
{
    Explanation explanation;
    explanation.path = path;
    explanation.parts.push_back(
        {"record", "File 7"_q, {{"name"_q, path, {}}, {"syncStatus"_q, 2, "2 not synced"_q}, {"inside"_q, true, {}}}});
    explanation.hindrances.push_back({"missing", "it is missing on disk"_q});
    return explanation;
}

Finding FindingOf(char const* code, QString const& detail)
{
    auto const kind = std::find_if(FindingKinds().begin(), FindingKinds().end(), [code](auto const& candidate) {
        return qstrcmp(candidate.code, code) == 0;
    });
    return {&*kind, {{"FileConfiguration"_q, 7, "/p/a"_q, detail}}};
}

TEST(DetailsTextOfARecord, HasConclusionFindingsAndFacts)
{
    QString const text = PlainText(DetailsText(
        ExplanationOf("/p/a"_q),
        std::vector<Finding>{FindingOf("file-without-root", "rootFolderId 99"_q), FindingOf("path-relative", {})}));
    for (QString const& wanted : {"/p/a"_q,
                                  "Not in sync: it is missing on disk."_q,
                                  "Fault: No root owns these files"_q,
                                  "(rootFolderId 99)"_q,
                                  "'tandryctl doctor --fix' does this: Assigns each file"_q,
                                  "Fault: These paths do not tell"_q,
                                  "Not fixed, since"_q,
                                  "File 7"_q,
                                  "2 not synced"_q,
                                  "yes"_q})
        EXPECT_TRUE(text.contains(wanted)) << wanted.toStdString() << " is not in\n" << text.toStdString();
}

TEST(DetailsTextOfARecord, SaysThatFindingsCouldNotBeLookedFor)
{
    EXPECT_TRUE(PlainText(DetailsText(ExplanationOf("/p/a"_q), std::nullopt)).contains("could not be searched"_q));
}

TEST(DetailsTextOfARecord, TakesNothingOfTheStoreForMarkup)
{
    QString const name = "/p/<b>a</b>&amp;<img src='x'>"_q;
    Explanation explanation = ExplanationOf(name);
    explanation.hindrances.front().text = name;
    explanation.parts.front().title = name;
    explanation.parts.front().facts.push_back({name, name, name});
    QString const text = PlainText(DetailsText(explanation, std::vector<Finding>{FindingOf("twin", name)}));
    EXPECT_EQ(text.count(name), 7) << text.toStdString();
}

TEST(DetailsTextOfARecord, LeavesColoursToThePalette)
{
    QString const html = DetailsText(ExplanationOf("/p/a"_q), std::vector<Finding>{FindingOf("twin", "x"_q)});
    EXPECT_FALSE(html.contains(QRegularExpression("color|#[0-9a-fA-F]{3}"_q))) << html.toStdString();
}

} // namespace
