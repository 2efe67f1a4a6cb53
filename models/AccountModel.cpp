#include "models/AccountModel.h"

#include "config/AuthenticationConfiguration.h"
#include "models/RecordRows.h"

#include <utility>

namespace sync::models {

namespace {

const QString AccountTable = QStringLiteral("AuthenticationConfiguration");

} // namespace

AccountModel::AccountModel(std::shared_ptr<sync::interf::factory::IDatabaseFactory> factory, QObject* parent)
    : RecordTableModel(RecordRows::Of<sync::config::AuthenticationConfiguration>(std::move(factory), AccountTable),
                       AccountTable,
                       parent)
{}

AccountModel::~AccountModel() = default;

} // namespace sync::models
