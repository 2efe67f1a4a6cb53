#pragma once

#include <QSettings>
#include <QString>
#include <QTemporaryDir>
#include <QVariant>

namespace tandry::test {

/// Makes `QSettings` use files in a temporary folder instead of the user's. Create it before the first settings object
/// of a test.
class TemporarySettings
{
public:
    TemporarySettings()
    {
        for (QSettings::Scope const scope : {QSettings::UserScope, QSettings::SystemScope})
            QSettings::setPath(QSettings::NativeFormat, scope, _folder.filePath(QString::number(scope)));
    }

    /// Sets the default server as the client does.
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
