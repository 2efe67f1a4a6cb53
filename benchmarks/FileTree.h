#pragma once

#include "database/SqliteDatabaseFactory.h"

#include <QString>

#include <initializer_list>
#include <memory>
#include <utility>

/// A store with many files for the measurements with windows.
namespace sync::benchmarks {

/// Opens a store, or ends the program.
std::shared_ptr<sync::database::SqliteDatabaseFactory> Open(QString const& path);

/// Runs a statement with these values of its placeholders, or ends the program.
void Run(sync::database::SqliteDatabaseFactory& store,
         QString const& statement,
         std::initializer_list<std::pair<char const*, int>> values);

/// Creates a store with one root, "/home/ada/Documents", in which folders hold a thousand files each.
void Fill(QString const& path, int files);

} // namespace sync::benchmarks
