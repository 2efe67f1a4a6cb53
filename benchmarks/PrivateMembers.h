#pragma once

#include "config/AuthenticationConfiguration.h"
#include "config/FolderConfiguration.h"
#include "config/ProductConfiguration.h"
#include "config/ServerConfiguration.h"

#include <QMap>
#include <QString>

/// The members that only the managers fill. Contestants without managers fill whole records too, or the comparison
/// would be one of different work.
///
/// An explicit instantiation may name what is private: `Revealed` takes the pointer and hands it out.
namespace sync::benchmarks::member {

template <class Tag, typename Tag::Pointer Member>
struct Revealed
{
    friend constexpr typename Tag::Pointer Reveal(Tag) { return Member; }
};

using Map = QMap<QString, QString>;

struct FolderId
{
    using Pointer = int config::FolderConfiguration::*;
    friend constexpr Pointer Reveal(FolderId);
};
struct FolderProperties
{
    using Pointer = Map config::FolderConfiguration::*;
    friend constexpr Pointer Reveal(FolderProperties);
};
struct ServerProperties
{
    using Pointer = Map config::ServerConfiguration::*;
    friend constexpr Pointer Reveal(ServerProperties);
};
struct AccountProperties
{
    using Pointer = Map config::AuthenticationConfiguration::*;
    friend constexpr Pointer Reveal(AccountProperties);
};
struct ProductId
{
    using Pointer = int config::ProductConfiguration::*;
    friend constexpr Pointer Reveal(ProductId);
};
struct ProductProperties
{
    using Pointer = Map config::ProductConfiguration::*;
    friend constexpr Pointer Reveal(ProductProperties);
};

template struct Revealed<FolderId, &config::FolderConfiguration::id>;
template struct Revealed<FolderProperties, &config::FolderConfiguration::nameValueProperties>;
template struct Revealed<ServerProperties, &config::ServerConfiguration::nameValueProperties>;
template struct Revealed<AccountProperties, &config::AuthenticationConfiguration::nameValueProperties>;
template struct Revealed<ProductId, &config::ProductConfiguration::id>;
template struct Revealed<ProductProperties, &config::ProductConfiguration::nameValueProperties>;

} // namespace sync::benchmarks::member
