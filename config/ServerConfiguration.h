#pragma once

#include "../interf/MetaTypeDeclaration.h"
#include "RecordText.h"
#include "TandryConfigurationExport.h"

#include <QMap>
#include <QObject>
#include <QString>

namespace sync::config {

/// A server that the client synchronises with: one row of the table `ServerConfiguration`.
///
/// A value: a copy has all members, but no state of the QObject. The name-value properties have no accessors, but a
/// column in `RecordColumns.h`. A record must not be assigned to itself, since that empties them.
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

    /// The row's id; -1 for a record without a row.
    int getId() const;
    /// The name to show: the alias that was set or, if that is empty, the authority of the web service URL up to its
    /// first dot, including user information and port. Empty if there is neither.
    QString getAlias() const;
    /// The URL for WebDAV; not checked.
    QString getDavUrl() const;
    /// The URL of the web service; not checked.
    QString getWebServiceUrl() const;
    /// The client defines the meaning of the text.
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

TANDRY_DECLARE_METATYPE(sync::config::ServerConfiguration)
