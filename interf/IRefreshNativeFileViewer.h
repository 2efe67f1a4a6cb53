#pragma once

#include "interf/TandryInterfacesExport.h"

#include <QObject>
#include <QString>

namespace sync::interf {

/// Asks the desktop shell to redraw what it shows about a path. The client implements it.
class TANDRY_INTERFACES_EXPORT IRefreshNativeFileViewer : public QObject
{
    Q_OBJECT

public:
    IRefreshNativeFileViewer();
    ~IRefreshNativeFileViewer() override;

    /// Runs on the thread that called the manager, and inside the open scope of the write it reports, so it must be
    /// quick and must not call back into a manager. The path may be a null text.
    virtual void Refresh(QString path) = 0;
};

} // namespace sync::interf
