#include "tools/tandryctl/Removal.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

using namespace tandry::test;
using tandryctl::Removal;

TEST(Removal, OfOneRowIsItsLabel)
{
    EXPECT_EQ(Removal("root 1 '/a'"_q).text(), "root 1 '/a' from the store"_q);
}

TEST(Removal, ListsRemovedAndOrphanedRows)
{
    Removal removal("root 1 '/a'"_q);
    removal.AddRemoved(2, "folder", "folders");
    removal.AddRemoved(0, "file", "files");
    removal.AddRemoved(1, "generated file", "generated files");
    removal.AddOrphaned(1, "base file", "base files");
    removal.AddOrphaned(0, "product", "products");
    removal.AddOrphaned(3, "schedule", "schedules");
    EXPECT_EQ(removal.text(),
              "root 1 '/a' with 2 folders and 1 generated file from the store, leaving 1 base file and 3 schedules "
              "that belong to nothing"_q);
}

TEST(Removal, OfOneOrphanUsesTheSingular)
{
    Removal removal("server 1"_q);
    removal.AddOrphaned(1, "account", "accounts", {"account 3 'anna'"_q});
    EXPECT_EQ(removal.text(),
              "server 1 from the store, leaving 1 account (account 3 'anna') that belongs to nothing"_q);
}

TEST(Removal, ListsFiveNamesAtMost)
{
    Removal removal("server 1"_q);
    removal.AddOrphaned(7, "account", "accounts", {"a"_q, "b"_q, "c"_q, "d"_q, "e"_q, "f"_q, "g"_q});
    EXPECT_TRUE(removal.text().contains("7 accounts (a, b, c, d, e and 2 more)"_q)) << removal.text().toStdString();
}

TEST(Removal, ListsDeprivedRowsAndRemarksLast)
{
    Removal removal("server 1"_q);
    removal.AddRemark("it is the default server"_q);
    removal.AddDeprived(0, "product", "products", {}, "a name");
    removal.AddDeprived(1, "root", "roots", {"root 1 '/a'"_q}, "a server");
    removal.AddOrphaned(2, "account", "accounts");
    EXPECT_EQ(removal.text(),
              "server 1 from the store, leaving 2 accounts that belong to nothing and 1 root (root 1 '/a') without a "
              "server; it is the default server"_q);
}
