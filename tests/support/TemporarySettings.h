#pragma once

#include <QSettings>
#include <QString>
#include <QTemporaryDir>
#include <QVariant>

namespace tandry::test {

/// Keeps `QSettings` away from the user's own files: they lie in a temporary folder from here on. Made ahead of the
/// first settings object of a case.
class TemporarySettings
{
public:
    TemporarySettings()
    {
        for (QSettings::Scope const scope : {QSettings::UserScope, QSettings::SystemScope})
            QSettings::setPath(QSettings::NativeFormat, scope, _folder.filePath(QString::number(scope)));
    }

    /// Sets the default server as the client would.
    void SetDefaultServer(QVariant const& value)
    {
        QSettings settings(QSettings::UserScope, QStringLiteral("Norvalis"), QStringLiteral("Norvalis Sync"));
        settings.setValue(QStringLiteral("Tandry/DefaultServerConfigurationId"), value);
    }

    QString Folder() const { return _folder.path(); }

private:
    QTemporaryDir _folder;
};

} // namespace tandry::test
