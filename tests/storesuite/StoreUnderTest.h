#pragma once

#include "interf/IDatabaseFactory.h"

#include <functional>
#include <memory>
#include <ostream>

namespace tandry::storesuite {

/// A store for one test case, to be written for each kind of store that the suite is to be held against.
///
/// When it is made, the store has all tables, and no row but the default schedule (`folderConfigurationId` 0, interval
/// 30, type 0, no times). It goes with the object.
class StoreUnderTest
{
public:
    StoreUnderTest() = default;
    virtual ~StoreUnderTest() = default;
    Q_DISABLE_COPY_MOVE(StoreUnderTest)

    /// A factory over the store, another one at each call, as another program would have it: what one of them made
    /// durable, the others read. Where another factory's open scope or bracket keeps it waiting, this may answer null,
    /// and a statement may fail; better soon, since the cases that try it have but one thread.
    [[nodiscard]] virtual std::shared_ptr<sync::interf::factory::IDatabaseFactory> Open() = 0;
};

/// Makes a store for a test case; called more than once by cases that need several.
struct StoreMaker
{
    std::function<std::unique_ptr<StoreUnderTest>()> make;
};

inline void PrintTo(StoreMaker const&, std::ostream* out)
{
    *out << "a new store for each case";
}

} // namespace tandry::storesuite
