#pragma once

#include <QMetaType>
#include <QString>

namespace sync::database {

/// Why the store could not do what it was asked for.
struct StoreError
{
    /// SQLite's extended result code, also where the store itself refused.
    int code = 0;
    /// What happened, in plain words and with the file's name; never a bound value.
    QString text;
    /// The statement that failed, with its placeholders; a null text where no statement was running.
    QString statement;
};

} // namespace sync::database

Q_DECLARE_METATYPE(sync::database::StoreError)
