#pragma once

#include "Output.h"

#include "config/AuthenticationConfiguration.h"
#include "config/FolderConfiguration.h"
#include "config/ProductConfiguration.h"
#include "config/ScheduleEntry.h"
#include "config/ServerConfiguration.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <optional>

namespace tandryctl {

class Session;

constexpr char const* HowToAddARoot = "add a root with 'tandryctl root add DIR --server-path PATH'";

// The record with this id. If there is none, these functions throw a message that names the command to list what there
// is.

sync::config::FolderConfiguration FindFolder(Session& session, int id);
sync::config::FolderConfiguration FindRoot(Session& session, int id);
sync::config::AuthenticationConfiguration FindAccount(Session& session, int id);
sync::config::ServerConfiguration FindServer(Session& session, int id);
sync::config::ProductConfiguration FindProduct(Session& session, int id);
sync::config::ScheduleEntry FindSchedule(Session& session, int id);

/// Returns all roots, or the one with this id. Throws if there is none.
QVector<sync::config::FolderConfiguration> FindRoots(Session& session, std::optional<int> id);

/// Returns all schedules in ascending order of their ids; the managers have no listing of them.
QVector<sync::config::ScheduleEntry> AllSchedules(Session& session);

/// Returns the labels of the roots that match the predicate.
QStringList LabelsOfRoots(Session& session,
                          std::function<bool(sync::config::FolderConfiguration const&)> const& predicate);

/// Returns a readable name: "domain\user" or the user name alone; a server's alias, or its URL if it has none.
QString NameOf(sync::config::AuthenticationConfiguration const& account);
QString NameOf(sync::config::ServerConfiguration const& server);

/// Returns a label for messages, such as "root 3 '/home/me/docs'".
QString Label(char const* kind, int id, QString const& name);

/// Returns the account and the server of a folder as extra lines of a shown record; NULL values if there is none.
QVector<Extra> AccountAndServerOf(Session& session, sync::config::FolderConfiguration const& folder);

} // namespace tandryctl
