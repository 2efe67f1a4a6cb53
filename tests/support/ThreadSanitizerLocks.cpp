// The thread sanitizer watches what it compiled, and Qt's library isn't among that: it would take a QMutex for no lock
// at all. These stand before the library's operations in every test program of that build, call them and tell the
// sanitizer.

#include <QLoggingCategory>
#include <QMutex>
#include <QTextCodec>
#include <QtGlobal>

#include <dlfcn.h>
#include <sanitizer/tsan_interface.h>

#include <mutex>

/// What Qt keeps for a thread that it did not make goes with the last object that the thread made, a record in a cached
/// listing say. It counts by an atomic of its own library. Nothing of ours has a wait condition.
extern "C" Q_DECL_EXPORT char const* __tsan_default_suppressions()
{
    return "race:QWaitCondition::\n";
}

namespace {

/// The library's operation of this name, as a function of its object.
template <class Function>
Function* Library(char const* symbol)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, symbol));
}

/// What lines of the log look like is worked out for the first of them, which is this one, ahead of all threads.
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

/// The list of codecs has a lock that nobody else can reach; documents ask for one whenever they become a text.
QTextCodec* QTextCodec::codecForName(QByteArray const& name)
{
    static auto* const codecForName =
        Library<QTextCodec*(QByteArray const&)>("_ZN10QTextCodec12codecForNameERK10QByteArray");
    static std::mutex mutex;
    std::lock_guard<std::mutex> const lock(mutex);
    return codecForName(name);
}
