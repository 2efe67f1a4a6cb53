#include "interf/IQSqlDatabaseWrapper.h"

namespace sync::interf {

IQSqlDatabaseWrapper::IQSqlDatabaseWrapper() = default;
IQSqlDatabaseWrapper::~IQSqlDatabaseWrapper() = default;

bool IQSqlDatabaseWrapper::isOpen()
{
    return true;
}

QString IQSqlDatabaseWrapper::lastError()
{
    return {};
}

} // namespace sync::interf
