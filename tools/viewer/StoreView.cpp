#include "tools/viewer/StoreView.h"

#include "config/FileConfiguration.h"
#include "database/SqliteDatabaseFactory.h"
#include "models/FileListModel.h"
#include "models/FolderTreeModel.h"
#include "models/StoreWatcher.h"
#include "tools/findings/StoreAdvice.h"
#include "tools/findings/StoreStatus.h"
#include "tools/viewer/BackgroundReader.h"
#include "tools/viewer/BarDelegate.h"
#include "tools/viewer/DetailsView.h"
#include "tools/viewer/FileTable.h"
#include "tools/viewer/FolderTable.h"
#include "tools/viewer/RootTable.h"
#include "tools/viewer/Sentence.h"

#include <QCheckBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QSplitter>
#include <QTableView>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>

namespace tandry::viewer {

using sync::database::StoreError;
using sync::database::StoreErrorKind;
using sync::models::FileListModel;
using sync::models::FolderTreeModel;
using sync::models::StoreWatcher;

namespace {

/// A pause in typing after which the files are searched.
constexpr int SearchPauseMsec = 150;

/// The first width of a column of files, in multiples of its title's.
constexpr int WidthInTitles = 3;

/// A view with a title above it, whose mnemonic leads to it.
QWidget* WithTitle(QString const& title, QWidget* view)
{
    auto* const titled = new QWidget;
    auto* const label = new QLabel(title, titled);
    label->setBuddy(view);
    auto* const layout = new QVBoxLayout(titled);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(label);
    layout->addWidget(view);
    return titled;
}

/// A table of rows. Its Tab key leads out of it.
void MakeRowsOf(QTableView& table)
{
    table.setSelectionBehavior(QAbstractItemView::SelectRows);
    table.setSelectionMode(QAbstractItemView::SingleSelection);
    table.setTabKeyNavigation(false);
    table.setShowGrid(false);
    table.setWordWrap(false);
    table.setTextElideMode(Qt::ElideMiddle);
    table.setAlternatingRowColors(true);
    table.verticalHeader()->hide();
    table.horizontalHeader()->setHighlightSections(false);
}

/// Whether another program is just opening, closing or changing the store, so that a notice follows.
bool IsPassing(StoreError const& error)
{
    return error.kind == StoreErrorKind::Locked || error.kind == StoreErrorKind::NotClosed;
}

QString InWords(StoreError const& error)
{
    return ToSentence(error.text) + QLatin1Char(' ') + ToSentence(findings::AdviceOn(error.kind));
}

} // namespace

StoreView::StoreView(OpenedStore const& opened, QWidget* parent)
    : QWidget(parent)
    , _opened(opened)
    , _status(new BackgroundReader(this))
    , _remarks(new QLabel(this))
    , _roots(new QTableView(this))
    , _folders(new QTreeView(this))
    , _search(new QLineEdit(this))
    , _searchPause(new QTimer(this))
    , _notSynced(new QCheckBox(tr("&Not synced only"), this))
    , _files(new QTableView(this))
    , _details(new DetailsView(opened.store, this))
{
    _MakeModels();
    _SetUpRoots();
    _SetUpFolders();
    _SetUpFiles();
    _LayOut();
    _Connect();
    _Watch();
    _ShowRemarks();
    _ReadStatus();

    _folderTable->fetchMore({});
    QModelIndex const first = _folderTable->index(0, 0);
    _folders->setCurrentIndex(first);
    _folders->expand(first);
}

StoreView::~StoreView() = default;

QWidget* StoreView::roots() const
{
    return _roots;
}

QWidget* StoreView::folders() const
{
    return _folders;
}

QWidget* StoreView::search() const
{
    return _search;
}

QWidget* StoreView::files() const
{
    return _files;
}

QWidget* StoreView::details() const
{
    return _details;
}

void StoreView::_MakeModels()
{
    _folderModel = new FolderTreeModel(_opened.store, this);
    _folderTable = new FolderTable(*_folderModel, this);
    _fileModel = new FileListModel(_opened.store, this);
    _fileTable = new FileTable(*_fileModel, this);
    _rootTable = new RootTable(this);
}

void StoreView::_SetUpRoots()
{
    MakeRowsOf(*_roots);
    _roots->setAccessibleName(tr("Roots"));
    _roots->setModel(_rootTable);
    _roots->setItemDelegateForColumn(RootTable::OutOfSync, new BarDelegate(_roots));
    _roots->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    _roots->horizontalHeader()->setStretchLastSection(true);
    _roots->verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
}

void StoreView::_SetUpFolders()
{
    _folders->setAccessibleName(tr("Folders"));
    _folders->setModel(_folderTable);
    _folders->setUniformRowHeights(true);
    _folders->setTextElideMode(Qt::ElideMiddle);
    _folders->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    _folders->header()->setResizeContentsPrecision(0); // the rows that can be seen
    _folders->header()->setStretchLastSection(true);
}

void StoreView::_SetUpFiles()
{
    _search->setAccessibleName(tr("Search files by name"));
    _search->setPlaceholderText(tr("Part of a name in this root"));
    _search->setClearButtonEnabled(true);
    _notSynced->setAccessibleName(tr("Not synced only"));
    _searchPause->setSingleShot(true);
    _searchPause->setInterval(SearchPauseMsec);

    MakeRowsOf(*_files);
    _files->setAccessibleName(tr("Files"));
    _files->setModel(_fileTable);
    QHeaderView& header = *_files->horizontalHeader();
    for (int column = 0; column < _fileTable->columnCount(); ++column)
        _files->setColumnHidden(column, true);
    QVector<int> const shown = _fileTable->ShownColumns();
    for (int place = 0; place < shown.size(); ++place) {
        int const column = shown.at(place);
        _files->setColumnHidden(column, false);
        header.moveSection(header.visualIndex(column), place);
        // By the title: the rows are not read yet.
        _files->setColumnWidth(column, WidthInTitles * header.sectionSizeHint(column));
    }
    header.setStretchLastSection(true);
    _files->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    _files->verticalHeader()->setDefaultSectionSize(_files->verticalHeader()->minimumSectionSize());
    header.setSortIndicator(shown.front(), Qt::AscendingOrder);
    _files->setSortingEnabled(true);
}

void StoreView::_LayOut()
{
    _remarks->setTextFormat(Qt::PlainText);
    _remarks->setWordWrap(true);
    _remarks->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);

