#pragma once

#include <QString>
#include <QStringList>

namespace tandry::viewer {

/// What the command line of tandry-viewer asks for. Options have the names that tandryctl's have.
struct CommandLine
{
    enum class Request
    {
        ShowStore,
        PrintHelp,
        PrintVersion,
        /// The command line is wrong, as `fault` says.
        Refuse
    };

    /// Reads the arguments behind the program's name.
    explicit CommandLine(QStringList const& arguments);

    Request request = Request::ShowStore;
    /// The store to show: the one that is named, or that of the environment variable TANDRY_STORE, or the user's own.
    QString storePath;
    QString fault;
};

/// Returns what --help prints.
QString HelpText();

} // namespace tandry::viewer
