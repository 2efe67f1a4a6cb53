#include "models/ProductModel.h"

#include "config/ProductConfiguration.h"
#include "models/RecordRows.h"

#include <utility>

namespace sync::models {

namespace {

const QString ProductTable = QStringLiteral("ProductConfiguration");

} // namespace

ProductModel::ProductModel(std::shared_ptr<sync::interf::factory::IDatabaseFactory> factory, QObject* parent)
    : RecordTableModel(
          RecordRows::Of<sync::config::ProductConfiguration>(std::move(factory), ProductTable), ProductTable, parent)
{}

ProductModel::~ProductModel() = default;

} // namespace sync::models
