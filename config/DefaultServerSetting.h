#pragma once

#include <QString>

namespace sync::config {

namespace setting {

/// Returns a literal, whose length Qt 5 counts in a way that only some compilers do at compile time.
template <int Size>
constexpr QLatin1String Literal(char const (&text)[Size])
{
    return QLatin1String(text, Size - 1);
}

} // namespace setting

/// The user's setting that `ServerConfigManager::GetDefaultServerConfig` reads: the id of a server, 1 if it is missing.
/// The libraries never write it. A client that lets the user choose the default server does, with
///
///     QSettings settings(QSettings::UserScope, DefaultServerSetting::Organization, DefaultServerSetting::Application);
///     settings.setValue(DefaultServerSetting::Key, server.getId());
struct DefaultServerSetting
{
    /// The organization of the settings.
    static constexpr QLatin1String Organization = setting::Literal("Norvalis");
    /// The application of the settings.
    static constexpr QLatin1String Application = setting::Literal("Norvalis Sync");
    /// The key of the setting, with its group.
    static constexpr QLatin1String Key = setting::Literal("Tandry/DefaultServerConfigurationId");
};

} // namespace sync::config
