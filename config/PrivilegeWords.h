#pragma once

class QString;

namespace sync::config {

/// Returns the rights that the words of a text name, in any case, separated by spaces: 1 "view", 2 "download", 4
/// "update", 8 "delete", 16 "share". Ignores unknown words.
int PrivilegesFromWords(QString const& text);

} // namespace sync::config
