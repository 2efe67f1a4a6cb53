#include "config/AuthenticationConfigManager.h"
#include "config/ProductConfigManager.h"

#include "support/QtPrinters.h"
#include "support/StoreFixture.h"

#include <gtest/gtest.h>

#include <QDirIterator>
#include <QFile>
#include <QLoggingCategory>
#include <QTextCodec>

namespace {

using namespace tandry::test;
using namespace sync::config;

/// Keeps every message of every category while it lives.
class CapturedLog
{
public:
    CapturedLog()
    {
        Text().clear();
        QLoggingCategory::setFilterRules("*=true"_q);
        _before = qInstallMessageHandler([](QtMsgType, QMessageLogContext const& context, QString const& message) {
            Text() += QString::fromUtf8(context.category) + ": "_q + message + "\n"_q;
        });
    }
    ~CapturedLog()
    {
        qInstallMessageHandler(_before);
        QLoggingCategory::setFilterRules(QString());
    }

    static QString& Text()
    {
        static QString text;
        return text;
    }

private:
    QtMessageHandler _before;
};

QString const Marker = "Marker7f3a-pa55-WORD-\xc3\xa9"_q;

class Secrets : public StoreFixture
{
protected:
    /// The files of the closed store in which a text stands, in any encoding that the engine could keep it in.
    QStringList FilesThatHold(QString const& text)
    {
        store.reset();
        QStringList found;
        int files = 0;
        for (QDirIterator it(folder.path(), QDir::Files | QDir::Hidden); it.hasNext(); ++files) {
            QFile file(it.next());
            EXPECT_TRUE(file.open(QIODevice::ReadOnly));
            QByteArray const bytes = file.readAll();
            for (char const* encoding : {"UTF-8", "UTF-16LE", "UTF-16BE", "ISO-8859-1"}) {
                QTextCodec::ConverterState withoutMark(QTextCodec::IgnoreHeader);
                if (bytes.contains(
                        QTextCodec::codecForName(encoding)->fromUnicode(text.constData(), text.size(), &withoutMark)))
                    found.append(it.fileName());
            }
        }
        EXPECT_GT(files, 0);
        return found;
    }

    static AuthenticationConfiguration AccountWithMarker()
    {
        AuthenticationConfiguration account;
        account.setDomain("a domain that is found"_q);
        account.setUserName("user"_q);
        account.setPassword(Marker);
        return account;
    }

