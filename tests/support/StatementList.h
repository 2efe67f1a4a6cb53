#pragma once

#include <QString>

#include <vector>

namespace tandry::test {

/// Returns the statements of tests/data/statements.txt in their order: all statements of the managers. Fails the test
/// if the file cannot be read.
std::vector<QString> ListedStatements();

} // namespace tandry::test
