#include "database/file/FileNotices.h"

#include "database/sqlite/ErrorTexts.h"

#include <array>
#include <cerrno>

#include <sys/inotify.h>
#include <unistd.h>

namespace sync::database {

FileNotices::FileNotices()
    : _descriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
    , _error(_descriptor.isValid() ? 0 : errno)
{}

Failure FileNotices::Check(QString const& path) const
{
    if (_error == 0)
        return {};
    return DescribeSystemError(path, QStringLiteral("the store can't be watched"), _error);
}

bool FileNotices::Watch(QByteArray const& name, quint32 mask)
{
    int const watch = ::inotify_add_watch(_descriptor.get(), name.constData(), mask);
    if (watch < 0) {
        _error = errno;
        return false;
    }
    _watches.push_back(watch);
    return true;
}

void FileNotices::Clear()
{
    for (int const watch : _watches)
        ::inotify_rm_watch(_descriptor.get(), watch); // fails if the file has gone
    _watches.clear();
}

bool FileNotices::Take()
{
    alignas(inotify_event) std::array<char, 4096> events;
    bool hasNotice = false;
    for (;;) {
        ssize_t const size = ::read(_descriptor.get(), events.data(), events.size());
        if (size > 0)
            hasNotice = true;
        else if (size == 0 || errno != EINTR)
            return hasNotice;
    }
}

} // namespace sync::database
