#pragma once

#include "TandryInterfacesExport.h"

#include <QObject>
#include <QString>

namespace sync::interf {

/// Asks the desktop shell to redraw a path. The client implements this interface.
class TANDRY_INTERFACES_EXPORT IRefreshNativeFileViewer : public QObject
{
    Q_OBJECT

public:
    IRefreshNativeFileViewer();
    ~IRefreshNativeFileViewer() override;

    /// Called on the thread that called the manager. A write calls it before its scope ends, when other threads and
    /// programs cannot write, so it should return quickly and not write to the store. The path may be null.
    virtual void Refresh(QString path) = 0;
};

} // namespace sync::interf
