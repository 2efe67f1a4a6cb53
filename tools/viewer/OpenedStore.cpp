#include "tools/viewer/OpenedStore.h"

#include "database/AbsolutePath.h"
#include "database/SqliteDatabaseFactory.h"
#include "tools/findings/LockHolders.h"
#include "tools/findings/PrivateCopy.h"
#include "tools/findings/StoreAdvice.h"
#include "tools/viewer/Sentence.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace tandry::viewer {

using sync::database::OpenMode;
using sync::database::OpenOptions;
using sync::database::SqliteDatabaseFactory;
using sync::database::StoreError;
using sync::database::StoreErrorKind;
using tandry::findings::LockHolder;
using tandry::findings::PrivateCopy;

namespace {

/// The context of the translations.
class Words
{
    Q_DECLARE_TR_FUNCTIONS(tandry::viewer::OpenedStore)

public:
    static QString HeadingOf(StoreErrorKind kind)
    {
        switch (kind) {
        case StoreErrorKind::Locked:
            return tr("The store is locked");
        case StoreErrorKind::Damaged:
            return tr("This is no store, or a damaged one");
        case StoreErrorKind::OlderVersion:
            return tr("The store has an older version");
        case StoreErrorKind::NewerVersion:
            return tr("The store has a newer version");
        case StoreErrorKind::NotClosed:
            return tr("The store was not closed");
        case StoreErrorKind::Moved:
            return tr("The store was moved");
        case StoreErrorKind::Refused:
            return tr("The store is refused");
        case StoreErrorKind::Full:
        case StoreErrorKind::ReadOnly:
        case StoreErrorKind::OutcomeUnknown:
        case StoreErrorKind::ConnectionLost:
        case StoreErrorKind::Other:
            break;
        }
        return tr("The store cannot be opened");
    }

    static void DescribeMissing(OpenedStore& opened)
    {
        opened.heading = tr("There is no store");
        opened.reason = tr("There is no file %1.").arg(opened.path);
        opened.advice = ToSentence(findings::AdviceOnMissingStore());
    }

    static void DescribeFailure(OpenedStore& opened, StoreError const& error)
    {
        opened.heading = HeadingOf(error.kind);
        opened.reason = ToSentence(error.text);
        if (error.kind == StoreErrorKind::Locked) {
            for (LockHolder const& holder : findings::FindLockHolders(opened.path))
                opened.reason += QLatin1Char(' ') + ToSentence(Name(holder));
        }
        opened.advice = ToSentence(findings::AdviceOn(error.kind));
    }

    static QString Name(LockHolder const& holder)
    {
        if (holder.processId <= 0)
            return tr("A process that is not visible from here holds the lock");
        if (holder.program.isEmpty())
            return tr("Process %1 holds the lock").arg(holder.processId);
        return tr("Process %1 (%2) holds the lock")
            .arg(QString::number(holder.processId), QString::fromUtf8(holder.program));
    }

    static void DescribeFailedCopy(OpenedStore& opened, StoreErrorKind kind, QString const& error)
    {
        opened.heading = HeadingOf(kind);
        opened.reason = ToSentence(error);
        opened.advice = ToSentence(findings::AdviceOn(kind));
    }

    static QString RemarkOnCopy(StoreErrorKind kind)
    {
        return kind == StoreErrorKind::NotClosed
                   ? tr("The store was not closed. You see a private copy of it, which does not follow changes.")
                   : tr("The store has an older version. You see a private copy of it, which does not follow changes.");
    }
};

void OpenCopy(OpenedStore& opened, StoreErrorKind reason)
{
    StoreError error;
    opened.copy = PrivateCopy::Make(opened.path, error);
    if (opened.copy == nullptr) {
        Words::DescribeFailedCopy(opened, reason, error.text);
        return;
    }
    OpenOptions options;
    options.mode = OpenMode::OpenExisting;
    opened.store = SqliteDatabaseFactory::Open(opened.copy->path(), error, options);
    if (opened.store == nullptr)
        Words::DescribeFailure(opened, error);
    else
        opened.remarks.append(Words::RemarkOnCopy(reason));
}

} // namespace

OpenedStore OpenForViewing(QString const& path, OpenOptions options)
{
    OpenedStore opened;
    opened.path = path;
    QString error;
    QString const absolute = sync::database::AbsolutePath(path, &error);
    if (absolute.isNull()) {
        StoreError unusable;
        unusable.text = error;
        Words::DescribeFailure(opened, unusable);
        return opened;
    }
    opened.path = absolute;
    QFileInfo const file(absolute);
    if (!file.exists() && !file.isSymLink()) {
        Words::DescribeMissing(opened);
        return opened;
    }
    options.mode = OpenMode::ReadOnly;
    StoreError openError;
    opened.store = SqliteDatabaseFactory::Open(absolute, openError, options);
    if (opened.store == nullptr && PrivateCopy::IsNeededAfter(openError.kind))
        OpenCopy(opened, openError.kind);
    else if (opened.store == nullptr)
        Words::DescribeFailure(opened, openError);
    if (opened.store != nullptr) {
        for (QString const& warning : opened.store->openingWarnings())
            opened.remarks.append(ToSentence(warning));
    }
    return opened;
}

} // namespace tandry::viewer
