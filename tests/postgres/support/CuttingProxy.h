#pragma once

#include <QString>
#include <QTemporaryDir>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

namespace tandry::test {

/// Stands between the store and the shared server, and cuts a connection at a request, or has it hang there. A request
/// is what the server answers: a simple query, or a series of messages that ends with a Sync.
class CuttingProxy
{
public:
    enum class Cut
    {
        /// The server does not get the request.
        BeforeRequest,
        /// The server carries the request out, and its answer is lost.
        BeforeAnswer,
        /// The server does not get the request, and the client gets no sign of that.
        RequestSwallowed,
        /// The server carries the request out, and the client gets neither its answer nor a sign.
        AnswerSwallowed,
        /// The server gets the request after the client has given the connection up.
        RequestLate,
    };

    CuttingProxy();
    ~CuttingProxy();
    CuttingProxy(CuttingProxy const&) = delete;
    CuttingProxy& operator=(CuttingProxy const&) = delete;

    /// The URI of a profile, by way of the proxy.
    QString Uri(QString const& profile, QString const& parameters = {}) const;

    /// Cuts the connection whose request is the `request`-th from now on, once.
    void CutAt(int request, Cut cut);
    void CutNoMore() { _cutAt = 0; }
    /// Whether the cut has come.
    bool hasCut() const { return _cutAt == 0; }
    /// Returns how many requests there have been since the object was made.
    int requests() const { return _requests; }
    /// From now on new connections are closed at once, or taken again.
    void SetRefusing(bool refuses) { _refuses = refuses; }

private:
    void Accept();
    void Relay(int client, int server);
    bool PassRequests(std::string& bytes, bool& isStarted, int client, int server);
    void Interfere(std::string const& request, int client, int server);

    QTemporaryDir _folder;
    std::atomic<int> _requests{0};
    /// The number of the request; 0 for none.
    std::atomic<int> _cutAt{0};
    std::atomic<Cut> _cut{Cut::BeforeRequest};
    std::atomic<bool> _refuses{false};
    int _listener = -1;
    std::mutex _mutex; // guards what follows
    std::vector<int> _sockets;
    std::vector<std::thread> _relays;
    std::thread _acceptor;
};

} // namespace tandry::test
