#include "tools/viewer/MainWindow.h"

#include "ViewerFixture.h"
#include "tools/viewer/ProblemView.h"
#include "tools/viewer/StoreView.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QAction>
#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QShortcut>
#include <QSignalSpy>
#include <QStyle>
#include <QTableView>
#include <QTest>
#include <QTreeView>
#include <QUrl>

#include <algorithm>

namespace {

using namespace tandry::test;
using tandry::viewer::MainWindow;
using tandry::viewer::ProblemView;

class AMainWindow : public ViewerFixture
{
protected:
    void SetUp() override
    {
        ViewerFixture::SetUp();
        window.show();
        window.activateWindow();
    }

    void Open(QString const& path)
    {
        QSignalSpy const opened(&window, &MainWindow::Opened);
        window.Open(path);
        ASSERT_TRUE(WaitUntil([&] { return opened.count() == 1; }));
    }

    QString At(QString const& name) const { return folder.filePath(name); }

    /// Returns the texts of all labels that can be seen.
    QString Words() const
    {
        QStringList words;
        for (QLabel const* label : window.findChildren<QLabel*>()) {
            if (label->isVisible())
                words.append(label->text());
        }
        return words.join(QLatin1Char('\n'));
    }

    QList<QAction*> MenuActions() const
    {
        QList<QAction*> actions;
        for (QAction const* menu : window.menuBar()->actions())
            actions += menu->menu()->actions();
        return actions;
    }

    QAction* Action(QString const& text) const
    {
        for (QAction* action : MenuActions()) {
            if (action->text().remove(QLatin1Char('&')) == text)
                return action;
        }
        ADD_FAILURE() << "no action: " << text.toStdString();
        return nullptr;
    }

    /// Both pages that a user meets, one after the other.
    template <class Look>
    void OnEachPage(Look const& look)
    {
        Open(StorePath());
        ASSERT_TRUE(WaitUntil([&] { return Find<QTableView>(window, "Roots"_q)->model()->rowCount() == 2; }));
        QApplication::processEvents(); // lays out what has changed
        look();
        Open(At("no.db"_q));
        QApplication::processEvents();
        look();
    }

    bool SendDrop(QList<QUrl> const& urls)
    {
        QMimeData data;
        data.setUrls(urls);
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&window, &enter);
        if (!enter.isAccepted())
            return false;
        QDropEvent drop({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&window, &drop);
        return drop.isAccepted();
    }

