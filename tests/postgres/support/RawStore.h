#pragma once

#include "postgres/support/ServerRawStore.h"

namespace tandry::test {

/// The managers' tests, compiled for PostgreSQL, find this header in place of the one for SQLite.
using RawStore = ServerRawStore;

} // namespace tandry::test
