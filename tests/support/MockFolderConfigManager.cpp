#include "support/MockFolderConfigManager.h"

namespace tandry::test {

MockFolderConfigManager::MockFolderConfigManager() = default;
MockFolderConfigManager::~MockFolderConfigManager() = default;

std::shared_ptr<testing::StrictMock<MockFolderConfigManager>> StrictFolderConfigManager()
{
    return std::make_shared<testing::StrictMock<MockFolderConfigManager>>();
}

} // namespace tandry::test
