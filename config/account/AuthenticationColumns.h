#pragma once

#include "config/AuthenticationConfiguration.h"
#include "config/columns/Column.h"

#include <tuple>

namespace sync::config {

/// The columns of `AuthenticationConfiguration`. The store gets no password and returns none.
template <>
struct TableColumns<AuthenticationConfiguration>
{
    using Record = AuthenticationConfiguration;

    static constexpr auto list =
        std::make_tuple(column::Integer<&Record::id>("id", column::GivenByStore),
                        column::Text<&Record::domain>("domain"),
                        column::Text<&Record::domainId>("domainId"),
                        column::Text<&Record::userName>("userName"),
                        column::NeverStored<&Record::password>("encryptedPassword", column::Secret),
                        column::Properties<&Record::nameValueProperties>("nameValueProperties"),
                        column::Integer<&Record::serverId>("serverId"));
};

} // namespace sync::config
