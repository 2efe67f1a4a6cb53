#pragma once

#include "config/TandryConfigurationExport.h"

#include <QMap>
#include <QObject>
#include <QString>

namespace sync::config {

/// A server that the client synchronises with: one row of the table `ServerConfiguration`.
///
/// A value: copies carry all members and nothing of the QObject. Its name-value properties travel with the record
/// between client and store and are nobody else's to read; a record that is assigned to itself loses them.
class TANDRY_CONFIGURATION_EXPORT ServerConfiguration : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int Id READ getId)
    Q_PROPERTY(QString Alias READ getAlias WRITE setAlias)
    Q_PROPERTY(QString DavUrl READ getDavUrl WRITE setDavUrl)
    Q_PROPERTY(QString WebServiceUrl READ getWebServiceUrl WRITE setWebServiceUrl)
    Q_PROPERTY(QString BinaryDiffEncoder READ getBinaryDiffEncoder WRITE setBinaryDiffEncoder)

public:
    ServerConfiguration();
    ServerConfiguration(ServerConfiguration const& other);
    ServerConfiguration& operator=(ServerConfiguration const& other);
    ~ServerConfiguration() override;

    /// Row id, -1 for a record without a row.
    int getId() const;
    /// The name to show: the alias that was set or, where that is empty, the web service URL's authority up to its
    /// first dot, user information and port included. Empty when there is neither.
    QString getAlias() const;
    QString getDavUrl() const;
    QString getWebServiceUrl() const;
    /// In the client's own terms.
    QString getBinaryDiffEncoder() const;

    void setId(int value);
    void setAlias(QString value);
    /// Keeps a trailing slash.
    void setDavUrl(QString value);
    /// Keeps a trailing slash.
    void setWebServiceUrl(QString value);
    void setBinaryDiffEncoder(QString value);

private:
    friend class ServerConfigManager;
    template <class Record>
    friend struct TableColumns;

    void _CopyMembers(ServerConfiguration const& other);
    QString _GetHost(QString url) const;

    int id = -1;
    QString alias;
    QString davUrl;
    QString webServiceUrl;
    QString binaryDiffEncoder;
    QMap<QString, QString> nameValueProperties;
};

} // namespace sync::config
