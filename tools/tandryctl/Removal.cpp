#include "Removal.h"

#include "Text.h"

namespace tandryctl {

namespace {

constexpr int MostNames = 5;

} // namespace

Removal::Removal(QString const& titled)
    : _titled(titled)
{}

void Removal::Takes(int count, char const* singular, char const* plural)
{
    if (count > 0)
        _takes.append(Counted(count, singular, plural));
}

void Removal::Leaves(int count, char const* singular, char const* plural, QStringList const& names)
{
    if (count <= 0)
        return;
    QString leaves = Counted(count, singular, plural);
    if (!names.isEmpty()) {
        QStringList named = names.mid(0, MostNames);
        if (names.size() > MostNames)
            named.append(QStringLiteral("%1 more").arg(names.size() - MostNames));
        leaves += QStringLiteral(" (%1)").arg(Enumerated(named));
    }
    _leaves.append(leaves);
    _leftRows += count;
}

QString Removal::text() const
{
    QString text = _titled;
    if (!_takes.isEmpty())
        text += QStringLiteral(" with ") + Enumerated(_takes);
    text += QStringLiteral(" from the store");
    if (!_leaves.isEmpty())
        text += QStringLiteral(", leaving %1 that %2 to nothing")
                    .arg(Enumerated(_leaves), QLatin1String(_leftRows == 1 ? "belongs" : "belong"));
    return text;
}

} // namespace tandryctl
