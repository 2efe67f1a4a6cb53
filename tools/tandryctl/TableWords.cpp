#include "TableWords.h"

#include "tools/findings/TableNames.h"

#include <map>

namespace tandryctl {

QString WordForRecordOf(QString const& table)
{
    static std::map<QString, QString> const words{
        {QLatin1String(tandry::findings::Servers), QStringLiteral("server")},
        {QLatin1String(tandry::findings::Accounts), QStringLiteral("account")},
        {QLatin1String(tandry::findings::Products), QStringLiteral("product")},
        {QLatin1String(tandry::findings::Folders), QStringLiteral("folder")},
        {QLatin1String(tandry::findings::Files), QStringLiteral("file")},
        {QLatin1String(tandry::findings::GeneratedFiles), QStringLiteral("generated file")},
        {QLatin1String(tandry::findings::BaseFiles), QStringLiteral("base file")},
        {QLatin1String(tandry::findings::Schedules), QStringLiteral("schedule")},
    };
    auto const word = words.find(table);
    return word == words.end() ? QStringLiteral("file system") : word->second;
}

} // namespace tandryctl
