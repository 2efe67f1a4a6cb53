#include "models/ScheduleModel.h"

#include "config/ScheduleEntry.h"
#include "models/RecordRows.h"

#include <utility>

namespace sync::models {

namespace {

const QString ScheduleTable = QStringLiteral("Schedules");

} // namespace

ScheduleModel::ScheduleModel(std::shared_ptr<sync::interf::factory::IDatabaseFactory> factory, QObject* parent)
    : RecordTableModel(
          RecordRows::Of<sync::config::ScheduleEntry>(std::move(factory), ScheduleTable), ScheduleTable, parent)
{}

ScheduleModel::~ScheduleModel() = default;

} // namespace sync::models
