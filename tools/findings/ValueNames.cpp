#include "tools/findings/ValueNames.h"

#include <utility>

namespace tandry::findings {

namespace {

QString AsOneWord(QString name)
{
    return name.replace(QLatin1Char(' '), QLatin1Char('-'));
}

} // namespace

ValueNames::ValueNames(Form form, std::vector<NamedValue> values)
    : _form(form)
    , _values(std::move(values))
{}

QString ValueNames::InWords(int value) const
{
    if (_form == Form::Bits && value != 0)
        return _BitsInWords(value);
    for (NamedValue const& named : _values) {
        if (named.value == value)
            return _form == Form::Bits ? QLatin1String(named.name)
                                       : QStringLiteral("%1 %2").arg(value).arg(QLatin1String(named.name));
    }
    return QString::number(value);
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

QString ValueNames::_BitsInWords(int bits) const
{
    QStringList words;
    auto unnamed = static_cast<unsigned>(bits);
    for (NamedValue const& named : _values) {
        auto const bit = static_cast<unsigned>(named.value);
        if ((unnamed & bit) != 0)
            words.append(QLatin1String(named.name));
        unnamed &= ~bit;
    }
    if (unnamed != 0)
        words.append(QString::number(unnamed));
    return words.join(QStringLiteral(", "));
}

} // namespace tandry::findings
