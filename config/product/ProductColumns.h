#pragma once

#include "config/ProductConfiguration.h"
#include "config/columns/Column.h"

#include <tuple>

namespace sync::config {

/// The columns of `ProductConfiguration`. An insert writes the secret, and an update removes it.
template <>
struct TableColumns<ProductConfiguration>
{
    using Record = ProductConfiguration;

    static constexpr auto list =
        std::make_tuple(column::Integer<&Record::id>("id", column::GivenByStore),
                        column::Text<&Record::name>("name"),
                        column::Text<&Record::consumerKey>("consumerKey"),
                        column::Text<&Record::consumerSecret>("consumerSecret", column::NotUpdated | column::Secret),
                        column::Integer<&Record::serverId>("serverId"),
                        column::Properties<&Record::nameValueProperties>("nameValueProperties", column::NotCopied));
};

} // namespace sync::config
