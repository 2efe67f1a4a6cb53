#pragma once

#include "tools/findings/RollbackJournal.h"
#include "tools/findings/WriteAheadLog.h"

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QtGlobal>

#include <memory>

namespace tandry::findings {

/// The pages of a store's last committed state, read past SQLite: from the file, its rollback journal and its
/// write-ahead log, none of which is changed or locked. A program that writes to the store meanwhile spoils the result.
///
/// Where the header of the file is spoilt, the size of a page comes from the log or the journal, or else is the one
/// with which most of the file reads as pages.
class PageFile
{
public:
    /// Returns null on failure; `error` then tells why.
    static std::unique_ptr<PageFile> Open(QString const& path, QString& error);

    /// In bytes.
    int pageSize() const { return _pageSize; }
    /// The size of a page without the bytes that are reserved at its end.
    int usableSize() const { return _usableSize; }
    quint32 pageCount() const { return _pageCount; }
    /// Whether the header of the file could be read.
    bool hasHeader() const { return _hasHeader; }
    /// Whether the pages come from a rollback journal, or from a log, in part.
    bool usesJournal() const { return _journal.isHot(); }
    bool usesLog() const { return _log.isInUse(); }

    /// Returns a page, numbered from 1 up. Bytes that cannot be read are zero.
    QByteArray Page(quint32 number) const;

private:
    explicit PageFile(QString const& path);
    Q_DISABLE_COPY_MOVE(PageFile)

    void _ReadHeader();
    int _GuessPageSize() const;
    qint64 _BytesThatReadAsPages(int pageSize, int reserved) const;
    quint32 _PagesInFile(int pageSize) const;

    mutable QFile _file;
    mutable QFile _journalFile;
    mutable QFile _logFile;
    RollbackJournal _journal;
    WriteAheadLog _log;
    int _pageSize = 0;
    int _usableSize = 0;
    quint32 _pageCount = 0;
    bool _hasHeader = false;
};

} // namespace tandry::findings
