#pragma once

namespace tandry::findings {

constexpr char const* Servers = "ServerConfiguration";
constexpr char const* Accounts = "AuthenticationConfiguration";
constexpr char const* Products = "ProductConfiguration";
constexpr char const* Folders = "FolderConfiguration";
constexpr char const* Files = "FileConfiguration";
constexpr char const* GeneratedFiles = "GeneratedFileConfiguration";
constexpr char const* BaseFiles = "BaseFileConfiguration";
constexpr char const* Schedules = "Schedules";

} // namespace tandry::findings
