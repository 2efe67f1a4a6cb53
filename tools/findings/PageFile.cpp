#include "tools/findings/PageFile.h"

#include "tools/findings/BtreePage.h"
#include "tools/findings/ByteOrder.h"
#include "tools/findings/PageSize.h"

#include <QFileInfo>

#include <algorithm>

namespace tandry::findings {

namespace {

constexpr int HeaderSize = 100;
/// How much of a file is looked at to find out the size of its pages.
constexpr qint64 SampleBytes = qint64(64) * 1024 * 1024;

/// The size that most stores have comes first: it wins a tie.
constexpr int PageSizes[] = {4096, 1024, 8192, 2048, 16384, 32768, 65536, 512};

QByteArray BytesAt(QFile& file, qint64 offset, int size)
{
    QByteArray bytes;
    if (file.seek(offset))
        bytes = file.read(size);
    bytes.append(QByteArray(size - bytes.size(), '\0'));
    return bytes;
}

bool IsHeader(QByteArray const& bytes)
{
    quint32 const size = BigEndianAt<quint16>(bytes, 16);
    int const reserved = static_cast<quint8>(bytes.at(20));
    return bytes.startsWith(QByteArray("SQLite format 3\0", 16)) && IsPageSize(size == 1 ? LargestPageSize : size) &&
           reserved <= 32 && bytes.mid(21, 3) == QByteArray("\x40\x20\x20");
}

} // namespace

std::unique_ptr<PageFile> PageFile::Open(QString const& path, QString& error)
{
    QFileInfo const info(path);
    if (!info.exists()) {
        error = QStringLiteral("there is no file of this name");
        return nullptr;
    }
    if (!info.isFile()) {
        error = QStringLiteral("this is not a file");
        return nullptr;
    }
    // SQLite puts log and journal beside the file that a symbolic link leads to.
    std::unique_ptr<PageFile> file(new PageFile(info.canonicalFilePath()));
    if (!file->_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        error = file->_file.errorString();
        return nullptr;
    }
    file->_ReadHeader();
    if (file->_pageSize == 0) {
        error = QStringLiteral("no page of a store was found in it");
        return nullptr;
    }
    return file;
}

PageFile::PageFile(QString const& path)
    : _file(path)
    , _journalFile(path + QStringLiteral("-journal"))
    , _logFile(path + QStringLiteral("-wal"))
    , _journal(_journalFile.fileName())
    , _log(_logFile.fileName())
{
    if (_journal.isHot() && !_journalFile.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        _journal = RollbackJournal(QString());
    if (_log.isInUse() && !_logFile.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        _log = WriteAheadLog(QString());
}

void PageFile::_ReadHeader()
{
    _pageSize = HeaderSize;
    QByteArray header;
    if (_log.isInUse() || _journal.isHot()) {
        _pageSize = _log.isInUse() ? _log.pageSize() : _journal.pageSize();
        header = Page(1);
    }
    else {
        header = BytesAt(_file, 0, HeaderSize);
    }
    _hasHeader = IsHeader(header);
    if (!_log.isInUse() && !_journal.isHot()) {
        _pageSize = BigEndianAt<quint16>(header, 16);
        if (_pageSize == 1)
            _pageSize = LargestPageSize;
        if (!_hasHeader || _BytesThatReadAsPages(_pageSize, static_cast<quint8>(header.at(20))) == 0) {
            _hasHeader = false;
            _pageSize = _GuessPageSize();
        }
        if (_pageSize == 0)
            return;
    }
    _usableSize = _pageSize - (_hasHeader ? static_cast<quint8>(header.at(20)) : 0);

    _pageCount = _PagesInFile(_pageSize);
    bool const tellsPageCount = _hasHeader && header.mid(24, 4) == header.mid(92, 4);
    auto const told = BigEndianAt<quint32>(header, 28);
    if (_log.isInUse())
        _pageCount = _log.databasePages();
    else if (_journal.isHot())
        _pageCount = _journal.databasePages();
    else if (tellsPageCount && told > 0)
        _pageCount = std::min(told, _pageCount);
    // A number that nothing bears out must not make a loop of hours.
    auto const most = qint64(_PagesInFile(_pageSize)) + qint64(_log.pages().size()) + qint64(_journal.pages().size());
    _pageCount = static_cast<quint32>(std::min<qint64>(_pageCount, most));
}

int PageFile::_GuessPageSize() const
{
    int best = 0;
    qint64 most = 0;
    for (int const pageSize : PageSizes) {
        qint64 const bytes = _BytesThatReadAsPages(pageSize, 0);
        if (bytes > most) {
            most = bytes;
            best = pageSize;
        }
    }
    return best;
}

qint64 PageFile::_BytesThatReadAsPages(int pageSize, int reserved) const
{
    quint32 const pages = _PagesInFile(pageSize);
    auto const looked = static_cast<quint32>(std::min<qint64>(pages, SampleBytes / pageSize));
    qint64 bytes = 0;
    for (quint32 number = 1; number <= looked; ++number) {
        BtreePage const page(
            BytesAt(_file, qint64(number - 1) * pageSize, pageSize), pageSize - reserved, number, pages);
        if (page.kind() != PageKind::None && page.isWhole())
            bytes += pageSize;
    }
    return bytes;
}

quint32 PageFile::_PagesInFile(int pageSize) const
{
    constexpr qint64 MostPages = 0xfffffffe;
    return static_cast<quint32>(std::min<qint64>((_file.size() + pageSize - 1) / pageSize, MostPages));
}

QByteArray PageFile::Page(quint32 number) const
{
    if (_log.isInUse()) {
        auto const found = _log.pages().find(number);
        if (found != _log.pages().end())
            return BytesAt(_logFile, found->second, _pageSize);
    }
    if (_journal.isHot() && _journal.pageSize() == _pageSize) {
        auto const found = _journal.pages().find(number);
        if (found != _journal.pages().end())
            return BytesAt(_journalFile, found->second, _pageSize);
    }
    return BytesAt(_file, qint64(number - 1) * _pageSize, _pageSize);
}

} // namespace tandry::findings
