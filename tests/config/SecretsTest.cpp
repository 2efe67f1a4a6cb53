#include "config/AuthenticationConfigManager.h"
#include "config/ProductConfigManager.h"

#include "interf/IQSqlDatabaseWrapper.h"
#include "support/FolderContents.h"
#include "support/QtPrinters.h"
#include "support/StoreFixture.h"

#include <gtest/gtest.h>

#include <QDirIterator>
#include <QFile>
#include <QLoggingCategory>
#include <QTextCodec>

#include <thread>

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

class Secrets : public EachJournalMode
{
protected:
    /// Returns the files of the closed store that contain a text, in any encoding in which SQLite could store it.
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
                int const size = static_cast<int>(text.size());
                if (bytes.contains(
                        QTextCodec::codecForName(encoding)->fromUnicode(text.constData(), size, &withoutMark)))
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

TANDRY_IN_EACH_JOURNAL_MODE(Secrets);

TEST_P(Secrets, PasswordReachesNeitherStoreNorLogThroughAnyOperation)
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

TEST_P(Secrets, PasswordReachesNeitherErrorNorLogWhenTheStoreFails)
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

TEST_P(Secrets, StoredPasswordIsOverwrittenByUpdatePasswordAndByUpdate)
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

TEST_P(Secrets, ConsumerSecretIsGoneFromTheFilesAfterRemove)
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

TEST_P(Secrets, ConsumerSecretIsGoneFromTheFilesAfterAddAndRemoveInOneOpening)
{
    ProductConfiguration product;
    product.setConsumerSecret(Marker);
    EXPECT_TRUE(ProductConfigManager(store).Add(product));
    EXPECT_TRUE(ProductConfigManager(store).Remove(product.getId()));
    EXPECT_EQ(FilesThatHold(Marker), QStringList());
}

TEST_P(Secrets, ConsumerSecretIsGoneFromTheFilesAfterUpdate)
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

TEST_P(Secrets, LongConsumerSecretOnPagesOfItsOwnIsGoneFromTheFilesAfterRemove)
{
    ProductConfiguration product;
    product.setConsumerSecret(QString(20000, QLatin1Char('x')) + Marker);
    EXPECT_TRUE(ProductConfigManager(store).Add(product));
    EXPECT_FALSE(FilesThatHold(Marker).isEmpty());
    OpenStore();
    EXPECT_TRUE(ProductConfigManager(store).Remove(product.getId()));
    EXPECT_EQ(FilesThatHold(Marker), QStringList());
}

/// SQLite moves rows within their pages and between them, and overwrites only what it removes.
TEST_P(Secrets, ConsumerSecretsAreGoneFromTheFilesThoughTheirRowsWereMoved)
{
    unsigned random = 1; // always the same life
    auto const below = [&](int limit) {
        random = random * 1664525u + 1013904223u;
        return static_cast<int>((random >> 8) % static_cast<unsigned>(limit));
    };
    auto const textUpTo = [&](int limit) { return QString(below(limit), QLatin1Char('x')); };
    int left = 0;
    for (int life = 0; life < 8; ++life) {
        QVector<ProductConfiguration> kept;
        QStringList gone;
        {
            ProductConfigManager products(store);
            ASSERT_TRUE(store->CreateDatabase()->transaction()) << "or each write takes a flush";
            for (int number = 0; number < 600; ++number) {
                if (number == 300) { // another connection comes and goes
                    ASSERT_TRUE(store->CreateDatabase()->commit());
                    std::thread([&] { products.GetAll(); }).join();
                    ASSERT_TRUE(store->CreateDatabase()->transaction());
                }
                if (kept.isEmpty() || below(2) == 0) {
                    ProductConfiguration product;
                    product.setName(textUpTo(300));
                    product.setConsumerSecret(QStringLiteral("%1 %2.%3;").arg(Marker).arg(life).arg(number) +
                                              textUpTo(700));
                    ASSERT_TRUE(products.Add(product));
                    kept.append(product);
                    continue;
                }
                int const chosen = below(static_cast<int>(kept.size()));
                ProductConfiguration product = kept.at(chosen);
                gone.append(product.getConsumerSecret().section(QLatin1Char(';'), 0, 0) + QLatin1Char(';'));
                if (below(5) < 2) {
                    ASSERT_TRUE(products.Remove(product.getId()));
                    kept.remove(chosen);
                    continue;
                }
                product.setName(textUpTo(900));
                ASSERT_TRUE(products.Update(product));
            }
            ASSERT_TRUE(store->CreateDatabase()->commit());
        }
        store.reset();
        QByteArray const file = ReadFile(StorePath());
        for (QString const& secret : gone)
            left += file.contains(secret.toUtf8()) ? 1 : 0;
        OpenStore();
    }
    EXPECT_EQ(left, 0);
}

} // namespace
