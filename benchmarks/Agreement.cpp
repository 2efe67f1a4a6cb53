#include "benchmarks/Agreement.h"

#include "benchmarks/Failure.h"
#include "benchmarks/RecordColumns.h"

#include <QStringList>
#include <QVariant>

namespace sync::benchmarks {

namespace {

/// Takes a record's columns as text.
struct Columns
{
    template <class Value>
    void Bind(QString const& placeholder, Value const& value)
    {
        texts.append(placeholder + QLatin1Char('=') + QVariant(value).toString());
    }

    QStringList texts;
};

template <class Record>
QStringList ColumnsOf(Record const& record)
{
    Documents documents;
    Columns columns;
    Bind(columns, record, documents);
    return columns.texts;
}

QStringList ReadBy(Entrant entrant, SampleStore& store)
{
    constexpr int samples = 20;
    auto const contestant = Enter(entrant, store.CopyFor(entrant));
    QStringList texts;
    for (int choice = 0; choice < samples; ++choice) {
        texts += ColumnsOf(contestant->FolderById(1 + Scattered(choice, store.records().folderCount())));
        if (store.records().fileCount() > 0)
            texts += ColumnsOf(contestant->FileById(1 + Scattered(choice, store.records().fileCount())));
    }
    return texts;
}

} // namespace

void RequireAgreement(SampleStore& store)
{
    QStringList const expected = ReadBy(Entrant::Managers, store);
    for (Entrant const entrant : Entrants) {
        QStringList const texts = ReadBy(entrant, store);
        for (int i = 0; i < expected.size(); ++i)
            if (texts.value(i) != expected[i])
                Fail(QStringLiteral("%1 reads \"%2\" where the managers read \"%3\"")
                         .arg(NameOf(entrant), texts.value(i), expected[i]));
    }
}

} // namespace sync::benchmarks
