#pragma once

namespace tandryctl {

class Command;

/// Adds the command to `top`.
void AddSqlCommand(Command& top);

} // namespace tandryctl
