#pragma once

#include "database/StoreFactory.h"

#include <QObject>

#include <vector>

namespace tandry::test {

/// What a factory's `CommitFailed` has told since this object was made.
class CommitFailures : public std::vector<sync::database::StoreError>
{
public:
    explicit CommitFailures(sync::database::StoreFactory const& store)
    {
        QObject::connect(
            &store,
            &sync::database::StoreFactory::CommitFailed,
            &_listener,
            [this](sync::database::StoreError const& error) { push_back(error); },
            Qt::DirectConnection);
    }

private:
    QObject _listener; // disconnected before the errors go
};

} // namespace tandry::test
