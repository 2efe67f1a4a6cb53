#pragma once

#include "ClientTransactionSuite.h"
#include "ManagerSuite.h"
#include "QuerySuite.h"
#include "SchemaSuite.h"
#include "ScopeSuite.h"
#include "StoreUnderTest.h"
#include "ValueSuite.h"

/// \file
/// GoogleTest cases for what the managers require of a store.
///
/// To test a factory of your own, derive a class from `StoreUnderTest` and write, at namespace scope in one source file
/// of a test program:
///
///     TANDRY_STORE_SUITE(MyStore, [] { return std::make_unique<MyStoreUnderTest>(); });
///
/// The cases are named "MyStore/QuerySuite...", "MyStore/ScopeSuite..." and so on. Only one source file of a program
/// may include this header; it can test several kinds of store. A GoogleTest filter can exclude what a store does not
/// support.

/// Instantiates the whole suite for one kind of store. `...` is callable without arguments and returns a new store as a
/// `std::unique_ptr` to a class that derives from `StoreUnderTest`.
#define TANDRY_STORE_SUITE(name, ...)                                                                                  \
    namespace tandry::storesuite {                                                                                     \
    inline StoreMaker const name##Maker{__VA_ARGS__};                                                                  \
    INSTANTIATE_TEST_SUITE_P(name, QuerySuite, testing::Values(name##Maker));                                          \
    INSTANTIATE_TEST_SUITE_P(name, ValueSuite, testing::Values(name##Maker));                                          \
    INSTANTIATE_TEST_SUITE_P(name, SchemaSuite, testing::Values(name##Maker));                                         \
    INSTANTIATE_TEST_SUITE_P(name, ScopeSuite, testing::Values(name##Maker));                                          \
    INSTANTIATE_TEST_SUITE_P(name, ClientTransactionSuite, testing::Values(name##Maker));                              \
    INSTANTIATE_TEST_SUITE_P(name, ManagerSuite, testing::Values(name##Maker));                                        \
    }                                                                                                                  \
    static_assert(true, "requires a semicolon")
