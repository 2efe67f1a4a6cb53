#pragma once

#include "storesuite/BracketSuite.h"
#include "storesuite/ManagerSuite.h"
#include "storesuite/QuerySuite.h"
#include "storesuite/SchemaSuite.h"
#include "storesuite/ScopeSuite.h"
#include "storesuite/StoreUnderTest.h"
#include "storesuite/ValueSuite.h"

/// \file
/// What a store must do so that the managers work over it, as GoogleTest cases.
///
/// Who writes a factory of their own derives a class from `StoreUnderTest` and says, at namespace scope in one source
/// file of a test program:
///
///     TANDRY_STORE_SUITE(MyStore, [] { return std::make_unique<MyStoreUnderTest>(); });
///
/// The cases then are called "MyStore/QuerySuite...", "MyStore/ScopeSuite..." and so on. Only one source file of a
/// program may include this header; several kinds of store can stand side by side in it. The calling code holds nothing
/// but public operations, so any GoogleTest filter leaves out what a store doesn't want to promise.

/// Holds the whole suite against one kind of store. `...` is what makes one: callable without arguments, answering with
/// a `std::unique_ptr` to a class that derives from `StoreUnderTest`.
#define TANDRY_STORE_SUITE(name, ...)                                                                                  \
    namespace tandry::storesuite {                                                                                     \
    inline StoreMaker const name##Maker{__VA_ARGS__};                                                                  \
    INSTANTIATE_TEST_SUITE_P(name, QuerySuite, testing::Values(name##Maker));                                          \
    INSTANTIATE_TEST_SUITE_P(name, ValueSuite, testing::Values(name##Maker));                                          \
    INSTANTIATE_TEST_SUITE_P(name, SchemaSuite, testing::Values(name##Maker));                                         \
    INSTANTIATE_TEST_SUITE_P(name, ScopeSuite, testing::Values(name##Maker));                                          \
    INSTANTIATE_TEST_SUITE_P(name, BracketSuite, testing::Values(name##Maker));                                        \
    INSTANTIATE_TEST_SUITE_P(name, ManagerSuite, testing::Values(name##Maker));                                        \
    }                                                                                                                  \
    static_assert(true, "asks for a semicolon")
