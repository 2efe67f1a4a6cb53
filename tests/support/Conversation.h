#pragma once

#include "support/QtPrinters.h"
#include "support/RecordingStore.h"

#include <QDateTime>
#include <QString>
#include <QVariant>

#include <string>
#include <vector>

namespace tandry::test {

/// An expected binding, such as {":id", 7}. Without a value it is a default-constructed QVariant, which means NULL.
struct Bound : Binding
{
    explicit Bound(char const* name)
        : Binding{QString::fromUtf8(name), QVariant()}
    {}
    Bound(char const* name, int number)
        : Binding{QString::fromUtf8(name), QVariant(number)}
    {}
    Bound(char const* name, long long number)
        : Binding{QString::fromUtf8(name), QVariant(number)}
    {}
    Bound(char const* name, QString const& text)
        : Binding{QString::fromUtf8(name), QVariant(text)}
    {}
    Bound(char const* name, QDateTime const& time)
        : Binding{QString::fromUtf8(name), QVariant(time)}
    {}
};

/// Returns an expected statement that reads, outside all scopes.
Execution Read(QString const& statement, std::vector<Bound> const& bindings = {});
Execution Read(char const* statement, std::vector<Bound> const& bindings = {});

/// Returns an expected statement that writes, in a scope of depth 1.
Execution Written(QString const& statement, std::vector<Bound> const& bindings = {});
Execution Written(char const* statement, std::vector<Bound> const& bindings = {});

/// Expects exactly these statements, with the same texts, placeholders in order, types, values and scope depths. Does
/// not compare `succeeded`.
void ExpectConversation(RecordingStore const& store, std::vector<Execution> const& expected);

/// Returns the "NameValueXml" document with one entry.
QString OneProperty(char const* key, char const* value);

/// Returns the "NameValueXml" document without entries.
QString NoProperties();

} // namespace tandry::test
