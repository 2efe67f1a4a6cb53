#pragma once

#include "Answer.h"

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
#include <QFutureInterface>
#else
#include <QPromise>
#endif

#include <utility>

namespace sync::models {

/// The other end of a `FutureAnswer`, with either Qt. For `AsyncManagers`, which gives it out.
template <class T>
class AnswerPromise
{
public:
    /// From here on a client can wait for the future.
    AnswerPromise()
    {
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
        _promise.reportStarted();
#else
        _promise.start();
#endif
    }

    /// Returns the future; each is the same one.
    FutureAnswer<T> future()
    {
        return _promise.future();
    }
    /// Returns whether the client has canceled the future.
    [[nodiscard]] bool isCanceled() const
    {
        return _promise.isCanceled();
    }

    /// Gives the answer, unless the client has canceled the future, and finishes it.
    void Finish(Answer<T> const& answer)
    {
        Give(answer);
        End();
    }
    /// Gives the answer and finishes the future as a canceled one, so that a client may look at either.
    void Cancel(Answer<T> const& answer)
    {
        Give(answer);
        future().cancel();
        End();
    }

private:
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    void Give(Answer<T> const& answer)
    {
        _promise.reportResult(answer);
    }
    void End()
    {
        _promise.reportFinished();
    }

    QFutureInterface<Answer<T>> _promise;
#else
    void Give(Answer<T> const& answer)
    {
        _promise.addResult(answer);
    }
    void End()
    {
        _promise.finish();
    }

    QPromise<Answer<T>> _promise;
#endif
};

} // namespace sync::models
