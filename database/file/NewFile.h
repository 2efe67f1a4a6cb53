#pragma once

#include <QByteArray>
#include <QtGlobal>

namespace sync::database {

/// What a database's name and those of the files that the engine puts beside it end in.
constexpr char const* Suffixes[] = {"", "-wal", "-shm", "-journal"};

/// A file that comes into being under another name in the same folder and gets its own when it is whole. What was not
/// put in place goes with the object, and so does what the engine put beside it.
class NewFile
{
public:
    explicit NewFile(QByteArray const& name);
    ~NewFile();
    Q_DISABLE_COPY_MOVE(NewFile)

    /// Makes the file, empty and readable and writable by its owner only. 0 or the operating system's error number, as
    /// with all operations.
    [[nodiscard]] int Make();

    /// The name that it bears until it is put in place.
    QByteArray const& temporaryName() const { return _temporary; }

    /// Flushes the file and gives it its name, unless something bears it already: EEXIST.
    [[nodiscard]] int PutInPlace() const;

    /// Flushes the file's folder, as far as its file system can: only then does the name outlast a power cut.
    [[nodiscard]] int FlushFolder() const;

private:
    QByteArray const _name;
    QByteArray _temporary;
};

} // namespace sync::database
