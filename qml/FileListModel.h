#pragma once

#include "models/FileListModel.h"
#include "qml/StoreModel.h"

#include <QString>

namespace sync::qml {

/// The files of a folder or, if that is not set, those with a status or all of a root. Of a status, only the files of
/// the root if that is set. Nothing if none of them is set.
class FileListModel : public StoreModelOf<sync::models::FileListModel>
{
    Q_OBJECT
    Q_PROPERTY(int folderId MEMBER _folderId NOTIFY choiceChanged)
    Q_PROPERTY(int rootFolderId MEMBER _rootFolderId NOTIFY choiceChanged)
    Q_PROPERTY(int syncStatus MEMBER _syncStatus NOTIFY choiceChanged)
    Q_PROPERTY(QString nameFilter MEMBER _nameFilter NOTIFY nameFilterChanged)

public:
    FileListModel();

Q_SIGNALS:
    void choiceChanged();
    void nameFilterChanged();

private:
    void Prepare(sync::models::FileListModel& model) override;
    void Choose(sync::models::FileListModel& model) const;

    static constexpr int Unset = -1;
    int _folderId = Unset;
    int _rootFolderId = Unset;
    int _syncStatus = Unset;
    QString _nameFilter;
};

} // namespace sync::qml
