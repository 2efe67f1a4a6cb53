#include "Removal.h"

#include "Text.h"

namespace tandryctl {

namespace {

constexpr int MostNames = 5;

QString CountedWithNames(int count, char const* singular, char const* plural, QStringList const& names)
{
    QString const counted = Counted(count, singular, plural);
    if (names.isEmpty())
        return counted;
    QStringList named = names.mid(0, MostNames);
    if (names.size() > MostNames)
        named.append(QStringLiteral("%1 more").arg(names.size() - MostNames));
    return counted + QStringLiteral(" (%1)").arg(JoinWithAnd(named));
}

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
    _orphaned.append(CountedWithNames(count, singular, plural, names));
    _orphanedRows += count;
}

void Removal::AddDeprived(
    int count, char const* singular, char const* plural, QStringList const& names, char const* what)
{
    if (count > 0)
        _deprived.append(CountedWithNames(count, singular, plural, names) + QStringLiteral(" without ") +
                         QLatin1String(what));
}

void Removal::AddRemark(QString const& remark)
{
    _remarks.append(remark);
}

QString Removal::text() const
{
    QString text = _label;
    if (!_removed.isEmpty())
        text += QStringLiteral(" with ") + JoinWithAnd(_removed);
    text += QStringLiteral(" from the store");

    QStringList left = _deprived;
    if (!_orphaned.isEmpty())
        left.prepend(QStringLiteral("%1 that %2 to nothing")
                         .arg(JoinWithAnd(_orphaned), QLatin1String(_orphanedRows == 1 ? "belongs" : "belong")));
    if (!left.isEmpty())
        text += QStringLiteral(", leaving ") + JoinWithAnd(left);
    for (QString const& remark : _remarks)
        text += QStringLiteral("; ") + remark;
    return text;
}

} // namespace tandryctl
