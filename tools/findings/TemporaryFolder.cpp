#include "tools/findings/TemporaryFolder.h"

#include <QFile>

namespace tandry::findings {

QDir TemporaryFolder()
{
    QByteArray const named = qgetenv("TMPDIR");
    return {named.isEmpty() ? QStringLiteral("/tmp") : QDir(QFile::decodeName(named)).absolutePath()};
}

} // namespace tandry::findings
