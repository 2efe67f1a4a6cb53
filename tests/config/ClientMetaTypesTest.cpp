#include "config/FileConfiguration.h"
#include "config/FolderConfiguration.h"
#include "config/MetaTypes.h"
#include "config/ServerConfiguration.h"
#include "support/MetaTypeNames.h"
#include "support/QtPrinters.h"

#include <gtest/gtest.h>

#include <QDebug>
#include <QVariant>

// A client may have declared types of the libraries itself, and have given them an operator.
Q_DECLARE_METATYPE(sync::config::FileConfiguration)
Q_DECLARE_METATYPE(sync::config::FileSynchronizationStatus)
Q_DECLARE_METATYPE(sync::config::ServerConfiguration)

QDebug operator<<(QDebug debug, sync::config::ServerConfiguration const&)
{
    return debug << "the client's server";
}

namespace client_meta_types_test {
namespace {

using namespace sync::config;
using tandry::test::MetaTypeNamed;
using tandry::test::operator""_q;

TEST(ClientMetaTypes, DeclarationOfTheClientMeansTheSameType)
{
    FileConfiguration file;
    file.name = "todo.txt"_q;
    QVariant const variant = QVariant::fromValue(file);
    RegisterMetaTypes();
    EXPECT_EQ(variant.userType(), MetaTypeNamed("sync::config::FileConfiguration"));
    EXPECT_EQ(variant.value<FileConfiguration>().name, "todo.txt"_q);
    EXPECT_EQ(QVariant::fromValue(FileSyncStatusSyncing).userType(),
              MetaTypeNamed("sync::config::FileSynchronizationStatus"));
}

TEST(ClientMetaTypes, NameOfTheClientsChoiceBecomesAnAlias)
{
    RegisterMetaTypes();
    int const id = qRegisterMetaType<FolderConfiguration>("FolderConfiguration");
    EXPECT_EQ(id, MetaTypeNamed("sync::config::FolderConfiguration"));
    EXPECT_EQ(id, MetaTypeNamed("FolderConfiguration"));
}

TEST(ClientMetaTypes, DebugOperatorOfTheClientHasPrecedence)
{
    QString text;
    QDebug(&text) << ServerConfiguration();
    EXPECT_TRUE(text.contains("the client's server"_q)) << qPrintable(text);
}

} // namespace
} // namespace client_meta_types_test
