#pragma once

#include "interf/IDatabaseFactory.h"

#include <QString>

#include <memory>

namespace tandry::test {

/// A store that breaks one rule, to show that the suite sees it; with a name that it doesn't know, a store that breaks
/// none. `path` is the file of the good store behind it.
std::shared_ptr<sync::interf::factory::IDatabaseFactory> OpenFaultyStore(QString const& path, QString const& fault);

} // namespace tandry::test
