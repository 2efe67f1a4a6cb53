#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace tandry::findings {

/// A value that the library names; in a bit field, a bit.
struct NamedValue
{
    int value;
    /// Words with blanks between them, such as "not synced".
    char const* name;
    char const* meaning;
};

/// The names of a column's values. Values without a name belong to the client and are shown as numbers.
class ValueNames
{
public:
    enum class Form
    {
        /// One of the values.
        Enumeration,
        /// Any of the bits; the value 0 may have a name of its own.
        Bits
    };

    ValueNames(Form form, std::vector<NamedValue> values);

    std::vector<NamedValue> const& values() const { return _values; }

    /// Returns the value for people: "2 not synced", or "7" if it has no name; the bits that are set, such as
    /// "view, delete", with those that have no name as one number.
    QString InWords(int value) const;

    /// Returns the value with this name, in any case and with hyphens or blanks between its words.
    std::optional<int> Find(QString const& name) const;

    /// Returns the names as one word each, such as "not-synced".
    QStringList Words() const;

private:
    QString _BitsInWords(int bits) const;

    Form _form;
    std::vector<NamedValue> _values;
};

} // namespace tandry::findings
