#include "Program.h"

#include "CommandLine.h"
#include "Commands.h"

namespace tandryctl {

void DeclareCommands(CommandLine& commandLine)
{
    Command top = commandLine.TopLevel();
    top.Remark("The store is the file given with --store, or else in the environment variable TANDRY_STORE, or else\n"
               "tandry.db in the user's data folder. In place of a file, the URI of a profile on a server of\n"
               "PostgreSQL can be given. 'tandryctl COMMAND --help' describes a command.\n\n"
               "Exit status: 0 success; 1 nothing found, or a problem found; 2 wrong usage; 3 the store failed,\n"
               "or the output could not be written.")
        .Example("--store ~/try.db init", "create a store")
        .Example("--store ~/try.db root add ~/Documents --server-path /documents", "record a directory as a root")
        .Example("--store ~/try.db scan", "record the folders and files in it")
        .Example("--store ~/try.db tree", "print the recorded folders");
    AddStoreCommands(top);
    AddRestoreCommand(top);
    AddDoctorCommand(top);
    AddRecoverCommand(top);
    AddExportCommand(top);
    AddImportCommand(top);
    AddCopyCommand(top);
    AddBundleCommand(top);
    AddRootCommands(top);
    AddFolderCommands(top);
    AddFileCommands(top);
    AddScanCommand(top);
    AddDiffCommand(top);
    AddListCommands(top);
    AddStatusCommands(top);
    AddSqlCommand(top);
    AddWatchCommand(top);
    AddNoticesCommands(top);
    AddPathCommands(top);
    AddExplainCommand(top);
    AddServerCommands(top);
    AddAccountCommands(top);
    AddProductCommands(top);
    AddScheduleCommands(top);
    AddHelpCommand(top);
}

} // namespace tandryctl
