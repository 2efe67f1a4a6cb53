#pragma once

namespace tandryctl {

class Command;

// One function for each family of commands, defined in the family's source file. It adds the commands to `top`.

void AddBundleCommand(Command& top);
void AddCopyCommand(Command& top);
void AddDiffCommand(Command& top);
void AddExplainCommand(Command& top);
void AddExportCommand(Command& top);
void AddHelpCommand(Command& top);
void AddImportCommand(Command& top);
void AddStoreCommands(Command& top);
void AddDoctorCommand(Command& top);
void AddRecoverCommand(Command& top);
void AddRestoreCommand(Command& top);
void AddRootCommands(Command& top);
void AddFolderCommands(Command& top);
void AddFileCommands(Command& top);
void AddScanCommand(Command& top);
void AddListCommands(Command& top);
void AddNoticesCommands(Command& top);
void AddPathCommands(Command& top);
void AddServerCommands(Command& top);
void AddAccountCommands(Command& top);
void AddProductCommands(Command& top);
void AddScheduleCommands(Command& top);
void AddStatusCommands(Command& top);
void AddSqlCommand(Command& top);
void AddWatchCommand(Command& top);

/// Adds `move` to the commands of roots.
void AddRootMoveCommand(Command& roots);

} // namespace tandryctl
