#include "tools/viewer/StoreView.h"

#include "ViewerFixture.h"
#include "support/Queries.h"
#include "tools/viewer/DetailsView.h"

#include <QCheckBox>
#include <QFile>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>
#include <QTreeView>

namespace {

using namespace tandry::test;
using tandry::viewer::DetailsView;
using tandry::viewer::OpenForViewing;
using tandry::viewer::StoreView;

/// The view of a store that another connection writes to: the one of the fixture.
class AStoreView : public ViewerFixture
{
protected:
    void SetUp() override
    {
        ViewerFixture::SetUp();
        Show();
    }

    void Show()
    {
        auto const opened = OpenForViewing(StorePath());
        ASSERT_NE(opened.store, nullptr) << opened.reason.toStdString();
        view = std::make_unique<StoreView>(opened);
        roots = Find<QTableView>(*view, "Roots"_q);
        folders = Find<QTreeView>(*view, "Folders"_q);
        files = Find<QTableView>(*view, "Files"_q);
        search = Find<QLineEdit>(*view, "Search files by name"_q);
        details = Find<DetailsView>(*view, "Details"_q);
        view->resize(900, 700);
        view->show();
    }

    QModelIndex Folder(QStringList const& names) const
    {
        QModelIndex index;
        for (QString const& name : names) {
            folders->expand(index);
            QModelIndex next;
            for (int row = 0; row < folders->model()->rowCount(index); ++row) {
                if (folders->model()->index(row, 0, index).data() == name)
                    next = folders->model()->index(row, 0, index);
            }
            EXPECT_TRUE(next.isValid()) << name.toStdString();
            index = next;
        }
        return index;
    }

    /// Returns the names of the shown files, in the order in which they are shown.
    QStringList Files() const { return TextsOf(*files->model(), files->horizontalHeader()->logicalIndex(0)); }

    [[nodiscard]] bool ShowsFiles(QStringList const& names) const
    {
        return WaitUntil([&] { return Files() == names; });
    }

    [[nodiscard]] bool ShowsDetails(QString const& text) const
    {
        return WaitUntil([&] { return details->toPlainText().contains(text); });
    }

