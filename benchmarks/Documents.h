#pragma once

#include "config/DatabaseConfigurationManager.h"
#include "config/FileLinksDocument.h"

namespace sync::benchmarks {

/// Writes and reads the documents inside columns. All backends use the library's own code for it, because the
/// comparison is about access to the store.
class Documents
{
public:
    using Map = QMap<QString, QString>;

    QString Write(Map const& properties) { return _nameValues.ToNameValuePropertyString(properties); }
    Map Read(QString const& text) const { return _nameValues.ToNameValuePropertyMap(text); }

    static QString WriteLinks(QList<config::FileLink> const& links, QDateTime const& date)
    {
        return config::WriteFileLinks(links, date);
    }
    static QList<config::FileLink> ReadLinks(QString const& text, QDateTime& date)
    {
        return config::ReadFileLinks(text, date);
    }

private:
    config::DatabaseConfigurationManager _nameValues{nullptr};
};

} // namespace sync::benchmarks
