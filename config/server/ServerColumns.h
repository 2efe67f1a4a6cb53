#pragma once

#include "config/ServerConfiguration.h"
#include "config/columns/Column.h"

#include <tuple>

namespace sync::config {

/// The columns of `ServerConfiguration`.
template <>
struct TableColumns<ServerConfiguration>
{
    using Record = ServerConfiguration;

    static constexpr auto list =
        std::make_tuple(column::Integer<&Record::id>("id", column::GivenByStore),
                        column::Text<&Record::alias>("alias"),
                        column::Text<&Record::davUrl>("davUrl"),
                        column::Text<&Record::webServiceUrl>("webServiceUrl"),
                        column::Properties<&Record::nameValueProperties>("nameValueProperties"),
                        column::Text<&Record::binaryDiffEncoder>("binaryDiffEncoder"));
};

} // namespace sync::config
