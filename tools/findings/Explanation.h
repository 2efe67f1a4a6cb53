#pragma once

#include <QString>
#include <QVariant>

#include <memory>
#include <optional>
#include <vector>

namespace sync::interf::factory {
class IDatabaseFactory;
}

namespace tandry::findings {

struct Fact
{
    /// Of a record, the column's name.
    QString name;
    QVariant value;
    /// The value in words, if it has a name; else null.
    QString words;
};

/// The facts that answer one question about a path.
struct ExplanationPart
{
    /// Stable: scripts rely on it.
    char const* code;
    /// For people.
    QString title;
    std::vector<Fact> facts;
};

/// Something that keeps a path from being in sync.
struct Hindrance
{
    /// Stable: scripts rely on it.
    char const* code;
    /// Part of a sentence, without a capital and without a full stop.
    QString text;
};

/// All facts about a path, in the order in which a person asks for them.
struct Explanation
{
    /// Returns one sentence: what keeps the path from being in sync, if anything.
    QString Conclusion() const;

    QString path;
    bool isOnRecord = false;
    std::vector<ExplanationPart> parts;
    std::vector<Hindrance> hindrances;
    /// Whether the path has a status that only the client can read.
    std::optional<int> clientsStatus;
};

/// The path or record to explain, and the limits of the explanation.
struct ExplanationRequest
{
    enum class By
    {
        /// The absolute path on this computer.
        ClientPath,
        /// The path on the server.
        ServerPath,
        FolderId,
        FileId,
        GeneratedFileId,
        BaseFileId
    };

    By by = By::ClientPath;
    QString path;
    int id = 0;
    /// Reads whole tables too where no index helps: for links to a file, and for base files. Small tables are always
    /// read.
    bool isThorough = false;
};

/// Returns the explanation; nothing if there is no row with this id, or nothing on record with this path on the server.
/// A path on this computer always has one. Changes nothing. If the store fails, something may be missing; its
/// `LastError` then tells why.
std::optional<Explanation> Explain(std::shared_ptr<sync::interf::factory::IDatabaseFactory> const& store,
                                   ExplanationRequest const& request);

} // namespace tandry::findings
