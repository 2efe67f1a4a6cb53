#include "models/ServerModel.h"

#include "config/ServerConfiguration.h"
#include "models/RecordRows.h"

#include <utility>

namespace sync::models {

namespace {

const QString ServerTable = QStringLiteral("ServerConfiguration");

} // namespace

ServerModel::ServerModel(std::shared_ptr<sync::interf::factory::IDatabaseFactory> factory, QObject* parent)
    : RecordTableModel(
          RecordRows::Of<sync::config::ServerConfiguration>(std::move(factory), ServerTable), ServerTable, parent)
{}

ServerModel::~ServerModel() = default;

} // namespace sync::models
