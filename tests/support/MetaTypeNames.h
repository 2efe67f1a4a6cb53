#pragma once

#include <QMetaType>

namespace tandry::test {

/// Returns the id of the type that is registered under a name, `QMetaType::UnknownType` if there is none.
inline int MetaTypeNamed(char const* name)
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    return QMetaType::type(name);
#else
    return QMetaType::fromName(name).id();
#endif
}

} // namespace tandry::test
