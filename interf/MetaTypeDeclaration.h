#pragma once

#include <QMetaType>

/// \file
/// Makes a type of the libraries known to Qt's meta-type system, for `QVariant` and queued calls.

/// \def TANDRY_DECLARE_METATYPE(TYPE)
/// Does for a type of the libraries what `Q_DECLARE_METATYPE` does for a client's, except that a client may declare the
/// type again: Qt looks at a client's `Q_DECLARE_METATYPE` first, and at this only where there is none. Qt 6 needs no
/// declaration.
#ifdef Q_MOC_RUN
#define TANDRY_DECLARE_METATYPE(TYPE) Q_DECLARE_METATYPE(TYPE)
#elif QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
namespace sync::interf {

/// For the macro below. A template, so that nothing refers to the declaration of the type before the client's own.
template <class Type, class Declaration>
struct DeclaredMetaType
{
    enum
    {
        Defined = 1 ///< As Qt names it.
    };
    /// As Qt names it: registers the type at the first call, and returns its id.
    static int qt_metatype_id() // NOLINT(readability-identifier-naming)
    {
        static int const id = qRegisterMetaType<Type>(Declaration::Name(), reinterpret_cast<Type*>(quintptr(-1)));
        return id;
    }
};

} // namespace sync::interf

#define TANDRY_DECLARE_METATYPE(TYPE)                                                                                  \
    QT_BEGIN_NAMESPACE                                                                                                 \
    template <>                                                                                                        \
    struct QMetaTypeIdQObject<TYPE, 0> : sync::interf::DeclaredMetaType<TYPE, QMetaTypeIdQObject<TYPE, 0>>             \
    {                                                                                                                  \
        static char const* Name() { return #TYPE; }                                                                    \
    };                                                                                                                 \
    QT_END_NAMESPACE
#else
#define TANDRY_DECLARE_METATYPE(TYPE)
#endif
