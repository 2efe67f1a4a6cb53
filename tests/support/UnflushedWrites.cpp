#include "support/UnflushedWrites.h"

#include "support/FolderContents.h"

#include <QFile>

namespace tandry::test {

void UnflushedWrites::Apply(QByteArray& contents, Change const& change)
{
    auto const offset = static_cast<int>(change.offset);
    if (change.truncates) {
        contents.truncate(offset);
        return;
    }
    auto const end = offset + change.bytes.size();
    if (contents.size() < end)
        contents.append(QByteArray(end - contents.size(), '\0'));
    contents.replace(offset, change.bytes.size(), change.bytes);
}

void UnflushedWrites::Opened(QByteArray const& name)
{
    std::lock_guard<std::mutex> const lock(_mutex);
    File& file = _files[name];
    if (file.isThere)
        return;
    QString const path = QFile::decodeName(name);
    bool const isNew = !QFile::exists(path);
    file = {isNew ? QByteArray() : ReadFile(path), {}, true, !isNew};
}

void UnflushedWrites::Written(QByteArray const& name, qint64 offset, QByteArray const& bytes)
{
    std::lock_guard<std::mutex> const lock(_mutex);
    _files[name].changes.push_back({offset, bytes, false, Durability::Unflushed});
}

void UnflushedWrites::Truncated(QByteArray const& name, qint64 size)
{
    std::lock_guard<std::mutex> const lock(_mutex);
    _files[name].changes.push_back({size, {}, true, Durability::Unflushed});
}

void UnflushedWrites::Flushed(QByteArray const& name)
{
    std::lock_guard<std::mutex> const lock(_mutex);
    File& file = _files[name];
    bool anyInDoubt = false;
    for (Change& change : file.changes) {
        if (change.durability == Durability::Unflushed)
            change.durability = Durability::Flushed;
        anyInDoubt = anyInDoubt || change.durability == Durability::InDoubt;
    }
    if (!anyInDoubt) {
        for (Change const& change : file.changes)
            Apply(file.flushed, change);
        file.changes.clear();
    }
    file.nameIsFlushed = true;
}

void UnflushedWrites::FlushFailed(QByteArray const& name)
{
    std::lock_guard<std::mutex> const lock(_mutex);
    for (Change& change : _files[name].changes) {
        if (change.durability == Durability::Unflushed)
            change.durability = Durability::InDoubt;
    }
}

void UnflushedWrites::Deleted(QByteArray const& name, bool flushed)
{
    std::lock_guard<std::mutex> const lock(_mutex);
    File& file = _files[name];
    file.isThere = false;
    file.nameIsFlushed = flushed;
}

void UnflushedWrites::CutPower(std::mt19937& random) const
{
    std::lock_guard<std::mutex> const lock(_mutex);
    for (auto const& [name, file] : _files) {
        QString const path = QFile::decodeName(name);
        QFile::remove(path + QStringLiteral("-shm")); // memory
        bool const isThere = file.nameIsFlushed ? file.isThere : random() % 2 == 0;
        if (!isThere) {
            QFile::remove(path);
            continue;
        }
        QByteArray contents = file.flushed;
        // None of the changes that no flush covered, all of them, the first ones, or any.
        auto const kept = random() % 4;
        auto const firstOnes = random() % (file.changes.size() + 1);
        for (std::size_t change = 0; change < file.changes.size(); ++change) {
            bool const isKept = file.changes[change].durability == Durability::Flushed || kept == 1 ||
                                (kept == 2 && change < firstOnes) || (kept == 3 && random() % 2 == 0);
            if (isKept)
                Apply(contents, file.changes[change]);
        }
        WriteFile(path, contents);
    }
}

} // namespace tandry::test
