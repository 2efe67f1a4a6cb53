#pragma once

#include "../interf/MetaTypeDeclaration.h"
#include "RecordText.h"
#include "TandryConfigurationExport.h"

#include <QMap>
#include <QObject>
#include <QString>

namespace sync::config {

/// A consumer product of a server: one row of the table `ProductConfiguration`.
///
/// A value: a copy has all members except the name-value properties, and no state of the QObject. A copy starts without
/// properties, and an assignment leaves the properties of its target unchanged.
class TANDRY_CONFIGURATION_EXPORT ProductConfiguration : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int Id READ getId)
    Q_PROPERTY(QString Name READ getName WRITE setName)
    Q_PROPERTY(QString ConsumerKey READ getConsumerKey WRITE setConsumerKey)
    Q_PROPERTY(QString ConsumerSecret READ getConsumerSecret WRITE setConsumerSecret)
    Q_PROPERTY(int ServerId READ getServerId WRITE setServerId)

public:
    ProductConfiguration();
    ProductConfiguration(ProductConfiguration const& other);
    ProductConfiguration& operator=(ProductConfiguration const& other);
    ~ProductConfiguration() override;

    /// The row's id; -1 for a record without a row. Only the manager sets it.
    int getId() const;
    /// The name to show.
    QString getName() const;
    /// The key that the server knows the product by.
    QString getConsumerKey() const;
    /// The secret that belongs to the key; stored as plain text, by `Add` only.
    QString getConsumerSecret() const;
    /// Returns the row's id, as `getId` does. The server's id can be read as the column "serverId" (`RecordColumns.h`).
    int getServerId() const;

    void setName(QString value);
    void setConsumerKey(QString value);
    void setConsumerSecret(QString value);
    /// Sets the id of the product's server, which is 0 in a new record.
    void setServerId(int value);

private:
    friend class ProductConfigManager;
    template <class Record>
    friend struct TableColumns;

    void _CopyMembers(ProductConfiguration const& other);

    int id = -1;
    QString name;
    QString consumerKey;
    QString consumerSecret;
    int serverId = 0;
    QMap<QString, QString> nameValueProperties;
};

} // namespace sync::config

TANDRY_DECLARE_METATYPE(sync::config::ProductConfiguration)
