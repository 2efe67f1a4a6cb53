#pragma once

#include <QtGlobal>

namespace tandry::findings {

constexpr quint32 SmallestPageSize = 512;
constexpr quint32 LargestPageSize = 65536;

/// Whether a store's pages can have this size in bytes.
constexpr bool IsPageSize(quint32 size)
{
    return size >= SmallestPageSize && size <= LargestPageSize && (size & (size - 1)) == 0;
}

} // namespace tandry::findings
