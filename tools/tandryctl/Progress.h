#pragma once

#include <QElapsedTimer>
#include <QString>

namespace tandryctl {

/// A line of progress on standard error, redrawn a few times a second; nothing at all where that is no terminal.
///
/// The line goes when the object does.
class Progress
{
public:
    /// `total` is 0 while it isn't known: then there is a count and a rate, and no bar.
    Progress(QString const& activity, char const* unit, qint64 total = 0);
    ~Progress();

    void Advance(qint64 count = 1);

    /// What a line looks like; `elapsedMsec` since the start.
    static QString Line(QString const& activity, char const* unit, qint64 done, qint64 total, qint64 elapsedMsec);

private:
    Q_DISABLE_COPY_MOVE(Progress)

    void _Draw();

    QString const _activity;
    char const* const _unit;
    qint64 const _total;
    bool const _visible;
    bool _drawn = false;
    qint64 _done = 0;
    qint64 _nextDrawMsec = 0;
    QElapsedTimer _timer;
};

} // namespace tandryctl
