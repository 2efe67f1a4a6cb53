#include "postgres/ServerAddress.h"

#include "database/store/StoredValues.h"
#include "postgres/ServerErrors.h"

#include <libpq-fe.h>

#include <QByteArrayList>

#include <algorithm>
#include <memory>

namespace sync::database {

namespace {

constexpr int LongestProfile = 56;

struct FreeOptions
{
    void operator()(PQconninfoOption* options) const noexcept { PQconninfoFree(options); }
};

/// A server that is gone without a word is noticed after about a minute.
constexpr std::pair<char const*, char const*> Defaults[] = {
    {"connect_timeout", "10"},
    {"keepalives_idle", "30"},
    {"keepalives_interval", "10"},
    {"keepalives_count", "3"},
    {"tcp_user_timeout", "60000"},
    {"fallback_application_name", "tandry"},
};

StoreError Refuse(QString const& words)
{
    return MakeServerError(ServerState::Misuse, words);
}

bool IsProfileName(QByteArray const& name)
{
    return !name.isEmpty() && name.size() <= LongestProfile && std::all_of(name.begin(), name.end(), [](char letter) {
        return (letter >= 'a' && letter <= 'z') || (letter >= '0' && letter <= '9') || letter == '_' || letter == '-';
    });
}

/// Takes our own parameters out of a URI, which libpq would refuse.
Failure TakeOwnParameters(QByteArray& uri, ServerAddress& address)
{
    QByteArray profile = "default";
    int const query = uri.indexOf('?');
    if (query >= 0) {
        QByteArrayList others;
        for (QByteArray const& parameter : uri.mid(query + 1).split('&')) {
            int const separator = parameter.indexOf('=');
            QByteArray const key = parameter.left(separator);
            QByteArray const value =
                separator < 0 ? QByteArray() : QByteArray::fromPercentEncoding(parameter.mid(separator + 1));
            if (!key.startsWith("tandry_")) {
                others.append(parameter);
            }
            else if (key == "tandry_profile") {
                profile = value;
            }
            else if (key == "tandry_synchronous_commit" && value == "any") {
                address.acceptsAsyncCommit = true;
            }
            else {
                return Refuse(QStringLiteral("the URI has an unknown parameter or value: there are "
                                             "tandry_profile=NAME and tandry_synchronous_commit=any"));
            }
        }
        uri.truncate(query);
        if (!others.isEmpty())
            uri += '?' + others.join('&');
    }
    if (!IsProfileName(profile))
        return Refuse(QStringLiteral("tandry_profile must have 1 to %1 characters, of a-z, 0-9, '_' and '-'")
                          .arg(LongestProfile));
    address.schema = "tandry_" + profile;
    address.name = QStringLiteral("profile ") + QString::fromLatin1(profile);
    return {};
}

/// A password with an "@", "/" or "?" that is not encoded ends early, and libpq takes the rest for a host, a port or a
/// database, which messages show.
bool HasPartOfAPasswordElsewhere(QByteArray const& uri, ServerAddress const& address)
{
    QByteArray const beforeQuery = uri.mid(uri.indexOf("://") + 3).split('?').first();
    if (beforeQuery.count('@') > (beforeQuery.split('/').first().contains('@') ? 1 : 0))
        return true;
    QByteArray const ports = address.Value("port");
    return std::any_of(
        ports.begin(), ports.end(), [](char letter) { return letter != ',' && (letter < '0' || letter > '9'); });
}

/// The hosts of a keyword in the URI or, if it names none, of the environment. A service comes between both, and is not
/// read here.
QByteArray Hosts(ServerAddress const& address, char const* keyword, char const* variable, bool hasService)
{
    QByteArray const hosts = address.Value(keyword);
    return hosts.isEmpty() && !hasService ? qgetenv(variable) : hosts;
}

/// Whether the hosts are known, and no other machine can listen in. For a socket of this machine libpq uses no
/// encryption anyway.
bool AreThisMachine(QByteArray const& hosts)
{
    QByteArrayList const list = hosts.split(',');
    return std::all_of(list.begin(), list.end(), [](QByteArray const& host) {
        return host == "localhost" || host == "127.0.0.1" || host == "::1" || host.startsWith('/') ||
               host.startsWith('@');
    });
}

} // namespace

QByteArray ServerAddress::Value(QByteArray const& keyword) const
{
    auto const found = std::find_if(
        parameters.begin(), parameters.end(), [&](auto const& parameter) { return parameter.first == keyword; });
    return found == parameters.end() ? QByteArray() : found->second;
}

Failure ServerAddress::Parse(QString const& uri, ServerAddress& address)
{
    QByteArray text = uri.toUtf8();
    if (!text.startsWith("postgresql://") && !text.startsWith("postgres://"))
        return Refuse(QStringLiteral("the store's URI must begin with postgresql://"));
    if (!IsUnicode(uri) || uri.contains(QChar(0)))
        return Refuse(QStringLiteral("the store's URI is no Unicode text, or has a null character"));
    if (Failure failure = TakeOwnParameters(text, address))
        return failure;

    char* message = nullptr;
    std::unique_ptr<PQconninfoOption, FreeOptions> const options(PQconninfoParse(text.constData(), &message));
    PQfreemem(message); // may quote the password
    for (PQconninfoOption const* option = options.get(); option != nullptr && option->keyword != nullptr; ++option) {
        if (option->val == nullptr || *option->val == '\0')
            continue;
        address.parameters.emplace_back(option->keyword, option->val);
        if (qstrcmp(option->dispchar, "*") == 0)
            address.secrets.emplace_back(option->val);
    }
    if (options == nullptr || HasPartOfAPasswordElsewhere(text, address))
        return Refuse(QStringLiteral(
            "the store's URI can't be read: expected postgresql://user@host:port/database?parameter=value, with other "
            "characters percent-encoded and only parameters of libpq or of Tandry"));

    for (auto const& [keyword, value] : Defaults) {
        if (address.Value(keyword).isEmpty())
            address.parameters.emplace_back(keyword, value);
    }
    QByteArray const service = address.Value("service");
    bool const hasService = !service.isEmpty() || qEnvironmentVariableIsSet("PGSERVICE");
    // libpq prefers addresses to names, and they may come from the service.
    QByteArray const addresses = Hosts(address, "hostaddr", "PGHOSTADDR", hasService);
    QByteArray const hosts = addresses.isEmpty() ? Hosts(address, "host", "PGHOST", hasService) : addresses;
    bool const isKnown = !hosts.isEmpty() && !(addresses.isEmpty() && hasService);
    if (address.Value("sslmode").isEmpty() && !(isKnown && AreThisMachine(hosts)))
        address.parameters.emplace_back("sslmode", "verify-full");
    address.parameters.emplace_back("client_encoding", "UTF8");

    QString const host = hosts.isEmpty() && !service.isEmpty() ? QStringLiteral("service ") + QString::fromUtf8(service)
                                                               : QString::fromUtf8(hosts);
    QByteArray const port = address.Value("port");
    address.name = QStringLiteral("postgresql://%1%2/%3 (%4)")
                       .arg(host,
                            port.isEmpty() ? QString() : QLatin1Char(':') + QString::fromUtf8(port),
                            QString::fromUtf8(address.Value("dbname")),
                            address.name);
    return {};
}

} // namespace sync::database
