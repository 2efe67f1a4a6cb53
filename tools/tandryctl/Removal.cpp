#include "Removal.h"

#include "Text.h"

namespace tandryctl {

namespace {

constexpr int MostNames = 5;

} // namespace

Removal::Removal(QString const& label)
    : _label(label)
{}

void Removal::AddRemoved(int count, char const* singular, char const* plural)
{
    if (count > 0)
        _removed.append(Counted(count, singular, plural));
}

void Removal::AddOrphaned(int count, char const* singular, char const* plural, QStringList const& names)
{
    if (count <= 0)
        return;
    QString leaves = Counted(count, singular, plural);
    if (!names.isEmpty()) {
        QStringList named = names.mid(0, MostNames);
        if (names.size() > MostNames)
            named.append(QStringLiteral("%1 more").arg(names.size() - MostNames));
        leaves += QStringLiteral(" (%1)").arg(JoinWithAnd(named));
    }
    _orphaned.append(leaves);
    _orphanedRows += count;
}

QString Removal::text() const
{
    QString text = _label;
    if (!_removed.isEmpty())
        text += QStringLiteral(" with ") + JoinWithAnd(_removed);
    text += QStringLiteral(" from the store");
    if (!_orphaned.isEmpty())
        text += QStringLiteral(", leaving %1 that %2 to nothing")
                    .arg(JoinWithAnd(_orphaned), QLatin1String(_orphanedRows == 1 ? "belongs" : "belong"));
    return text;
}

} // namespace tandryctl
