#include "FailureCode.h"

namespace tandryctl {

ExitStatus StatusOf(FailureCode code)
{
    switch (code) {
    case FailureCode::NotFound:
    case FailureCode::Conflict:
    case FailureCode::UnusableFile:
    case FailureCode::Declined:
        return ExitStatus::NothingFound;
    case FailureCode::WrongUsage:
    case FailureCode::Unconfirmed:
        return ExitStatus::WrongUsage;
    case FailureCode::OutputFailed:
    case FailureCode::StoreMissing:
    case FailureCode::StoreLocked:
    case FailureCode::StoreFull:
    case FailureCode::StoreReadOnly:
    case FailureCode::StoreDamaged:
    case FailureCode::StoreMoved:
    case FailureCode::StoreRefused:
    case FailureCode::StoreOutcomeUnknown:
    case FailureCode::StoreFailed:
        break;
    }
    return ExitStatus::Failed;
}

} // namespace tandryctl
