#pragma once

#include "benchmarks/SampleStore.h"

#include <QTemporaryDir>

#include <map>
#include <vector>

namespace sync::benchmarks {

/// Samples in a file, and a copied file for each backend.
class SqliteSampleStore final : public SampleStore
{
public:
    /// A table or an index.
    struct Part
    {
        QString name;
        /// The table that an index belongs to, or the table itself.
        QString table;
        /// In the store's file.
        qint64 bytes = 0;

        bool isIndex() const { return name != table; }
    };

    /// Makes and fills the store in a new folder below `directory`. Times of durable writes need a real disk there.
    SqliteSampleStore(QString const& directory, SampleRecords const& records);

    QString path() const;
    std::vector<Part> Parts() const;

    qint64 bytes() const override;
    qint64 BytesOf(QString const& table) const override;
    QString CopyFor(BackendKind kind) override;
    void RemoveCopies() override;
    QStringList Copies(int count) override;

private:
    QString _Copy(QString const& name) const;

    QTemporaryDir _directory;
    std::map<BackendKind, QString> _copies;
};

} // namespace sync::benchmarks
