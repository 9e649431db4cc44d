#include "document_test_support.h"

#include "document/thread_list_model.h"

namespace {

using MenuItem = HMKThreadListModel::MenuItem;

// The thread names in list order, as numbers of their original rows ("0123").
std::string order(const HMKThreadListModel& model, const std::vector<std::string>& names) {
    std::string text;
    for (int row = 0; row < model.rowCount(); ++row) {
        const std::string name = model.data(model.index(row)).toString().toStdString();
        text += std::to_string(std::find(names.begin(), names.end(), name) - names.begin());
    }
    return text;
}

std::vector<std::string> namesOf(const HMKDesign& design) {
    std::vector<std::string> names;
    for (const HMKThread& thread : design.threads()) {
        names.push_back(thread.name);
    }
    return names;
}

}  // namespace

TEST_F(DocumentTest, ThreadMenuEnablingFollowsTheRow) {
    auto document = makeDocument();
    ASSERT_TRUE(document->readFromURL(sample("heart.jef")));
    HMKThreadListModel model(*document);
    const auto items = HMKThreadListModel::contextMenuItems();
    QStringList titles;
    for (const auto& item : items) {
        titles << (item ? HMKThreadListModel::title(*item) : "|");
    }
    EXPECT_EQ(titles.join(","),
              "Move to back,Move down,Move up,Move to front,|,Combine with previous");
    auto enabling = [&](int row) {
        std::string flags;
        for (const auto& item : items) {
            flags += !item ? '|' : model.isEnabled(*item, row) ? '+' : '-';
        }
        return flags;
    };
    EXPECT_EQ(enabling(0), "--++|-");
    EXPECT_EQ(enabling(1), "++++|+");
    EXPECT_EQ(enabling(3), "++--|+");
    HMKDesign single;
    single.setStitches({{10, 0, false, false}});
    single.setThreads({HMKThread()});
    document->setDesign(single);
    EXPECT_EQ(model.rowCount(), 1);
    EXPECT_EQ(enabling(0), "----|-");
}

TEST_F(DocumentTest, ThreadMenuActionsAndDropsMoveThreads) {
    struct Case {
        const char* name;
        std::function<void(HMKThreadListModel&)> act;
        const char* order;
    };
    auto drop = [](int source, int target) {
        return [source, target](HMKThreadListModel& model) {
            std::unique_ptr<QMimeData> data(model.mimeData({model.index(source)}));
            EXPECT_TRUE(model.dropMimeData(data.get(), Qt::MoveAction, target, 0, {}));
        };
    };
    auto menu = [](MenuItem item, int row) {
        return [item, row](HMKThreadListModel& model) { model.perform(item, row); };
    };
    const std::vector<Case> cases = {
        {"back", menu(MenuItem::moveToBack, 2), "2013"},
        {"down", menu(MenuItem::moveDown, 2), "0213"},
        {"up", menu(MenuItem::moveUp, 1), "0213"},
        {"front", menu(MenuItem::moveToFront, 1), "0231"},
        {"combine", menu(MenuItem::combineWithPrevious, 2), "013"},
        {"disabled front on the last row", menu(MenuItem::moveToFront, 3), "0123"},
        {"drop 1 above 3", drop(1, 3), "0213"},
        {"drop 3 above 1", drop(3, 1), "0312"},
        {"drop 2 above itself", drop(2, 2), "0123"},
        {"drop 0 below the last row", drop(0, -1), "1230"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        auto document = makeDocument();
        ASSERT_TRUE(document->readFromURL(sample("heart.jef")));
        const std::vector<std::string> names = namesOf(document->design());
        HMKThreadListModel model(*document);
        c.act(model);
        EXPECT_EQ(order(model, names), c.order);
    }
    EXPECT_EQ(HMKThreadListModel::destinationOfDrop(2, 5), 4);
    EXPECT_EQ(HMKThreadListModel::destinationOfDrop(5, 2), 2);
    EXPECT_EQ(HMKThreadListModel::destinationOfDrop(3, 3), std::nullopt);
}

TEST_F(DocumentTest, ThreadDropsOnlyBetweenRowsAsMoves) {
    auto document = makeDocument();
    ASSERT_TRUE(document->readFromURL(sample("heart.jef")));
    HMKThreadListModel model(*document);
    std::unique_ptr<QMimeData> data(model.mimeData({model.index(1)}));
    EXPECT_TRUE(data->hasFormat("BasicTableViewDragAndDropDataType"));
    EXPECT_TRUE(model.canDropMimeData(data.get(), Qt::MoveAction, 3, 0, {}));
    EXPECT_FALSE(model.canDropMimeData(data.get(), Qt::MoveAction, -1, 0, model.index(3)));
    EXPECT_FALSE(model.canDropMimeData(data.get(), Qt::CopyAction, 3, 0, {}));
    EXPECT_FALSE(model.flags(model.index(3)).testFlag(Qt::ItemIsDropEnabled));
    EXPECT_TRUE(model.flags(model.index(3)).testFlag(Qt::ItemIsDragEnabled));
}

TEST_F(DocumentTest, ClickingARowShowsItAloneAndAgainShowsAll) {
    auto document = makeDocument();
    ASSERT_TRUE(document->readFromURL(sample("heart.jef")));
    HMKThreadListModel model(*document);
    const std::vector<std::pair<int, int>> clicks = {{2, 2}, {2, -1}, {1, 1}, {3, 3}, {3, -1}};
    for (const auto& [row, shown] : clicks) {
        model.clickRow(row);
        EXPECT_EQ(model.shownAloneRow(), shown) << "click on " << row;
        EXPECT_TRUE(model.data(model.index(row), HMKThreadListModel::IsShownRole).toBool());
        EXPECT_EQ(model.data(model.index(row), HMKThreadListModel::ShownAloneRole).toBool(),
                  shown == row);
    }
    EXPECT_FALSE(document->isModified());
}
