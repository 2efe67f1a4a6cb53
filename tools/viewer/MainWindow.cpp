#include "tools/viewer/MainWindow.h"

#include "tools/findings/StoreLocation.h"
#include "tools/viewer/BackgroundReader.h"
#include "tools/viewer/OpenedStore.h"
#include "tools/viewer/ProblemView.h"
#include "tools/viewer/StoreView.h"

#include <QAction>
#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QIcon>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QScreen>
#include <QStackedWidget>
#include <QStatusBar>
#include <QUrl>

#include <memory>

namespace tandry::viewer {

namespace {

QKeySequence Keys(char const* text)
{
    return QKeySequence::fromString(QLatin1String(text));
}

/// Returns the one file that is dragged; null if it is anything else.
QString DraggedFile(QMimeData const& data)
{
    QList<QUrl> const urls = data.urls();
    return urls.size() == 1 ? urls.front().toLocalFile() : QString();
}

} // namespace

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent)
    , _opening(new BackgroundReader(this))
    , _pages(new QStackedWidget(this))
    , _openingPage(new QLabel(this))
    , _problem(new ProblemView(this))
    , _summary(new QLabel(this))
{
    setAcceptDrops(true);
    setWindowIcon(QIcon::fromTheme(QStringLiteral("tandry-viewer"), QIcon(QStringLiteral(":/tandry-viewer.svg"))));
    _openingPage->setAlignment(Qt::AlignCenter);
    _openingPage->setTextFormat(Qt::PlainText);
    _openingPage->setWordWrap(true);
    _pages->addWidget(_openingPage);
    _pages->addWidget(_problem);
    setCentralWidget(_pages);
    statusBar()->addWidget(_summary);
    _MakeMenus();
    connect(_problem, &ProblemView::RetryRequested, this, [this] { Open(_path); });
    connect(_problem, &ProblemView::OtherRequested, this, &MainWindow::_ChooseStore);
    // In units of the font, which follows the user's settings.
    QSize const wanted(fontMetrics().averageCharWidth() * 140, fontMetrics().lineSpacing() * 42);
    resize(wanted.boundedTo(screen()->availableSize()));
}

MainWindow::~MainWindow() = default;

void MainWindow::_MakeMenus()
{
    QMenu& file = *menuBar()->addMenu(tr("&File"));
    file.addAction(tr("&Open…"), this, &MainWindow::_ChooseStore)->setShortcut(QKeySequence::Open);
    file.addAction(tr("Open &Your Own Store"), this, [this] { Open(findings::OwnStorePath()); })
        ->setShortcut(Keys("Ctrl+U"));
    file.addAction(tr("&Reload"), this, [this] { Open(_path); })->setShortcut(QKeySequence::Refresh);
    file.addSeparator();
    file.addAction(tr("&Quit"), this, &QWidget::close)->setShortcut(Keys("Ctrl+Q"));

    QMenu& go = *menuBar()->addMenu(tr("&Go"));
    auto const addPlace = [&](QString const& name, QKeySequence const& keys, QWidget* (StoreView::*part)() const) {
        auto const goTo = [this, part] {
            if (_store != nullptr)
                (_store->*part)()->setFocus(Qt::ShortcutFocusReason);
        };
        go.addAction(name, this, goTo)->setShortcut(keys);
    };
    addPlace(tr("&Roots"), Keys("Ctrl+1"), &StoreView::roots);
    addPlace(tr("F&olders"), Keys("Ctrl+2"), &StoreView::folders);
    addPlace(tr("F&iles"), Keys("Ctrl+3"), &StoreView::files);
    addPlace(tr("&Details"), Keys("Ctrl+4"), &StoreView::details);
    addPlace(tr("&Search"), QKeySequence::Find, &StoreView::search);

    QMenu& help = *menuBar()->addMenu(tr("&Help"));
    help.addAction(tr("&About Tandry Viewer"), this, &MainWindow::_ShowAbout);
    help.addAction(tr("About &Qt"), qApp, &QApplication::aboutQt);
}

void MainWindow::Open(QString const& path)
{
    _path = path;
    _CloseStore();
    _openingPage->setText(tr("Opening %1…").arg(path));
    _pages->setCurrentWidget(_openingPage);
    setWindowFilePath(path);
    _opening->Read([this, path]() -> BackgroundReader::Answer {
        auto const opened = std::make_shared<OpenedStore const>(OpenForViewing(path));
        return [this, opened] { _Show(*opened); };
    });
}

void MainWindow::_Show(OpenedStore const& opened)
{
    if (opened.store == nullptr) {
        _problem->Show(opened);
        _pages->setCurrentWidget(_problem);
    }
    else {
        _store = new StoreView(opened, this);
        connect(_store, &StoreView::SummaryChanged, _summary, &QLabel::setText);
        _pages->addWidget(_store);
        _pages->setCurrentWidget(_store);
        _store->folders()->setFocus();
    }
    Q_EMIT Opened();
}

void MainWindow::_CloseStore()
{
    _summary->clear();
    delete _store;
    _store = nullptr;
}

void MainWindow::_ChooseStore()
{
    QString const path =
        QFileDialog::getOpenFileName(this, tr("Open a Store"), QFileInfo(_path).absolutePath(), tr("All files (*)"));
    if (!path.isNull())
        Open(path);
}

void MainWindow::_ShowAbout()
{
    QMessageBox::about(this,
                       tr("About Tandry Viewer"),
                       tr("Tandry Viewer %1 shows a store of synchronised folders. It changes nothing.")
                           .arg(QCoreApplication::applicationVersion()));
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (!DraggedFile(*event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event)
{
    QString const path = DraggedFile(*event->mimeData());
    if (path.isEmpty())
        return;
    event->acceptProposedAction();
    Open(path);
}

} // namespace tandry::viewer