    CapturedLog log;
};

TEST_F(Secrets, PasswordReachesNeitherStoreNorLogThroughAnyOperation)
{
    {
        AuthenticationConfigManager accounts(store);
        AuthenticationConfiguration account = AccountWithMarker();
        EXPECT_TRUE(accounts.Add(account));
        account.setProperty("Password", Marker);
        EXPECT_TRUE(accounts.Update(account));
        EXPECT_TRUE(accounts.Update(AuthenticationConfiguration(account)));
        EXPECT_EQ(accounts.UpdatePassword("a domain that is found"_q, "user"_q, Marker), 1);
        EXPECT_EQ(accounts.UpdatePassword("a domain that is found"_q, "user"_q, Marker + Marker), 1);

        AuthenticationConfiguration second = accounts.GetAuthenticationConfigurationById(account.getId());
        second.setPassword(Marker);
        EXPECT_TRUE(accounts.Add(second));
        second = accounts.GetAll().at(0);
        second.setPassword(Marker);
        EXPECT_TRUE(accounts.Update(second));
        second = accounts.GetDistinctAuthenticationConfigurations().at(0);
        second.setPassword(Marker);
        EXPECT_TRUE(accounts.Add(second));
        EXPECT_TRUE(accounts.Remove(second.getId()));
    }
    EXPECT_FALSE(FilesThatHold("a domain that is found"_q).isEmpty()) << "the search finds nothing at all";
    EXPECT_EQ(FilesThatHold(Marker), QStringList());
    EXPECT_FALSE(CapturedLog::Text().contains(Marker));
}

TEST_F(Secrets, PasswordReachesNeitherErrorNorLogWhenTheStoreFails)
{
    RawStore(StorePath()).Run("ALTER TABLE AuthenticationConfiguration RENAME TO Elsewhere"_q);
    {
        AuthenticationConfigManager accounts(store);
        AuthenticationConfiguration account = AccountWithMarker();
        EXPECT_FALSE(accounts.Add(account));
        EXPECT_FALSE(accounts.Update(account));
        EXPECT_EQ(accounts.UpdatePassword(Marker, Marker, Marker), -1);
    }
    ASSERT_TRUE(store->LastError());
    EXPECT_FALSE(store->LastError()->text.isEmpty());
    EXPECT_FALSE(store->LastError()->text.contains(Marker));
    EXPECT_FALSE(store->LastError()->statement.contains(Marker));
    EXPECT_FALSE(CapturedLog::Text().isEmpty());
    EXPECT_FALSE(CapturedLog::Text().contains(Marker));
    EXPECT_EQ(FilesThatHold(Marker), QStringList());
}

TEST_F(Secrets, StoredPasswordIsOverwrittenByUpdatePasswordAndByUpdate)
{
    AuthenticationConfiguration account = AccountWithMarker();
    EXPECT_TRUE(AuthenticationConfigManager(store).Add(account));
    for (bool const byUpdate : {false, true}) {
        RawStore(StorePath()).Run("UPDATE AuthenticationConfiguration SET encryptedPassword = '"_q + Marker + "'"_q);
        EXPECT_FALSE(FilesThatHold(Marker).isEmpty());
        OpenStore();
        if (byUpdate)
            EXPECT_TRUE(AuthenticationConfigManager(store).Update(account));
        else
            EXPECT_EQ(AuthenticationConfigManager(store).UpdatePassword(account.getDomain(), "user"_q, Marker), 1);
        EXPECT_EQ(FilesThatHold(Marker), QStringList());
        OpenStore();
    }
}

TEST_F(Secrets, ConsumerSecretIsGoneFromTheFilesAfterRemove)
{
    ProductConfiguration product;
    product.setName("a name that stays"_q);
    product.setConsumerSecret(Marker);
    EXPECT_TRUE(ProductConfigManager(store).Add(product));
    EXPECT_FALSE(FilesThatHold(Marker).isEmpty());
    OpenStore();
    EXPECT_TRUE(ProductConfigManager(store).Remove(product.getId()));
    EXPECT_EQ(FilesThatHold(Marker), QStringList());
}

TEST_F(Secrets, ConsumerSecretIsGoneFromTheFilesAfterAddAndRemoveInOneOpening)
{
    ProductConfiguration product;
    product.setConsumerSecret(Marker);
    EXPECT_TRUE(ProductConfigManager(store).Add(product));
    EXPECT_TRUE(ProductConfigManager(store).Remove(product.getId()));
    EXPECT_EQ(FilesThatHold(Marker), QStringList());
}

TEST_F(Secrets, ConsumerSecretIsGoneFromTheFilesAfterUpdate)
{
    ProductConfiguration product;
    product.setName("a name that stays"_q);
    product.setConsumerSecret(Marker);
    EXPECT_TRUE(ProductConfigManager(store).Add(product));
    EXPECT_TRUE(ProductConfigManager(store).Update(product));
    EXPECT_FALSE(FilesThatHold("a name that stays"_q).isEmpty());
    EXPECT_EQ(FilesThatHold(Marker), QStringList());
    EXPECT_FALSE(CapturedLog::Text().contains(Marker));
}

TEST_F(Secrets, LongConsumerSecretOnPagesOfItsOwnIsGoneFromTheFilesAfterRemove)
{
    ProductConfiguration product;
    product.setConsumerSecret(QString(20000, QLatin1Char('x')) + Marker);
    EXPECT_TRUE(ProductConfigManager(store).Add(product));
    EXPECT_FALSE(FilesThatHold(Marker).isEmpty());
    OpenStore();
    EXPECT_TRUE(ProductConfigManager(store).Remove(product.getId()));
    EXPECT_EQ(FilesThatHold(Marker), QStringList());
}

} // namespace
