#pragma once

#include "config/TandryConfigurationExport.h"

#include <QMap>
#include <QString>

#include <memory>

namespace sync::interf::factory {
class IDatabaseFactory;
}

namespace sync::config {

/// The common base of all managers: the store factory, and the document of a record's open-ended properties.
///
/// Copies share the factory. A manager keeps no state of a call, so several threads may call one as far as the store
/// allows.
class TANDRY_CONFIGURATION_EXPORT DatabaseConfigurationManager
{
public:
    /// Keeps a share of the factory and makes no call on it. The factory must not be null.
    explicit DatabaseConfigurationManager(std::shared_ptr<sync::interf::factory::IDatabaseFactory> databaseFactory);
    DatabaseConfigurationManager(DatabaseConfigurationManager const& other);
    DatabaseConfigurationManager& operator=(DatabaseConfigurationManager const& other);
    virtual ~DatabaseConfigurationManager();

    /// Returns the entries of a "NameValueXml" document; of several entries with the same name, the last one counts. A
    /// text that is no document gives an empty map, and a text that ends early gives the entries up to there.
    ///
    /// A document of another program gives an empty map as well if its elements are nested more than
    /// 1,000 levels deep, if an element has more than 100 attributes, if its document type declarations are longer than
    /// 1,024 characters, or if they declare entities. So time and memory are proportional to the text, and 350 KB of
    /// stack are enough. The next update of such a record writes the empty map over the document.
    virtual QMap<QString, QString> ToNameValuePropertyMap(QString text) const;

    /// Returns the "NameValueXml" document of a map. Keys must be XML names, and values must not contain "]]>". The
    /// function does not check either.
    virtual QString ToNameValuePropertyString(QMap<QString, QString> properties);

protected:
    std::shared_ptr<sync::interf::factory::IDatabaseFactory> _databaseFactory;
};

} // namespace sync::config