    std::unique_ptr<StoreView> view;
    QTableView* roots = nullptr;
    QTreeView* folders = nullptr;
    QTableView* files = nullptr;
    QLineEdit* search = nullptr;
    DetailsView* details = nullptr;
};

TEST_F(AStoreView, ShowsTheFirstRootWhenItOpens)
{
    EXPECT_EQ(TextsOf(*folders->model(), 0), (QStringList{"docs"_q, "empty"_q}));
    EXPECT_EQ(folders->currentIndex().data(), "docs"_q);
    EXPECT_TRUE(folders->isExpanded(folders->currentIndex()));
    EXPECT_TRUE(ShowsFiles({"a.txt"_q}));
    EXPECT_TRUE(ShowsDetails("Folder %1"_q.arg(docs)));
}

TEST_F(AStoreView, HasABarForEachRoot)
{
    QSignalSpy const summary(view.get(), &StoreView::SummaryChanged);
    ASSERT_TRUE(WaitUntil([&] { return roots->model()->rowCount() == 2; }));
    EXPECT_EQ(TextsOf(*roots->model(), 0), (QStringList{"/p/docs"_q, "/p/empty"_q}));
    EXPECT_EQ(TextsOf(*roots->model(), 1), (QStringList{"3 of 4 out of sync"_q, "Nothing out of sync"_q}));
    EXPECT_EQ(summary.last().first(), "3 out of sync"_q);
    roots->selectRow(1);
    EXPECT_EQ(folders->currentIndex().data(), "empty"_q);
    EXPECT_TRUE(ShowsFiles({}));
}

TEST_F(AStoreView, ShowsTheFilesOfTheSelectedFolder)
{
    folders->setCurrentIndex(Folder({"docs"_q, "letters"_q}));
    EXPECT_TRUE(ShowsFiles({"b.odt"_q}));
    folders->setCurrentIndex(Folder({"empty"_q}));
    EXPECT_TRUE(ShowsFiles({}));
}

TEST_F(AStoreView, HasTitlesAndTextsForPeople)
{
    ASSERT_TRUE(ShowsFiles({"a.txt"_q}));
    QStringList titles;
    QStringList texts;
    QHeaderView const& header = *files->horizontalHeader();
    for (int place = 0; place < header.count(); ++place) {
        int const column = header.logicalIndex(place);
        if (header.isSectionHidden(column))
            continue;
        titles.append(files->model()->headerData(column, Qt::Horizontal).toString());
        texts.append(files->model()->index(0, column).data().toString());
    }
    EXPECT_EQ(titles, (QStringList{"Name"_q, "Status"_q, "Size"_q, "Modified"_q, "Path"_q}));
    EXPECT_EQ(texts, (QStringList{"a.txt"_q, "Not synced"_q, "8 bytes"_q, ""_q, "/p/docs/a.txt"_q}));
}

TEST_F(AStoreView, ExplainsTheSelectedRecord)
{
    ASSERT_TRUE(ShowsFiles({"a.txt"_q}));
    files->selectRow(0);
    ASSERT_TRUE(ShowsDetails("File %1"_q.arg(textFile)));
    QString const text = details->toPlainText();
    for (QString const& wanted : {"/p/docs/a.txt"_q,
                                  "Not in sync: the status of the file is 2 not synced"_q,
                                  "it is missing on disk"_q,
                                  "Does it lie in a root?"_q})
        EXPECT_TRUE(text.contains(wanted)) << wanted.toStdString() << " is not in\n" << text.toStdString();
    folders->setCurrentIndex(Folder({"docs"_q, "letters"_q}));
    EXPECT_TRUE(ShowsDetails("Folder %1"_q.arg(letters)));
    EXPECT_TRUE(ShowsFiles({"b.odt"_q}));
    EXPECT_FALSE(files->currentIndex().isValid());
}

TEST_F(AStoreView, KeepsTheFolderWhenTheRootsGetTheFocus)
{
    ASSERT_TRUE(WaitUntil([&] { return roots->model()->rowCount() == 2; }));
    folders->setCurrentIndex(Folder({"empty"_q}));
    folders->setFocus();
    roots->setFocus();
    EXPECT_EQ(folders->currentIndex().data(), "empty"_q);
}

TEST_F(AStoreView, ShowsTheFindingsOfTheSelectedRecord)
{
    ASSERT_TRUE(
        Execute(*store, "UPDATE FolderConfiguration SET authenticationId = 99 WHERE id = :id"_q, {{":id", letters}}));
    folders->setCurrentIndex(Folder({"docs"_q, "letters"_q}));
    ASSERT_TRUE(ShowsDetails("Fault: The account of these folders is gone"_q));
    EXPECT_TRUE(details->toPlainText().contains("authenticationId 99"_q));
}

TEST_F(AStoreView, FindsFilesByNameInTheRoot)
{
    AddFile("/p/docs/letters/B2.odt"_q, letters);
    AddFile("/p/empty/b3.odt"_q, empty);
    ASSERT_TRUE(ShowsFiles({"a.txt"_q}));
    QTest::keyClicks(search, "b"_q);
    EXPECT_TRUE(ShowsFiles({"B2.odt"_q, "b.odt"_q}));
    QTest::keyClicks(search, ".od"_q);
    EXPECT_TRUE(ShowsFiles({"b.odt"_q}));
    search->clear();
    EXPECT_TRUE(ShowsFiles({"a.txt"_q}));
}

TEST_F(AStoreView, ShowsWhatIsNotSynced)
{
    ASSERT_TRUE(Execute(*store, "UPDATE FileConfiguration SET syncStatus = 9 WHERE id = :id"_q, {{":id", textFile}}));
    AddFile("/p/empty/c.txt"_q, empty);
    QCheckBox& notSynced = *view->findChild<QCheckBox*>();
    notSynced.setChecked(true);
    EXPECT_TRUE(ShowsFiles({"b.odt"_q}));
    notSynced.setChecked(false);
    EXPECT_TRUE(ShowsFiles({"a.txt"_q}));
}

TEST_F(AStoreView, SortsFilesByTheClickedColumn)
{
    int const bigger = AddFile("/p/docs/0.txt"_q, docs);
    ASSERT_TRUE(Execute(*store, "UPDATE FileConfiguration SET size = 9 WHERE id = :id"_q, {{":id", bigger}}));
    ASSERT_TRUE(ShowsFiles({"0.txt"_q, "a.txt"_q}));
    for (int column = 0; column < files->model()->columnCount(); ++column) {
        if (files->model()->headerData(column, Qt::Horizontal) == "Size"_q)
            files->sortByColumn(column, Qt::AscendingOrder);
    }
    EXPECT_TRUE(ShowsFiles({"a.txt"_q, "0.txt"_q}));
}

TEST_F(AStoreView, FollowsWhatAnotherConnectionWrites)
{
    ASSERT_TRUE(ShowsFiles({"a.txt"_q}));
    ASSERT_TRUE(WaitUntil([&] { return roots->model()->rowCount() == 2; }));
    files->selectRow(0);
    ASSERT_TRUE(ShowsDetails("2 not synced"_q));

    AddFile("/p/docs/c.txt"_q, docs);
    AddFolder("/p/docs/new"_q, docs, 1);
    ASSERT_TRUE(Execute(*store, "UPDATE FileConfiguration SET syncStatus = 9 WHERE id = :id"_q, {{":id", textFile}}));
    EXPECT_TRUE(ShowsFiles({"a.txt"_q, "c.txt"_q}));
    EXPECT_TRUE(WaitUntil([&] { return !details->toPlainText().contains("2 not synced"_q); }));
    EXPECT_TRUE(details->toPlainText().contains("/p/docs/a.txt"_q));
    EXPECT_EQ(files->currentIndex().row(), 0) << "the selection stays";
    EXPECT_TRUE(WaitUntil([&] { return TextsOf(*roots->model(), 1).front() == "3 of 6 out of sync"_q; }))
        << TextsOf(*roots->model(), 1).front().toStdString();
    EXPECT_TRUE(WaitUntil([&] { return folders->model()->rowCount(Folder({"docs"_q})) == 2; }));

    ASSERT_TRUE(Execute(*store, "DELETE FROM FileConfiguration WHERE id = :id"_q, {{":id", textFile}}));
    EXPECT_TRUE(ShowsFiles({"c.txt"_q}));
}

TEST_F(AStoreView, FollowsAStoreThatNobodyHadOpen)
{
    view.reset();
    store.reset();
    Show();
    ASSERT_TRUE(ShowsFiles({"a.txt"_q}));
    StoreFixture::OpenStore();
    AddFile("/p/docs/c.txt"_q, docs);
    EXPECT_TRUE(ShowsFiles({"a.txt"_q, "c.txt"_q}));
}

TEST_F(AStoreView, SaysThatTheStoreWasReplaced)
{
    ASSERT_TRUE(ShowsFiles({"a.txt"_q}));
    ASSERT_TRUE(QFile::rename(StorePath(), folder.filePath("moved.db"_q)));
    auto const says = [&](QString const& text) {
        for (QLabel const* label : view->findChildren<QLabel*>()) {
            if (label->isVisible() && label->text().contains(text))
                return true;
        }
        return false;
    };
    EXPECT_TRUE(WaitUntil([&] { return says("close the store in all programs"_q); }));
}

TEST_F(AStoreView, OfACopySaysSo)
{
    view.reset();
    store.reset();
    RawStore(StorePath(), RawStore::KeepLog).Run("UPDATE FileConfiguration SET size = 7"_q);
    QFile::remove(StorePath() + "-shm"_q);
    Show();
    bool isSaid = false;
    for (QLabel const* label : view->findChildren<QLabel*>())
        isSaid = isSaid || (label->isVisible() && label->text().contains("private copy"_q));
    EXPECT_TRUE(isSaid);
    EXPECT_TRUE(ShowsFiles({"a.txt"_q}));
}

} // namespace
