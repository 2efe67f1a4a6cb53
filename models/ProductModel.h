#pragma once

#include "RecordTableModel.h"
#include "TandryModelsExport.h"

#include <memory>

namespace sync::interf::factory {
class IDatabaseFactory;
}

namespace sync::models {

/// The consumer products of a store, with the columns of `sync::config::ProductConfiguration` except the secret and the
/// properties.
class TANDRY_MODELS_EXPORT ProductModel : public RecordTableModel
{
    Q_OBJECT

public:
    /// Reads nothing yet. Keeps a share of the factory, which must not be null.
    explicit ProductModel(std::shared_ptr<sync::interf::factory::IDatabaseFactory> factory, QObject* parent = nullptr);
    ~ProductModel() override;
};

} // namespace sync::models
