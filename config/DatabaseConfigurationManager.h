#pragma once

#include "TandryConfigurationExport.h"

#include <QMap>
#include <QString>

#include <memory>

namespace sync::interf::factory {
class IDatabaseFactory;
}

namespace sync::config {

/// The common base of all managers: the store factory, and the document of a record's open-ended properties.
///
/// Copies share the factory. A manager keeps no state between calls, so several threads may share one if the store
/// allows it.
class TANDRY_CONFIGURATION_EXPORT DatabaseConfigurationManager
{
public:
    /// Keeps a share of the factory and makes no call on it. The factory must not be null.
    explicit DatabaseConfigurationManager(std::shared_ptr<sync::interf::factory::IDatabaseFactory> databaseFactory);
    DatabaseConfigurationManager(DatabaseConfigurationManager const& other);
    DatabaseConfigurationManager& operator=(DatabaseConfigurationManager const& other);
    virtual ~DatabaseConfigurationManager();

    /// Returns the entries of a "NameValueXml" document; of several entries with the same name, the last one counts.
    /// Returns an empty map if the text is no document, and the entries before the break if it ends early.
    ///
    /// Also returns an empty map for a document that exceeds a limit: 1,000 levels of nested elements, 100 attributes
    /// of an element, or 1,024 characters of document type declarations, which must not declare entities. No document
    /// that this library writes exceeds one. With these limits time and memory are proportional to the text, and 350 KB
    /// of stack are enough. The next update of such a record overwrites the document with the empty map.
    virtual QMap<QString, QString> ToNameValuePropertyMap(QString text) const;

    /// Returns the "NameValueXml" document of a map. Keys must be XML names, and values must not contain "]]>". The
    /// function does not check either.
    virtual QString ToNameValuePropertyString(QMap<QString, QString> properties);

protected:
    /// The store. Never null.
    std::shared_ptr<sync::interf::factory::IDatabaseFactory> _databaseFactory;
};

} // namespace sync::config
