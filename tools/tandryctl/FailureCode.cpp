#include "FailureCode.h"

namespace tandryctl {

namespace {

struct CodeFacts
{
    FailureCode code;
    char const* word;
    ExitStatus status;
};

constexpr CodeFacts AllCodes[] = {
    {FailureCode::NotFound, "not-found", ExitStatus::NothingFound},
    {FailureCode::Conflict, "conflict", ExitStatus::NothingFound},
    {FailureCode::UnusableFile, "unusable-file", ExitStatus::NothingFound},
    {FailureCode::Incomplete, "incomplete", ExitStatus::NothingFound},
    {FailureCode::Declined, "declined", ExitStatus::NothingFound},
    {FailureCode::WrongUsage, "wrong-usage", ExitStatus::WrongUsage},
    {FailureCode::Unconfirmed, "unconfirmed", ExitStatus::WrongUsage},
    {FailureCode::OutputFailed, "output-failed", ExitStatus::Failed},
    {FailureCode::StoreMissing, "store-missing", ExitStatus::Failed},
    {FailureCode::StoreLocked, "store-locked", ExitStatus::Failed},
    {FailureCode::StoreFull, "store-full", ExitStatus::Failed},
    {FailureCode::StoreReadOnly, "store-read-only", ExitStatus::Failed},
    {FailureCode::StoreDamaged, "store-damaged", ExitStatus::Failed},
    {FailureCode::StoreMoved, "store-moved", ExitStatus::Failed},
    {FailureCode::StoreRefused, "store-refused", ExitStatus::Failed},
    {FailureCode::StoreOutcomeUnknown, "store-outcome-unknown", ExitStatus::Failed},
    {FailureCode::StoreFailed, "store-failed", ExitStatus::Failed},
};

/// Whether each code stands in the place of its number.
constexpr bool AreInOrder()
{
    int number = 0;
    for (CodeFacts const& facts : AllCodes) {
        if (facts.code != FailureCode(number++))
            return false;
    }
    return number == static_cast<int>(FailureCode::StoreFailed) + 1;
}
static_assert(AreInOrder());

CodeFacts const& FactsOf(FailureCode code)
{
    return AllCodes[static_cast<int>(code)];
}

} // namespace

QString WordOf(FailureCode code)
{
    return QLatin1String(FactsOf(code).word);
}

QStringList FailureWords()
{
    QStringList words;
    for (CodeFacts const& facts : AllCodes)
        words.append(QLatin1String(facts.word));
    return words;
}

ExitStatus StatusOf(FailureCode code)
{
    return FactsOf(code).status;
}

} // namespace tandryctl
