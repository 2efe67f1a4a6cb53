#pragma once

#include <QString>

#include <string>
#include <vector>

namespace tandry::test {

/// Returns the statements of tests/data/statements.txt in their order: all statements of the managers. Fails the test
/// if the file cannot be read.
std::vector<QString> ListedStatements();

/// Returns the one listed statement that begins and ends with these texts. Fails the test if it is not exactly one.
QString ListedStatement(std::string const& beginning, std::string const& end);

} // namespace tandry::test
