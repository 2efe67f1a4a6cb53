#pragma once

#include "interf/IDatabaseFactory.h"

#include <QString>

#include <memory>

namespace tandry::test {

/// Opens a store that breaks the rule with this name, to show that the suite detects it; with an unknown name, a store
/// that breaks none. `path` is the file of the correct store behind it.
std::shared_ptr<sync::interf::factory::IDatabaseFactory> OpenFaultyStore(QString const& path, QString const& fault);

} // namespace tandry::test
