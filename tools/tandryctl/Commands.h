#pragma once

namespace tandryctl {

class Command;

/// The command families. Each declares its commands below the given one and writes what they do beside it.

void AddStoreCommands(Command& top);
void AddRootCommands(Command& top);
void AddFolderCommands(Command& top);
void AddFileCommands(Command& top);
void AddScanCommand(Command& top);
void AddListCommands(Command& top);
void AddPathCommands(Command& top);
void AddServerCommands(Command& top);
void AddAccountCommands(Command& top);
void AddProductCommands(Command& top);
void AddScheduleCommands(Command& top);

} // namespace tandryctl
