#include "tools/findings/ValueNames.h"

namespace tandry::findings {

namespace {

QString AsOneWord(QString name)
{
    return name.replace(QLatin1Char(' '), QLatin1Char('-'));
}

} // namespace

ValueNames::ValueNames(sync::config::ValueNames names, std::map<int, char const*> const& meanings)
    : _names(names)
{
    for (sync::config::NamedValue const& named : _names) {
        auto const meaning = meanings.find(named.value);
        _values.push_back({named.value, named.name, meaning == meanings.end() ? "" : meaning->second});
    }
}

QString ValueNames::InWords(int value) const
{
    QStringList const words = _names.Of(value);
    if (words.isEmpty())
        return QString::number(value);
    QString const text = words.join(QStringLiteral(", "));
    return _names.areBits() ? text : QStringLiteral("%1 %2").arg(value).arg(text);
}

std::optional<int> ValueNames::Find(QString const& name) const
{
    for (NamedValue const& named : _values) {
        if (AsOneWord(QLatin1String(named.name)).compare(AsOneWord(name), Qt::CaseInsensitive) == 0)
            return named.value;
    }
    return std::nullopt;
}

QStringList ValueNames::Words() const
{
    QStringList words;
    for (NamedValue const& named : _values)
        words.append(AsOneWord(QLatin1String(named.name)));
    return words;
}

} // namespace tandry::findings
