#pragma once

#include "config/TandryConfigurationExport.h"

#include <QMap>
#include <QObject>
#include <QString>

namespace sync::config {

/// A consumer product of a server: one row of the table `ProductConfiguration`.
///
/// A value: copies carry all members but the name-value properties, and nothing of the QObject. A copy starts without
/// properties, and a record that is assigned to keeps its own.
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

    /// Row id, -1 for a record without a row. Only the manager gives it.
    int getId() const;
    QString getName() const;
    QString getConsumerKey() const;
    QString getConsumerSecret() const;
    /// The row id, as `getId` gives it. The server that was set shows in the store's row only.
    int getServerId() const;

    void setName(QString value);
    void setConsumerKey(QString value);
    void setConsumerSecret(QString value);
    /// The server that the product belongs to; 0 until set.
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
