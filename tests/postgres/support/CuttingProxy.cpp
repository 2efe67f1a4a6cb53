#include "postgres/support/CuttingProxy.h"

#include "postgres/support/PostgresServer.h"

#include <QFile>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace tandry::test {

namespace {

constexpr std::size_t LengthBytes = 4;

sockaddr_un AddressIn(QString const& folder)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    QByteArray const path = QFile::encodeName(folder + QStringLiteral("/.s.PGSQL.5432"));
    std::memcpy(address.sun_path, path.constData(), std::min<std::size_t>(path.size(), sizeof address.sun_path - 1));
    return address;
}

/// The length of the message that the bytes begin with; 0 if it is not known yet. A length counts itself, not the type.
std::size_t MessageBytes(std::string const& bytes, bool hasType)
{
    std::size_t const typeBytes = hasType ? 1 : 0;
    if (bytes.size() < typeBytes + LengthBytes)
        return 0;
    std::size_t length = 0;
    for (std::size_t i = 0; i < LengthBytes; ++i)
        length = (length << 8) | static_cast<unsigned char>(bytes[typeBytes + i]);
    return typeBytes + length;
}

/// Appends what can be read. Returns false at the end.
bool Receive(int socket, std::string& bytes)
{
    char buffer[16 * 1024];
    ssize_t const read = ::recv(socket, buffer, sizeof buffer, 0);
    if (read > 0)
        bytes.append(buffer, static_cast<std::size_t>(read));
    return read > 0;
}

bool Send(int socket, std::string const& bytes)
{
    for (std::size_t sent = 0; sent < bytes.size();) {
        ssize_t const more = ::send(socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (more <= 0)
            return false;
        sent += static_cast<std::size_t>(more);
    }
    return true;
}

/// Reads answers up to the one that tells that the server is ready for the next request.
void DropAnswer(int server)
{
    std::string bytes;
    while (Receive(server, bytes)) {
        for (std::size_t length = MessageBytes(bytes, true); length > 0 && length <= bytes.size();
             length = MessageBytes(bytes, true)) {
            if (bytes.front() == 'Z')
                return;
            bytes.erase(0, length);
        }
    }
}

/// Reads until the other side closes the connection.
void DropAllOf(int socket)
{
    for (std::string bytes; Receive(socket, bytes);)
        bytes.clear();
}

} // namespace

CuttingProxy::CuttingProxy()
    : _listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_un const address = AddressIn(_folder.path());
    EXPECT_EQ(::bind(_listener, reinterpret_cast<sockaddr const*>(&address), sizeof address), 0);
    EXPECT_EQ(::listen(_listener, 16), 0);
    _acceptor = std::thread([this] { Accept(); });
}

CuttingProxy::~CuttingProxy()
{
    ::shutdown(_listener, SHUT_RDWR);
    _acceptor.join();
    ::close(_listener);
    for (int const socket : _sockets)
        ::shutdown(socket, SHUT_RDWR);
    for (std::thread& relay : _relays)
        relay.join();
    for (int const socket : _sockets)
        ::close(socket);
}

QString CuttingProxy::Uri(QString const& profile, QString const& parameters) const
{
    QString uri = PostgresServer::Shared().Uri(profile, parameters);
    return uri.replace(PostgresServer::Shared().host(), _folder.path());
}

void CuttingProxy::CutAt(int request, Cut cut)
{
    _cut = cut;
    _cutAt = _requests + request;
}

void CuttingProxy::Accept()
{
    sockaddr_un const address = AddressIn(PostgresServer::Shared().host());
    for (;;) {
        int const client = ::accept4(_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (client < 0)
            return;
        int const server = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        bool const isThere =
            !_refuses && ::connect(server, reinterpret_cast<sockaddr const*>(&address), sizeof address) == 0;
        if (!isThere) {
            ::close(client);
            ::close(server);
            continue;
        }
        std::lock_guard<std::mutex> const lock(_mutex);
        _sockets.insert(_sockets.end(), {client, server});
        _relays.emplace_back([this, client, server] { Relay(client, server); });
    }
}

void CuttingProxy::Relay(int client, int server)
{
    std::string pending;
    bool isStarted = false;
    bool isOpen = true;
    while (isOpen) {
        pollfd sockets[] = {{client, POLLIN, 0}, {server, POLLIN, 0}};
        isOpen = ::poll(sockets, 2, -1) > 0;
        if (isOpen && sockets[1].revents != 0) {
            std::string answer;
            isOpen = Receive(server, answer) && Send(client, answer);
        }
        if (isOpen && sockets[0].revents != 0)
            isOpen = Receive(client, pending) && PassRequests(pending, isStarted, client, server);
    }
    ::shutdown(client, SHUT_RDWR);
    ::shutdown(server, SHUT_RDWR);
}

/// Passes the whole messages on. Returns false if the connection is to be cut.
bool CuttingProxy::PassRequests(std::string& bytes, bool& isStarted, int client, int server)
{
    for (std::size_t length = MessageBytes(bytes, isStarted); length > 0 && length <= bytes.size();
         length = MessageBytes(bytes, isStarted)) {
        std::string const message = bytes.substr(0, length);
        bytes.erase(0, length);
        bool const isRequest = isStarted && (message.front() == 'Q' || message.front() == 'S');
        bool const cuts = isRequest && ++_requests == _cutAt;
        isStarted = true; // the first message has no type
        if (cuts) {
            _cutAt = 0;
            Interfere(message, client, server);
            return false;
        }
        if (!Send(server, message))
            return false;
    }
    return true;
}

void CuttingProxy::Interfere(std::string const& request, int client, int server)
{
    Cut const cut = _cut;
    if (cut == Cut::RequestLate)
        DropAllOf(client);
    bool const passes = cut != Cut::BeforeRequest && cut != Cut::RequestSwallowed;
    if (passes && Send(server, request))
        DropAnswer(server);
    if (cut == Cut::RequestSwallowed || cut == Cut::AnswerSwallowed)
        DropAllOf(client);
}

} // namespace tandry::test
