#include "config/FileLink.h"

namespace sync::config {

FileLink::FileLink() = default;
FileLink::FileLink(FileLink const& other) = default;
FileLink& FileLink::operator=(FileLink const& other) = default;
FileLink::~FileLink() = default;

bool FileLink::IsValid() const
{
    return fileId != -1 || !serverFileId.isEmpty() || !path.isEmpty();
}

} // namespace sync::config
