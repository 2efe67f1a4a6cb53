#pragma once

#include "RecordTableModel.h"
#include "TandryModelsExport.h"

#include <memory>

namespace sync::interf::factory {
class IDatabaseFactory;
}

namespace sync::models {

/// The accounts of a store, with the columns of `sync::config::AuthenticationConfiguration` except the password.
class TANDRY_MODELS_EXPORT AccountModel : public RecordTableModel
{
    Q_OBJECT

public:
    /// Reads nothing yet. Keeps a share of the factory, which must not be null.
    explicit AccountModel(std::shared_ptr<sync::interf::factory::IDatabaseFactory> factory, QObject* parent = nullptr);
    ~AccountModel() override;
};

} // namespace sync::models
