#pragma once

#include <QString>

namespace sync::config {

/// The user's setting that `ServerConfigManager::GetDefaultServerConfig` reads: the id of a server, 1 if it is missing.
/// The libraries never write it. A client that lets the user choose the default server does, with
///
///     QSettings settings(QSettings::UserScope, DefaultServerSetting::Organization, DefaultServerSetting::Application);
///     settings.setValue(DefaultServerSetting::Key, server.getId());
struct DefaultServerSetting
{
    /// The organization of the settings.
    static constexpr QLatin1String Organization{"Norvalis"};
    /// The application of the settings.
    static constexpr QLatin1String Application{"Norvalis Sync"};
    /// The key of the setting, with its group.
    static constexpr QLatin1String Key{"Tandry/DefaultServerConfigurationId"};
};

} // namespace sync::config
