#pragma once

#include "config/ValueNames.h"

#include <QString>
#include <QStringList>

#include <map>
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

/// The library's names of a column's values, and what they mean. Values without a name belong to the client and are
/// shown as numbers.
class ValueNames
{
public:
    /// `meanings` has a sentence for each value with a name.
    explicit ValueNames(sync::config::ValueNames names, std::map<int, char const*> const& meanings = {});

    std::vector<NamedValue> const& values() const { return _values; }

    /// Returns the value for people: "2 not synced", or "7" if it has no name; the bits that are set, such as
    /// "view, delete", with those that have no name as one number.
    QString InWords(int value) const;

    /// Returns the value with this name, in any case and with hyphens or blanks between its words.
    std::optional<int> Find(QString const& name) const;

    /// Returns the names as one word each, such as "not-synced".
    QStringList Words() const;

private:
    sync::config::ValueNames _names;
    std::vector<NamedValue> _values;
};

} // namespace tandry::findings
