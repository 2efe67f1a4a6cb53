#pragma once

#include "Output.h"

#include "config/AuthenticationConfiguration.h"
#include "config/FolderConfiguration.h"
#include "config/ProductConfiguration.h"
#include "config/ServerConfiguration.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <optional>

namespace tandryctl {

class Session;

/// The record with this id. All throw when there is none, with the command that lists what there is.

sync::config::FolderConfiguration FindFolder(Session& session, int id);
sync::config::FolderConfiguration FindRoot(Session& session, int id);
sync::config::AuthenticationConfiguration FindAccount(Session& session, int id);
sync::config::ServerConfiguration FindServer(Session& session, int id);
sync::config::ProductConfiguration FindProduct(Session& session, int id);

/// The roots, or the one with this id; throws when there are none.
QVector<sync::config::FolderConfiguration> FindRoots(Session& session, std::optional<int> id);

/// The roots that a test picks, each with its id, for the question ahead of a removal.
QStringList NamesOfRoots(Session& session, std::function<bool(sync::config::FolderConfiguration const&)> const& picks);

/// For people: "domain\user" or the user alone, and a server's alias or else its URL.
QString NameOf(sync::config::AuthenticationConfiguration const& account);
QString NameOf(sync::config::ServerConfiguration const& server);

/// "root 3 '/home/me/docs'".
QString Titled(char const* kind, int id, QString const& name);

/// The account and the server behind a folder, for where one record is shown whole; NULL where there is none.
QVector<Extra> AccountAndServerOf(Session& session, sync::config::FolderConfiguration const& folder);

} // namespace tandryctl