    MainWindow window;
};

TEST_F(AMainWindow, ShowsAStore)
{
    Open(StorePath());
    ASSERT_NE(window.storeView(), nullptr);
    EXPECT_TRUE(window.storeView()->isVisible());
    EXPECT_EQ(window.windowFilePath(), StorePath());
    EXPECT_TRUE(WaitUntil([&] { return Words().contains("3 out of sync"_q); }));
}

TEST_F(AMainWindow, SaysWhatIsWrongWithAStoreAndWhichCommandHelps)
{
    Open(At("no.db"_q));
    EXPECT_EQ(window.storeView(), nullptr);
    EXPECT_TRUE(Words().contains("There is no store"_q)) << Words().toStdString();
    EXPECT_TRUE(Words().contains(At("no.db"_q))) << Words().toStdString();
    EXPECT_TRUE(Words().contains("tandryctl --store FILE init"_q)) << Words().toStdString();
}

TEST_F(AMainWindow, TriesAgainAtTheUsersWish)
{
    Open(At("no.db"_q));
    store.reset();
    ASSERT_TRUE(QFile::rename(StorePath(), At("no.db"_q)));
    QSignalSpy const opened(&window, &MainWindow::Opened);
    auto const buttons = window.findChild<ProblemView*>()->findChildren<QAbstractButton*>();
    auto const retry = std::find_if(
        buttons.begin(), buttons.end(), [](QAbstractButton const* button) { return button->text() == "&Try Again"_q; });
    ASSERT_NE(retry, buttons.end());
    (*retry)->click();
    ASSERT_TRUE(WaitUntil([&] { return opened.count() == 1; }));
    EXPECT_NE(window.storeView(), nullptr);
}

TEST_F(AMainWindow, OpensWhatIsDroppedOnIt)
{
    Open(At("no.db"_q));
    QSignalSpy const opened(&window, &MainWindow::Opened);
    EXPECT_TRUE(SendDrop({QUrl::fromLocalFile(StorePath())}));
    ASSERT_TRUE(WaitUntil([&] { return opened.count() == 1; }));
    EXPECT_NE(window.storeView(), nullptr);
}

TEST_F(AMainWindow, TakesNothingButOneLocalFile)
{
    EXPECT_FALSE(SendDrop({}));
    EXPECT_FALSE(SendDrop({QUrl("https://example.org/store.db"_q)}));
    EXPECT_FALSE(SendDrop({QUrl::fromLocalFile(StorePath()), QUrl::fromLocalFile(At("no.db"_q))}));
}

TEST_F(AMainWindow, LeadsToItsPartsByKeyboard)
{
    Open(StorePath());
    struct Place
    {
        QString action;
        QString widget;
    };
    for (Place const& place : {Place{"Roots"_q, "Roots"_q},
                               Place{"Files"_q, "Files"_q},
                               Place{"Search"_q, "Search files by name"_q},
                               Place{"Details"_q, "Details"_q},
                               Place{"Folders"_q, "Folders"_q}}) {
        Action(place.action)->trigger();
        ASSERT_NE(window.focusWidget(), nullptr);
        EXPECT_EQ(window.focusWidget()->accessibleName(), place.widget);
    }
    QStringList names;
    for (int step = 0; step < 6; ++step) {
        names.append(window.focusWidget()->accessibleName());
        QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
    }
    EXPECT_EQ(
        names,
        (QStringList{"Folders"_q, "Search files by name"_q, "Not synced only"_q, "Files"_q, "Details"_q, "Roots"_q}));
}

TEST_F(AMainWindow, HasAShortcutOfItsOwnForEachThingThatIsDoneOften)
{
    QStringList shortcuts;
    for (QAction const* action : MenuActions()) {
        QString const keys = action->shortcut().toString();
        if (!keys.isEmpty())
            shortcuts.append(keys);
    }
    EXPECT_GE(shortcuts.size(), 9);
    EXPECT_EQ(shortcuts.removeDuplicates(), 0) << shortcuts.join(QLatin1Char(' ')).toStdString();
}

TEST_F(AMainWindow, GivesEachMnemonicOnce)
{
    OnEachPage([&] {
        QStringList mnemonics;
        auto const add = [&](QString const& text) {
            QString const keys = QKeySequence::mnemonic(text).toString();
            if (!keys.isEmpty())
                mnemonics.append(keys);
        };
        for (QAction const* menu : window.menuBar()->actions()) {
            add(menu->text());
            EXPECT_FALSE(QKeySequence::mnemonic(menu->text()).isEmpty());
        }
        for (QLabel const* label : window.findChildren<QLabel*>()) {
            if (label->isVisible() && label->buddy() != nullptr)
                add(label->text());
        }
        for (QAbstractButton const* button : window.findChildren<QAbstractButton*>()) {
            if (button->isVisible())
                add(button->text());
        }
        EXPECT_GE(mnemonics.size(), 5);
        QString const all = mnemonics.join(QLatin1Char(' '));
        EXPECT_EQ(mnemonics.removeDuplicates(), 0) << all.toStdString();
    });
}

TEST_F(AMainWindow, HasAnAccessibleNameForEachWidgetThatTakesTheFocus)
{
    OnEachPage([&] {
        int widgets = 0;
        for (QWidget* const widget : window.findChildren<QWidget*>()) {
            bool const isInner = widget->objectName().startsWith("qt_"_q); // Qt's own parts
            if (isInner || !widget->isVisible() || widget->focusPolicy() == Qt::NoFocus)
                continue;
            QAccessibleInterface const* const accessible = QAccessible::queryAccessibleInterface(widget);
            ASSERT_NE(accessible, nullptr) << widget->metaObject()->className();
            EXPECT_FALSE(accessible->text(QAccessible::Name).isEmpty()) << widget->metaObject()->className();
            ++widgets;
        }
        EXPECT_GE(widgets, 4);
    });
}

TEST_F(AMainWindow, KeepsToThePalette)
{
    OnEachPage([&] {
        for (QWidget const* widget : window.findChildren<QWidget*>()) {
            EXPECT_TRUE(widget->styleSheet().isEmpty()) << widget->metaObject()->className();
            EXPECT_FALSE(widget->testAttribute(Qt::WA_SetPalette)) << widget->metaObject()->className();
        }
    });
}

TEST_F(AMainWindow, NoTextIsCutOff)
{
    qreal const factor = qEnvironmentVariable("QT_SCALE_FACTOR", "1"_q).toDouble();
    ASSERT_EQ(window.devicePixelRatioF(), factor);
    OnEachPage([&] {
        int texts = 0;
        auto const fits = [&](QWidget const& widget, QString const& text) {
            if (!widget.isVisible() || text.isEmpty())
                return;
            QSize const wanted =
                widget.hasHeightForWidth() ? QSize(0, widget.heightForWidth(widget.width())) : widget.sizeHint();
            EXPECT_GE(widget.width(), wanted.width()) << text.toStdString();
            EXPECT_GE(widget.height(), wanted.height()) << text.toStdString();
            ++texts;
        };
        for (QLabel const* label : window.findChildren<QLabel*>())
            fits(*label, label->text());
        for (QAbstractButton const* button : window.findChildren<QAbstractButton*>())
            fits(*button, button->text());
        for (QHeaderView const* header : window.findChildren<QHeaderView*>()) {
            for (int section = 0; header->isVisible() && section < header->count(); ++section) {
                if (header->isSectionHidden(section))
                    continue;
                EXPECT_GE(header->sectionSize(section), header->sectionSizeHint(section))
                    << header->model()->headerData(section, Qt::Horizontal).toString().toStdString();
                ++texts;
            }
        }
        EXPECT_GE(texts, 5);
    });
    Open(StorePath());
    auto const& roots = *Find<QTableView>(window, "Roots"_q);
    ASSERT_TRUE(WaitUntil([&] { return roots.model()->rowCount() == 2; }));
    QModelIndex const bar = roots.model()->index(0, 1);
    EXPECT_GE(roots.visualRect(bar).width(), roots.fontMetrics().horizontalAdvance(bar.data().toString()));
    EXPECT_GE(roots.visualRect(bar).height(), roots.fontMetrics().height());
}

} // namespace
