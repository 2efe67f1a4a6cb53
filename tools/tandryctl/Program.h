#pragma once

namespace tandryctl {

class CommandLine;

/// Declares all commands of the program.
void DeclareCommands(CommandLine& commandLine);

} // namespace tandryctl
