#pragma once

#include "RecordTableModel.h"
#include "TandryModelsExport.h"

#include <memory>

namespace sync::interf::factory {
class IDatabaseFactory;
}

namespace sync::models {

/// The schedules of a store, with the columns of `sync::config::ScheduleEntry`.
class TANDRY_MODELS_EXPORT ScheduleModel : public RecordTableModel
{
    Q_OBJECT

public:
    /// Reads nothing yet. Keeps a share of the factory, which must not be null.
    explicit ScheduleModel(std::shared_ptr<sync::interf::factory::IDatabaseFactory> factory, QObject* parent = nullptr);
    ~ScheduleModel() override;
};

} // namespace sync::models
