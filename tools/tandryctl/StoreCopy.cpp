#include "StoreCopy.h"

#include "StoreFailure.h"
#include "Terminal.h"
#include "Text.h"

namespace tandryctl {

using sync::database::StoreError;
using sync::database::StoreErrorKind;
using tandry::findings::PrivateCopy;

std::unique_ptr<PrivateCopy> CopyPrivately(QString const& storePath, StoreErrorKind reason)
{
    StoreError error;
    std::unique_ptr<PrivateCopy> copy = PrivateCopy::Make(storePath, error);
    if (copy == nullptr)
        throw CopyFailure(error);
    PrintNote(QStringLiteral("the store %1 %2; this reads a private copy of it, and the store stays as it is")
                  .arg(Quoted(storePath),
                       reason == StoreErrorKind::NotClosed ? QStringLiteral("was not closed")
                                                           : QStringLiteral("has an older version")));
    return copy;
}

} // namespace tandryctl
