#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

class QIODevice;

namespace sync::interf::factory {
class IDatabaseFactory;
}

namespace tandry::carry {

/// The first line of an export says both.
constexpr char const* FormatName = "tandry-export";
constexpr int FormatVersion = 1;

struct ExportOptions
{
    /// Of `ChosenRecords`; empty for the whole store.
    QStringList records;
    bool withSecrets = false;
};

/// The words for a kind of records, and how many there are.
using RecordCounts = std::vector<std::pair<QString, qint64>>;

/// Called after each record.
using CarryProgress = std::function<void()>;

/// An export of a store that nobody changes meanwhile. Its memory does not grow with the texts, and by 8 bytes at most
/// for a row.
class Export
{
public:
    Export(std::shared_ptr<sync::interf::factory::IDatabaseFactory> store, ExportOptions options);
    ~Export();

    /// Counts and numbers the records. Returns nothing if the store fails; its `LastError` then tells why.
    [[nodiscard]] std::optional<RecordCounts> Prepare();

    /// Writes the records after `Prepare`, as docs/export-format.md describes. Returns false if the store or the device
    /// fails.
    [[nodiscard]] bool Write(QIODevice& device, CarryProgress const& progress);

private:
    Q_DISABLE_COPY_MOVE(Export)

    class Rows;

    std::unique_ptr<Rows> const _rows;
};

} // namespace tandry::carry
