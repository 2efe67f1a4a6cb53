#pragma once

#include "TandryConfigurationExport.h"

#include <QStringList>

namespace sync::config {

/// A value of a column that the library names; in a bit field, a bit.
struct NamedValue
{
    /// The number that a store contains.
    int value;
    /// The name in English: words in lower case with blanks between them, such as "out of sync". To translate it, use
    /// the context "sync::config::ValueNames".
    char const* name;
};

/// The names of a column's values. A value without a name belongs to the client.
///
/// A view of constants, which any thread may use.
class ValueNames
{
public:
    /// No names.
    constexpr ValueNames() = default;
    /// The names from `begin` to `end`, which must be constants.
    constexpr ValueNames(NamedValue const* begin, NamedValue const* end, bool areBits)
        : _begin(begin)
        , _end(end)
        , _areBits(areBits)
    {}

    /// Whether no value has a name.
    constexpr bool isEmpty() const { return _begin == _end; }
    /// Whether a value is a set of the named bits, and not one of the named values. The value 0 may have a name too.
    constexpr bool areBits() const { return _areBits; }
    /// The first name; with `end`, for loops over all names.
    constexpr NamedValue const* begin() const { return _begin; }
    /// The end of the names.
    constexpr NamedValue const* end() const { return _end; }

    /// Returns the name of a value; of bits, the names of those that are set, and then the others as one number.
    /// Returns an empty list if the value has no name.
    TANDRY_CONFIGURATION_EXPORT QStringList Of(int value) const;

private:
    NamedValue const* _begin = nullptr;
    NamedValue const* _end = nullptr;
    bool _areBits = false;
};

} // namespace sync::config
