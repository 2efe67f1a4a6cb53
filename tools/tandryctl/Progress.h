#pragma once

#include <QElapsedTimer>
#include <QString>

#include <limits>

namespace tandryctl {

/// Shows a progress line on standard error, redrawn ten times a second at most, and erases it in the destructor. Shows
/// nothing if standard error is not a terminal.
class Progress
{
public:
    /// A `total` of 0 means unknown: the line then shows a count and a rate, but no bar.
    Progress(QString const& activity, char const* unit, qint64 total = 0);
    ~Progress();

    void Advance(qint64 count = 1);

    /// Returns the text of the line, shorter if need be so that it stays on one line of a terminal with this number of
    /// columns. `elapsedMsec` counts from the start.
    static QString FormatLine(QString const& activity,
                              char const* unit,
                              qint64 done,
                              qint64 total,
                              qint64 elapsedMsec,
                              int columns = std::numeric_limits<int>::max());

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
