#include "interf/IQSqlQueryWrapper.h"

namespace sync::interf {

IQSqlQueryWrapper::IQSqlQueryWrapper() = default;
IQSqlQueryWrapper::~IQSqlQueryWrapper() = default;

QString IQSqlQueryWrapper::lastError()
{
    return {};
}

void IQSqlQueryWrapper::finish() {}

} // namespace sync::interf
