#include "Progress.h"

#include "Terminal.h"

#include <algorithm>

namespace tandryctl {

namespace {

constexpr int BarColumns = 20;
constexpr qint64 DrawEveryMsec = 100;

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

QString Progress::FormatLine(QString const& activity, char const* unit, qint64 done, qint64 total, qint64 elapsedMsec)
{
    qint64 const rate = elapsedMsec > 0 ? done * 1000 / elapsedMsec : 0;
    QString const unitName = QLatin1String(unit);
    if (total <= 0)
        return QStringLiteral("%1: %2 %3, %4/s").arg(activity).arg(done).arg(unitName).arg(rate);

    qint64 const shown = std::min(done, total);
    int const filled = static_cast<int>(shown * BarColumns / total);
    QString const bar = QString(filled, QLatin1Char('#')) + QString(BarColumns - filled, QLatin1Char('.'));
    QString line = QStringLiteral("%1 [%2] %3% of %4 %5, %6/s")
                       .arg(activity, bar)
                       .arg(shown * 100 / total)
                       .arg(total)
                       .arg(unitName)
                       .arg(rate);
    if (rate > 0)
        line += QStringLiteral(", %1 s to go").arg((total - shown + rate - 1) / rate);
    return line;
}

void Progress::_Draw()
{
    qint64 const elapsed = _timer.elapsed();
    WriteError(QStringLiteral("\r%1\033[K").arg(FormatLine(_activity, _unit, _done, _total, elapsed)));
    _drawn = true;
    _nextDrawMsec = elapsed + DrawEveryMsec;
}

} // namespace tandryctl
