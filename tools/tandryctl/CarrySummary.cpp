#include "CarrySummary.h"

namespace tandryctl {

using tandry::carry::RecordCounts;

qint64 SumOf(RecordCounts const& counts)
{
    qint64 sum = 0;
    for (auto const& [records, count] : counts)
        sum += count;
    return sum;
}

QVariantMap ToMap(RecordCounts const& counts)
{
    QVariantMap map;
    for (auto const& [records, count] : counts)
        map.insert(records, count);
    return map;
}

} // namespace tandryctl
