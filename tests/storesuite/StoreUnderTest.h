#pragma once

#include <tandry/interf/IDatabaseFactory.h>

#include <functional>
#include <memory>
#include <ostream>

namespace tandry::storesuite {

/// A store for one test case. Derive a class from it for each kind of store to test.
///
/// A new store has all tables, and no row but the default schedule (`folderConfigurationId` 0, interval 30, type 0, no
/// times). The destructor removes the store.
class StoreUnderTest
{
public:
    StoreUnderTest() = default;
    virtual ~StoreUnderTest() = default;
    Q_DISABLE_COPY_MOVE(StoreUnderTest)

    /// Returns a new factory for the store, as another program would open it: what one factory has made durable, the
    /// others read. If an open scope or client transaction of another factory blocks it, it may return null, and its
    /// statements may fail. They should fail soon, since the suite has one thread only.
    [[nodiscard]] virtual std::shared_ptr<sync::interf::factory::IDatabaseFactory> Open() = 0;
};

/// Creates the stores. A test case may call it more than once.
struct StoreMaker
{
    /// Returns a new store; never null.
    std::function<std::unique_ptr<StoreUnderTest>()> make;
};

inline void PrintTo(StoreMaker const&, std::ostream* out)
{
    *out << "a new store for each case";
}

} // namespace tandry::storesuite
