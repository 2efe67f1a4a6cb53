#pragma once

namespace tandryctl {

class Command;

/// Adds the command to `top`.
void AddWatchCommand(Command& top);

} // namespace tandryctl
