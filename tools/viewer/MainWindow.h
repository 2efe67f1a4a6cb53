#pragma once

#include <QMainWindow>
#include <QString>

QT_BEGIN_NAMESPACE
class QLabel;
class QStackedWidget;
QT_END_NAMESPACE

namespace tandry::viewer {

class BackgroundReader;
class ProblemView;
class StoreView;
struct OpenedStore;

/// The window of tandry-viewer: an open store, or what is wrong with one that could not be opened.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    /// Opens a store in the place of the one that is open. `Opened` follows.
    void Open(QString const& path);

    /// Returns the view of the open store; null if none is open.
    StoreView* storeView() const { return _store; }

Q_SIGNALS:
    /// Emitted when the store, or the problem with it, is shown.
    void Opened();

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void _MakeMenus();
    void _Show(OpenedStore const& opened);
    void _CloseStore();
    void _ChooseStore();
    void _ShowAbout();

    BackgroundReader* const _opening;
    QStackedWidget* const _pages;
    QLabel* const _openingPage;
    ProblemView* const _problem;
    /// Null if no store is open.
    StoreView* _store = nullptr;
    QLabel* const _summary;
    QString _path;
};

} // namespace tandry::viewer
