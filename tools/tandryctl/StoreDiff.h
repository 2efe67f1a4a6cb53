#pragma once

#include "ExitStatus.h"

#include <QString>

namespace tandryctl {

class Session;

/// Prints in which records another store differs from the open one. Reads private copies of both, so that no writer has
/// to wait; memory does not grow with the number of differences. Throws if a store fails.
ExitStatus DiffStores(Session& session, QString const& otherStore);

} // namespace tandryctl
