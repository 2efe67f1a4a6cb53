#include "interf/IRefreshNativeFileViewer.h"

namespace sync::interf {

IRefreshNativeFileViewer::IRefreshNativeFileViewer() = default;
IRefreshNativeFileViewer::~IRefreshNativeFileViewer() = default;

} // namespace sync::interf
