#pragma once

#include "benchmarks/Contestant.h"
#include "benchmarks/SampleRecords.h"

#include <QString>
#include <QTemporaryDir>

#include <map>

namespace sync::benchmarks {

/// A store made by the library and filled with samples, and a copy of it for each entrant.
class SampleStore
{
public:
    /// Makes and fills the store; below `directory`, which has to be on a real disk for durable writes to mean
    /// anything.
    SampleStore(QString const& directory, SampleRecords const& records);

    SampleRecords const& records() const { return _records; }
    QString path() const;
    /// Of the store's file.
    qint64 bytes() const;

    /// The entrant's own copy, made at the first call and after `Renew`.
    QString CopyFor(Entrant entrant);
    /// Takes the copies away. Nobody may have them open.
    void Renew();

private:
    QTemporaryDir _directory;
    SampleRecords _records;
    std::map<Entrant, QString> _copies;
};

} // namespace sync::benchmarks
