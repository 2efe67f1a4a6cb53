// Qt's library is not compiled with the thread sanitizer, which therefore does not know that QMutex is a lock. In that
// build, every test program contains these replacements, which call the library's functions and inform the sanitizer.

#include <QFutureInterface>
#include <QLoggingCategory>
#include <QMutex>
#include <QTextCodec>
#include <QtGlobal>

#include <dlfcn.h>
#include <sanitizer/tsan_interface.h>

#include <mutex>

/// Qt frees its data for a foreign thread with the last object that the thread created, such as a record in a cached
/// listing, and counts the references with an atomic in its own library. The project has no wait conditions itself.
/// It passes events and queued calls from one thread to another under a mutex there, and counts who holds a call.
extern "C" Q_DECL_EXPORT char const* __tsan_default_suppressions()
{
    return "race:QWaitCondition::\n"
           "race:QCoreApplicationPrivate::sendPostedEvents\n"
           "race:QMetaCallEvent::\n"
           "race:QtPrivate::QFunctorSlotObject\n";
}

namespace {

/// Returns the library's function with this symbol; it takes the object as its first argument.
template <class Function>
Function* Library(char const* symbol)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, symbol));
}

/// Qt parses the log pattern for the first message. This one comes before any thread.
[[maybe_unused]] QString const firstLine = qFormatLogMessage(QtDebugMsg, QMessageLogContext(), QString());

} // namespace

void QMutex::lock()
{
    static auto* const lock = Library<void(QMutex*)>("_ZN6QMutex4lockEv");
    lock(this);
    __tsan_acquire(this);
}

bool QMutex::tryLock(int timeout)
{
    static auto* const tryLock = Library<bool(QMutex*, int)>("_ZN6QMutex7tryLockEi");
    bool const locked = tryLock(this, timeout);
    if (locked)
        __tsan_acquire(this);
    return locked;
}

void QMutex::unlock() noexcept
{
    static auto* const unlock = Library<void(QMutex*)>("_ZN6QMutex6unlockEv");
    __tsan_release(this);
    unlock(this);
}

/// Whoever gives up the last share of a future destroys its results. Qt counts the shares with an atomic in its
/// library.
bool QFutureInterfaceBase::derefT() const
{
    static auto* const derefT = Library<bool(QFutureInterfaceBase const*)>("_ZNK20QFutureInterfaceBase6derefTEv");
    __tsan_release(d);
    bool const isShared = derefT(this);
    if (!isShared)
        __tsan_acquire(d);
    return isShared;
}

/// Qt guards its list of codecs by a private lock. `QDomDocument::toString` looks a codec up.
QTextCodec* QTextCodec::codecForName(QByteArray const& name)
{
    static auto* const codecForName =
        Library<QTextCodec*(QByteArray const&)>("_ZN10QTextCodec12codecForNameERK10QByteArray");
    static std::mutex mutex;
    std::lock_guard<std::mutex> const lock(mutex);
    return codecForName(name);
}
