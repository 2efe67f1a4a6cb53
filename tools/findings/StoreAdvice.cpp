#include "tools/findings/StoreAdvice.h"

namespace tandry::findings {

using sync::database::StoreErrorKind;

QString AdviceOn(StoreErrorKind kind)
{
    switch (kind) {
    case StoreErrorKind::Locked:
        return QStringLiteral("try again when the other program has finished");
    case StoreErrorKind::Full:
        return QStringLiteral("free space there, then try again");
    case StoreErrorKind::ReadOnly:
        return QStringLiteral(
            "allow yourself to write the file and its folder, or do what the reason says, then try again");
    case StoreErrorKind::Damaged:
        return QStringLiteral("copy what can still be read to a new store with 'tandryctl recover FILE --to NEW', or "
                              "put a backup in its place with 'tandryctl restore BACKUP'");
    case StoreErrorKind::Moved:
        return QStringLiteral("see which files are there now, close the store in all programs, then try again");
    case StoreErrorKind::Refused:
        return QStringLiteral("see whether 'tandryctl check' finds damage");
    case StoreErrorKind::OutcomeUnknown:
        return QStringLiteral("free the disk of its fault, look what is on record and repeat only what is missing");
    case StoreErrorKind::OlderVersion:
        return QStringLiteral("bring it to this version with 'tandryctl init'");
    case StoreErrorKind::NewerVersion:
        return QStringLiteral("use the tandryctl of the newer program, or put an older backup in its place with "
                              "'tandryctl restore BACKUP'");
    case StoreErrorKind::NotClosed:
        return QStringLiteral("have its log read in with 'tandryctl init'");
    case StoreErrorKind::ConnectionLost:
    case StoreErrorKind::Other:
        break;
    }
    return QStringLiteral("see that the file, its folder and the disk can be used, then try again");
}

QString AdviceOnMissingStore()
{
    return QStringLiteral("create it with 'tandryctl --store FILE init' or give another one");
}

} // namespace tandry::findings
