#include "qml/FileListModel.h"

namespace sync::qml {

FileListModel::FileListModel()
{
    connect(this, &FileListModel::choiceChanged, this, [this] {
        if (auto* const model = static_cast<sync::models::FileListModel*>(sourceModel()))
            Choose(*model);
    });
    connect(this, &FileListModel::nameFilterChanged, this, [this] {
        if (auto* const model = static_cast<sync::models::FileListModel*>(sourceModel()))
            model->SetNameFilter(_nameFilter);
    });
}

void FileListModel::Prepare(sync::models::FileListModel& model)
{
    model.SetNameFilter(_nameFilter);
    Choose(model);
}

void FileListModel::Choose(sync::models::FileListModel& model) const
{
    if (_folderId != Unset)
        model.ShowFolder(_folderId);
    else if (_syncStatus != Unset && _rootFolderId != Unset)
        model.ShowStatus(_syncStatus, _rootFolderId);
    else if (_syncStatus != Unset)
        model.ShowStatus(_syncStatus);
    else if (_rootFolderId != Unset)
        model.ShowRoot(_rootFolderId);
    else
        model.ShowNothing();
}

} // namespace sync::qml
