#include "tools/tandryctl/Removal.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

using namespace tandry::test;
using tandryctl::Removal;

TEST(Removal, OfARowAloneNamesIt)
{
    EXPECT_EQ(Removal("root 1 '/a'"_q).text(), "root 1 '/a' from the store"_q);
}

TEST(Removal, NamesWhatGoesAndWhatStays)
{
    Removal removal("root 1 '/a'"_q);
    removal.Takes(2, "folder", "folders");
    removal.Takes(0, "file", "files");
    removal.Takes(1, "generated file", "generated files");
    removal.Leaves(1, "base file", "base files");
    removal.Leaves(0, "product", "products");
    removal.Leaves(3, "schedule", "schedules");
    EXPECT_EQ(removal.text(),
              "root 1 '/a' with 2 folders and 1 generated file from the store, leaving 1 base file and 3 schedules "
              "that belong to nothing"_q);
}

TEST(Removal, OfWhichOneRowStaysTakesTheSingular)
{
    Removal removal("server 1"_q);
    removal.Leaves(1, "account", "accounts", {"account 3 'anna'"_q});
    EXPECT_EQ(removal.text(),
              "server 1 from the store, leaving 1 account (account 3 'anna') that belongs to nothing"_q);
}

TEST(Removal, NamesFiveAtMost)
{
    Removal removal("server 1"_q);
    removal.Leaves(7, "account", "accounts", {"a"_q, "b"_q, "c"_q, "d"_q, "e"_q, "f"_q, "g"_q});
    EXPECT_TRUE(removal.text().contains("7 accounts (a, b, c, d, e and 2 more)"_q)) << removal.text().toStdString();
}
