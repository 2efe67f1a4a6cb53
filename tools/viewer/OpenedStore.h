#pragma once

#include "database/OpenOptions.h"

#include <QString>
#include <QStringList>

#include <memory>

namespace sync::database {
class SqliteDatabaseFactory;
}

namespace tandry::findings {
class PrivateCopy;
}

namespace tandry::viewer {

/// A store that is open for reading, or the words for why it is not.
struct OpenedStore
{
    QString path;
    /// Null if the store could not be opened.
    std::shared_ptr<sync::database::SqliteDatabaseFactory> store;
    /// The copy that is read in the place of a store that cannot be read without changing it; else null.
    std::shared_ptr<tandry::findings::PrivateCopy> copy;
    /// What the user should know of the store: sentences.
    QStringList remarks;

    // What is wrong with a store that could not be opened: a heading, the reason, and what to do, with the command that
    // helps. All are sentences but the heading.
    QString heading;
    QString reason;
    QString advice;
};

/// Opens a store for reading, or a private copy of it. Changes no byte of the store. Any thread may call it; it takes
/// as long as the copy, or as another program holds a lock, for which it waits as long as the options say.
OpenedStore OpenForViewing(QString const& path, sync::database::OpenOptions options = {});

} // namespace tandry::viewer
