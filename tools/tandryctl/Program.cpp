#include "Program.h"

#include "CommandLine.h"
#include "Commands.h"

namespace tandryctl {

void DeclareCommands(CommandLine& commandLine)
{
    Command top = commandLine.Top();
    top.Remark("The store is the file that --store names, or else the environment variable TANDRY_STORE, or else\n"
               "tandry.db in the user's data folder. 'tandryctl COMMAND --help' tells more about a command.\n\n"
               "Exit status: 0 done; 1 nothing found, or something wrong was found; 2 wrong usage; 3 the store failed.")
        .Example("--store ~/try.db init", "make a store")
        .Example("--store ~/try.db root add ~/Documents --server-path /documents", "record a directory as a root")
        .Example("--store ~/try.db scan", "record what is in it")
        .Example("--store ~/try.db tree", "print the folders back");
    AddStoreCommands(top);
    AddRootCommands(top);
    AddFolderCommands(top);
    AddFileCommands(top);
    AddScanCommand(top);
    AddListCommands(top);
    AddPathCommands(top);
    AddServerCommands(top);
    AddAccountCommands(top);
    AddProductCommands(top);
    AddScheduleCommands(top);
}

} // namespace tandryctl
