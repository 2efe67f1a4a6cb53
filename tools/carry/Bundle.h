#pragma once

#include "tools/carry/Export.h"

class QIODevice;

namespace tandry::carry {

class Pseudonyms;

/// Puts the records of a store into a new one with pseudonyms for all texts; ids, numbers and times stay. Returns how
/// many there are; nothing if either store fails, whose `LastError` then tells why.
[[nodiscard]] std::optional<RecordCounts>
CopyWithPseudonyms(std::shared_ptr<sync::interf::factory::IDatabaseFactory> const& from,
                   std::shared_ptr<sync::interf::factory::IDatabaseFactory> const& to,
                   Pseudonyms& pseudonyms,
                   CarryProgress const& progress);

} // namespace tandry::carry
