#pragma once

class QString;

namespace sync::config {

/// The rights that the words of a text name, in any case, with blanks between them: 1 view, 2 download, 4 update,
/// 8 delete, 16 share. Unknown words count for nothing.
int PrivilegesFromWords(QString const& text);

} // namespace sync::config
