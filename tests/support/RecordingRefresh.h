#pragma once

#include "interf/IRefreshNativeFileViewer.h"

#include <QString>
#include <QVector>

namespace tandry::test {

/// A refresh object that records its paths in order.
class RecordingRefresh : public sync::interf::IRefreshNativeFileViewer
{
public:
    void Refresh(QString path) override { paths.append(path); }

    QVector<QString> paths;
};

} // namespace tandry::test