    auto* const found = new QWidget;
    auto* const searchLabel = new QLabel(tr("&Search:"), found);
    searchLabel->setBuddy(_search);
    auto* const searchRow = new QHBoxLayout;
    searchRow->addWidget(searchLabel);
    searchRow->addWidget(_search);
    searchRow->addWidget(_notSynced);
    auto* const foundLayout = new QVBoxLayout(found);
    foundLayout->setContentsMargins(0, 0, 0, 0);
    foundLayout->addLayout(searchRow);
    foundLayout->addWidget(WithTitle(tr("F&iles"), _files));

    auto* const middle = new QSplitter(Qt::Horizontal);
    middle->addWidget(WithTitle(tr("F&olders"), _folders));
    middle->addWidget(found);
    middle->setStretchFactor(0, 2);
    middle->setStretchFactor(1, 5);

    auto* const all = new QSplitter(Qt::Vertical);
    all->addWidget(WithTitle(tr("&Roots"), _roots));
    all->addWidget(middle);
    all->addWidget(WithTitle(tr("&Details"), _details));
    all->setStretchFactor(0, 2);
    all->setStretchFactor(1, 5);
    all->setStretchFactor(2, 4);

    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(_remarks);
    layout->addWidget(all, 1);

    _details->setTabChangesFocus(true);
    setTabOrder(_roots, _folders);
    setTabOrder(_folders, _search);
    setTabOrder(_search, _notSynced);
    setTabOrder(_notSynced, _files);
    setTabOrder(_files, _details);
}

