#pragma once

#include "RecordTableModel.h"
#include "TandryModelsExport.h"

#include <memory>

namespace sync::interf::factory {
class IDatabaseFactory;
}

namespace sync::models {

/// The servers of a store, with the columns of `sync::config::ServerConfiguration`.
class TANDRY_MODELS_EXPORT ServerModel : public RecordTableModel
{
    Q_OBJECT

public:
    /// Reads nothing yet. Keeps a share of the factory, which must not be null.
    explicit ServerModel(std::shared_ptr<sync::interf::factory::IDatabaseFactory> factory, QObject* parent = nullptr);
    ~ServerModel() override;
};

} // namespace sync::models
