#include "database/ScopeParticipant.h"

namespace sync::database {

ScopeParticipant::ScopeParticipant() = default;
ScopeParticipant::~ScopeParticipant() = default;

} // namespace sync::database
