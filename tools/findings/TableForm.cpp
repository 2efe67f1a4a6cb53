#include "tools/findings/TableForm.h"

namespace tandry::findings {

namespace {

bool IsNumber(QVariant const& value)
{
    return value.userType() == QMetaType::LongLong || value.userType() == QMetaType::Double;
}

bool Keeps(ColumnForm const& column, QVariant const& value)
{
    if (!value.isValid())
        return true;
    return !column.isId && (column.isText ? value.userType() == QMetaType::QString : IsNumber(value));
}

} // namespace

bool TableForm::Fits(std::vector<QVariant> const& values) const
{
    if (values.size() != columns.size())
        return false;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (!Keeps(columns[i], values[i]))
            return false;
    }
    return true;
}

double TableForm::PartOfNumbers(std::vector<QVariant> const& values) const
{
    int numbers = 0;
    int held = 0;
    for (std::size_t i = 0; i < columns.size() && i < values.size(); ++i) {
        if (columns[i].isText || columns[i].isId)
            continue;
        ++numbers;
        held += IsNumber(values[i]) ? 1 : 0;
    }
    return numbers == 0 ? 0 : double(held) / numbers;
}

int TableForm::IndexOf(QString const& column) const
{
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].name == column)
            return static_cast<int>(i);
    }
    return -1;
}

} // namespace tandry::findings
