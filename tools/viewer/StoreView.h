#pragma once

#include "tools/viewer/OpenedStore.h"

#include "database/StoreError.h"

#include <QWidget>

#include <map>
#include <optional>

QT_BEGIN_NAMESPACE
class QCheckBox;
class QLabel;
class QLineEdit;
class QModelIndex;
class QTableView;
class QTimer;
class QTreeView;
QT_END_NAMESPACE

namespace sync::models {
class FileListModel;
class FolderTreeModel;
class StoreWatcher;
} // namespace sync::models

namespace tandry::findings {
struct StoreStatus;
}

namespace tandry::viewer {

class BackgroundReader;
class DetailsView;
class FileTable;
class FolderTable;
class RootTable;

/// Shows an open store: roots above, folders on the left, files on the right, details below. Follows changes while the
/// store itself is read, and not a copy.
class StoreView : public QWidget
{
    Q_OBJECT

public:
    /// Shows the store, which must be open.
    explicit StoreView(OpenedStore const& opened, QWidget* parent = nullptr);
    ~StoreView() override;

    // The parts that a user goes to.
    QWidget* roots() const;
    QWidget* folders() const;
    QWidget* search() const;
    QWidget* files() const;
    QWidget* details() const;

Q_SIGNALS:
    /// Emitted with one line about the store's state.
    void SummaryChanged(QString const& text);

private:
    /// What can fail on its own.
    enum class Part
    {
        Watching,
        Files,
        Status
    };

    void _MakeModels();
    void _SetUpRoots();
    void _SetUpFolders();
    void _SetUpFiles();
    void _LayOut();
    void _Watch();
    void _Connect();

    void _ReadStatus();
    void _ShowStatus(findings::StoreStatus const& status, std::optional<sync::database::StoreError> const& error);
    /// Shows that a part does not work; a null text, that it works again.
    void _SetTrouble(Part part, QString const& text);
    void _ShowRemarks();
    void _ShowFilesOf(QModelIndex const& folder);
    void _Search();
    void _ShowDetailsOfFolder(QModelIndex const& folder);
    void _ShowDetailsOfFile(QModelIndex const& file);

    OpenedStore const _opened;
    sync::models::FolderTreeModel* _folderModel = nullptr;
    sync::models::FileListModel* _fileModel = nullptr;
    sync::models::StoreWatcher* _watcher = nullptr;
    RootTable* _rootTable = nullptr;
    FolderTable* _folderTable = nullptr;
    FileTable* _fileTable = nullptr;
    BackgroundReader* const _status;

    QLabel* const _remarks;
    QTableView* const _roots;
    QTreeView* const _folders;
    QLineEdit* const _search;
    QTimer* const _searchPause;
    QCheckBox* const _notSynced;
    QTableView* const _files;
    DetailsView* const _details;
    /// What does not work at the moment, in words.
    std::map<Part, QString> _troubles;
};

} // namespace tandry::viewer
