#include "Progress.h"

#include "Terminal.h"
#include "Text.h"

#include <QStringList>

#include <algorithm>

#include <unistd.h>

namespace tandryctl {

namespace {

constexpr int BarColumns = 20;
constexpr qint64 DrawEveryMsec = 100;

/// Returns the first text that leaves the last column free, where some terminals break the line; if there is none, the
/// beginning of the last text.
QString FirstThatFits(QStringList const& texts, int columns)
{
    for (QString const& text : texts) {
        if (DisplayWidth(text) < columns)
            return text;
    }
    return texts.last().left(std::max(0, columns - 1));
}

} // namespace

Progress::Progress(QString const& activity, char const* unit, qint64 total)
    : _activity(activity)
    , _unit(unit)
    , _total(total)
    , _visible(CanShowProgress())
{
    _timer.start();
    if (_visible)
        _Draw();
}

Progress::~Progress()
{
    if (_drawn)
        WriteError(QStringLiteral("\r\033[K"));
}

void Progress::Advance(qint64 count)
{
    _done += count;
    if (_visible && _timer.elapsed() >= _nextDrawMsec)
        _Draw();
}

QString Progress::FormatLine(
    QString const& activity, char const* unit, qint64 done, qint64 total, qint64 elapsedMsec, int columns)
{
    qint64 const rate = elapsedMsec > 0 ? done * 1000 / elapsedMsec : 0;
    QString const unitName = QLatin1String(unit);
    if (total <= 0) {
        QString const counted = QStringLiteral("%1: %2 %3").arg(activity).arg(done).arg(unitName);
        return FirstThatFits({counted + QStringLiteral(", %1/s").arg(rate), counted}, columns);
    }

    qint64 const shown = std::min(done, total);
    int const filled = static_cast<int>(shown * BarColumns / total);
    QString const bar = QString(filled, QLatin1Char('#')) + QString(BarColumns - filled, QLatin1Char('.'));
    QString const percent = QStringLiteral(" %1%").arg(shown * 100 / total);
    QString const counted = percent + QStringLiteral(" of %1 %2, %3/s").arg(total).arg(unitName).arg(rate);
    QString const remaining =
        rate > 0 ? QStringLiteral(", %1 s to go").arg((total - shown + rate - 1) / rate) : QString();
    return FirstThatFits({QStringLiteral("%1 [%2]").arg(activity, bar) + counted + remaining,
                          activity + counted + remaining,
                          activity + percent + remaining,
                          activity + percent},
                         columns);
}

void Progress::_Draw()
{
    qint64 const elapsed = _timer.elapsed();
    int const columns = TerminalWidth(STDERR_FILENO).value_or(std::numeric_limits<int>::max()); // it may have changed
    WriteError(QStringLiteral("\r%1\033[K").arg(FormatLine(_activity, _unit, _done, _total, elapsed, columns)));
    _drawn = true;
    _nextDrawMsec = elapsed + DrawEveryMsec;
}

} // namespace tandryctl
