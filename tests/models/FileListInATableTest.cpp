#include "models/FileListModel.h"

#include "support/Queries.h"
#include "support/StoreFixture.h"

#include <QScrollBar>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace file_list_in_a_table_test {

namespace {

using namespace tandry::test;
using sync::interf::factory::IDatabaseFactory;
using sync::models::FileListModel;

constexpr int LongEnoughMsec = 60000;
constexpr int Files = 30000;
/// More titles than a header needs to find its width and to paint what is visible, a few times.
constexpr int FewTitles = 2000;

/// Counts how often a view asks for the title of a row, as it does for each that it paints.
class CountingModel : public FileListModel
{
public:
    using FileListModel::FileListModel;

    QVariant headerData(int section, Qt::Orientation orientation, int role) const override
    {
        if (orientation == Qt::Vertical && role == Qt::DisplayRole)
            ++titles;
        return FileListModel::headerData(section, orientation, role);
    }

    mutable int titles = 0;
};

class AFileListInATable : public StoreFixture
{
protected:
    void SetUp() override
    {
        StoreFixture::SetUp();
        ASSERT_TRUE(Execute(*store,
                            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < :count) "
                            "INSERT INTO FileConfiguration (name, folderConfigurationId) SELECT i, 1 FROM n"_q,
                            {{":count", Files}}));
        model = std::make_unique<CountingModel>(store);
        model->ShowFolder(1);
        view.setModel(model.get());
        view.resize(800, 600);
        view.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&view, LongEnoughMsec));
        Settle();
        ASSERT_EQ(model->rowCount(), Files);
        view.scrollToBottom();
        Settle();
        model->titles = 0;
    }

    /// Waits until everything is read and painted.
    void Settle()
    {
        ASSERT_TRUE(QTest::qWaitFor([this] { return !model->isLoading(); }, LongEnoughMsec));
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
        ASSERT_TRUE(QTest::qWaitFor([this] { return !model->isLoading(); }, LongEnoughMsec));
    }

    std::unique_ptr<CountingModel> model;
    QTableView view;
};

TEST_F(AFileListInATable, PaintsOnlyVisibleRowsWhenMostRowsGo)
{
    QSignalSpy const arranged(model.get(), &FileListModel::layoutChanged);
    QSignalSpy const removed(model.get(), &FileListModel::rowsRemoved);
    QSignalSpy const inserted(model.get(), &FileListModel::rowsInserted);
    QSignalSpy const reset(model.get(), &FileListModel::modelReset);
    model->SetNameFilter("9"_q);
    Settle();
    EXPECT_GT(model->rowCount(), 2 * FewTitles);
    EXPECT_LT(model->rowCount(), Files / 2);
    EXPECT_EQ(view.verticalScrollBar()->value(), view.verticalScrollBar()->maximum());
    EXPECT_LT(model->titles, FewTitles);
    EXPECT_EQ(arranged.count(), 1);
    EXPECT_EQ(removed.count(), 1);
    EXPECT_EQ(inserted.count() + reset.count(), 0);
}

} // namespace

} // namespace file_list_in_a_table_test
