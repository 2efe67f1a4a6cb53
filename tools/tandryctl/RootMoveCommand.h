#pragma once

namespace tandryctl {

class Command;

/// Adds the command to the group "root".
void AddRootMoveCommand(Command& roots);

} // namespace tandryctl
