#include "DirectoryListing.h"

#include "Text.h"

#include <QByteArray>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>

namespace tandryctl {

namespace filesystem = std::filesystem;

namespace {

QString Reason(std::error_code const& error)
{
    return QString::fromStdString(error.message());
}

qint64 Milliseconds(struct statx_timestamp const& time)
{
    return qint64(time.tv_sec) * 1000 + time.tv_nsec / 1'000'000;
}

FileOnDisk DescribeFile(QString const& name, struct statx const& facts)
{
    FileOnDisk file;
    file.name = name;
    file.size = static_cast<qint64>(facts.stx_size);
    file.modifiedMsec = Milliseconds(facts.stx_mtime);
    qint64 const createdMsec = Milliseconds(facts.stx_btime);
    if ((facts.stx_mask & STATX_BTIME) != 0 && createdMsec != 0) // some layered file systems report 0 as known
        file.createdMsec = createdMsec;
    return file;
}

QString EntryName(std::string const& bytes)
{
    return QuotedBytes(QByteArray::fromStdString(bytes));
}

class Reader
{
public:
    explicit Reader(QString const& path)
        : _path(path.toUtf8().toStdString())
    {}

    DirectoryListing Read()
    {
        std::error_code error;
        filesystem::directory_iterator entry(_path, error);
        for (; !error && entry != filesystem::directory_iterator(); entry.increment(error))
            _AddEntry(entry->path().native(), entry->path().filename().native());
        if (error)
            _AddFailure(_path,
                        QStringLiteral("the directory %1 cannot be read: %2").arg(EntryName(_path), Reason(error)));

        _listing.directories.sort();
        std::sort(_listing.files.begin(), _listing.files.end(), [](FileOnDisk const& left, FileOnDisk const& right) {
            return left.name < right.name;
        });
        return std::move(_listing);
    }

private:
    void _AddEntry(std::string const& path, std::string const& bytes)
    {
        struct statx facts = {};
        unsigned const wanted = STATX_TYPE | STATX_SIZE | STATX_MTIME | STATX_BTIME;
        if (::statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, wanted, &facts) != 0) {
            std::error_code const error(errno, std::generic_category());
            if (error != std::errc::no_such_file_or_directory) // removed since it was listed
                _AddFailure(path, QStringLiteral("%1 cannot be examined: %2").arg(EntryName(path), Reason(error)));
            return;
        }

        bool const isDirectory = S_ISDIR(facts.stx_mode);
        bool const isLink = S_ISLNK(facts.stx_mode);
        if (!isDirectory && !isLink && !S_ISREG(facts.stx_mode)) {
            ++_listing.specialFiles;
            return;
        }
        if (isLink && !_LeadsToFile(path))
            return;

        std::optional<QString> const name = DecodeUtf8(QByteArray::fromStdString(bytes));
        if (!name) {
            _AddProblem(path,
                        QStringLiteral("%1 is left out: its name is not valid UTF-8").arg(EntryName(path)),
                        QStringLiteral("rename it, then scan again"));
        }
        else if (isDirectory) {
            _listing.directories.append(*name);
        }
        else {
            FileOnDisk file = DescribeFile(*name, facts);
            if (!isLink || _ReadLink(path, file.linkTarget))
                _listing.files.push_back(std::move(file));
        }
    }

    /// Returns whether the link leads to a regular file; counts it otherwise.
    bool _LeadsToFile(std::string const& path)
    {
        std::error_code error;
        filesystem::file_status const target = filesystem::status(path, error);
        switch (target.type()) {
        case filesystem::file_type::regular:
            return true;
        case filesystem::file_type::directory:
            ++_listing.linksToDirectories;
            return false;
        case filesystem::file_type::none:
        case filesystem::file_type::not_found:
            ++_listing.brokenLinks;
            return false;
        default:
            ++_listing.specialFiles;
            return false;
        }
    }

    bool _ReadLink(std::string const& path, QString& target)
    {
        std::error_code error;
        std::string const bytes = filesystem::read_symlink(path, error).native();
        std::optional<QString> const text = DecodeUtf8(QByteArray::fromStdString(bytes));
        if (!error && text) {
            target = *text;
            return true;
        }
        _AddProblem(path,
                    error ? QStringLiteral("the link %1 cannot be read: %2").arg(EntryName(path), Reason(error))
                          : QStringLiteral("%1 is left out: its target %2 is not valid UTF-8")
                                .arg(EntryName(path), EntryName(bytes)),
                    QStringLiteral("make the link anew, then scan again"));
        return false;
    }

    void _AddProblem(std::string const& path, QString const& message, QString const& hint)
    {
        _listing.problems.append({QString::fromStdString(path), message, hint});
    }

    /// Adds a problem with something that the directory may contain.
    void _AddFailure(std::string const& path, QString const& message)
    {
        _AddProblem(path, message, QStringLiteral("see that it can be read, then scan again"));
        _listing.complete = false;
    }

    std::string const _path;
    DirectoryListing _listing;
};

} // namespace

DirectoryListing ListDirectory(QString const& path)
{
    return Reader(path).Read();
}

} // namespace tandryctl