void StoreView::_Connect()
{
    // The selection, since a table that gets the focus makes its first row the current one.
    connect(_roots->selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
        QModelIndex const root = _roots->selectionModel()->selectedRows().value(0);
        QModelIndex const folder = _folderTable->IndexOf(_rootTable->RootId(root));
        if (folder.isValid())
            _folders->setCurrentIndex(folder);
    });
    connect(
        _folders->selectionModel(), &QItemSelectionModel::currentRowChanged, this, [this](QModelIndex const& folder) {
            _files->setCurrentIndex({}); // no file of another folder takes its place while the rows change
            _ShowFilesOf(folder);
            _ShowDetailsOfFolder(folder);
        });
    connect(_files->selectionModel(), &QItemSelectionModel::currentRowChanged, this, [this](QModelIndex const& file) {
        _ShowDetailsOfFile(file);
    });
    connect(_search, &QLineEdit::textChanged, _searchPause, qOverload<>(&QTimer::start));
    connect(_fileModel, &FileListModel::Failed, this, [this](QString const& reason) {
        _SetTrouble(Part::Files, tr("The files could not be read.") + QLatin1Char(' ') + ToSentence(reason));
    });
    connect(_fileModel, &FileListModel::Loaded, this, [this] { _SetTrouble(Part::Files, {}); });
    connect(_notSynced, &QCheckBox::toggled, this, &StoreView::_Search);
    connect(_searchPause, &QTimer::timeout, this, &StoreView::_Search);
}

void StoreView::_Watch()
{
    if (_opened.copy != nullptr)
        return;
    _watcher = new StoreWatcher(_opened.store, this);
    _folderModel->Follow(*_watcher);
    _fileModel->Follow(*_watcher);
    connect(_watcher, &StoreWatcher::Changed, this, [this] {
        _status->Renew();
        _details->Refresh();
    });
    connect(_watcher, &StoreWatcher::Stopped, this, [this](StoreError const& error) {
        _SetTrouble(Part::Watching, InWords(error) + QLatin1Char(' ') + tr("F5 opens it again."));
    });
    if (!_watcher->isWatching()) {
        auto const error = _opened.store->LastError();
        _SetTrouble(Part::Watching,
                    tr("The store cannot be watched for changes.") +
                        (error ? QLatin1Char(' ') + InWords(*error) : QString()));
        _opened.store->ClearError();
    }
}

void StoreView::_ReadStatus()
{
    _status->Read([this, store = _opened.store]() -> BackgroundReader::Answer {
        store->ClearError();
        findings::StoreStatus const status = findings::ReadStatus(store);
        std::optional<StoreError> const error = store->LastError();
        return [this, status, error] { _ShowStatus(status, error); };
    });
}

void StoreView::_ShowStatus(findings::StoreStatus const& status, std::optional<StoreError> const& error)
{
    _SetTrouble(Part::Status, error && !IsPassing(*error) ? InWords(*error) : QString());
    if (error)
        return;
    _rootTable->SetStatus(status);
    QLocale const locale;
    qint64 const outOfSync = _rootTable->outOfSync();
    Q_EMIT SummaryChanged(status.roots.empty() ? tr("No roots on record")
                          : outOfSync == 0     ? tr("Nothing out of sync")
                                               : tr("%1 out of sync").arg(locale.toString(outOfSync)));
}

void StoreView::_SetTrouble(Part part, QString const& text)
{
    if (text.isNull())
        _troubles.erase(part);
    else
        _troubles[part] = text;
    _ShowRemarks();
}

void StoreView::_ShowRemarks()
{
    QStringList remarks = _opened.remarks;
    for (auto const& trouble : _troubles)
        remarks.append(trouble.second);
    QString const text = remarks.join(QLatin1Char('\n'));
    _remarks->setText(text);
    _remarks->setAccessibleName(text);
    _remarks->setVisible(!text.isEmpty());
}

void StoreView::_ShowFilesOf(QModelIndex const& folder)
{
    int const root = _folderTable->RootId(folder);
    if (_notSynced->isChecked())
        _fileModel->ShowStatus(sync::config::FileSyncStatusNotSynced, root);
    else if (_search->text().isEmpty())
        _fileModel->ShowFolder(_folderTable->FolderId(folder));
    else
        _fileModel->ShowRoot(root);
}

void StoreView::_Search()
{
    _fileModel->SetNameFilter(_search->text());
    _ShowFilesOf(_folders->currentIndex());
}

void StoreView::_ShowDetailsOfFolder(QModelIndex const& folder)
{
    if (folder.isValid())
        _details->ShowFolder(_folderTable->FolderId(folder));
    else
        _details->Clear();
}

void StoreView::_ShowDetailsOfFile(QModelIndex const& file)
{
    if (file.isValid())
        _details->ShowFile(_fileModel->FileId(_fileTable->mapToSource(file)));
}

} // namespace tandry::viewer
