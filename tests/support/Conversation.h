#pragma once

#include "support/QtPrinters.h"
#include "support/RecordingStore.h"

#include <QDateTime>
#include <QString>
#include <QVariant>

#include <string>
#include <vector>

namespace tandry::test {

/// A binding in an expected conversation: {":id", 7}. Without a value it is the default-constructed one, NULL.
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

/// An expected statement that only reads, and so runs outside all scopes.
Execution Read(char const* statement, std::vector<Bound> const& bindings = {});

/// An expected statement that runs in one scope of its own.
Execution Written(char const* statement, std::vector<Bound> const& bindings = {});

/// Expects exactly these statements, word by word: text, placeholders in order, types and values, depth of scopes.
/// `succeeded` isn't compared.
void ExpectConversation(RecordingStore const& store, std::vector<Execution> const& expected);

/// The "NameValueXml" document with one entry.
QString OneProperty(char const* key, char const* value);

/// The "NameValueXml" document without entries.
QString NoProperties();

} // namespace tandry::test
