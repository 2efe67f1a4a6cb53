#pragma once

#include <QString>

#include <vector>

namespace tandry::test {

/// The statements of tests/data/statements.txt, in the file's order: all that the managers ever say to their store.
/// Fails the test when the file can't be read.
std::vector<QString> ListedStatements();

} // namespace tandry::test
