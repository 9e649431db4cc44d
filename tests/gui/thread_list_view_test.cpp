// The thread list beside the canvas, driven with the mouse: clicks, the context menu and
// drag reordering.
#include <QApplication>
#include <QMenu>
#include <QMimeData>
#include <QTest>

#include "gui/thread_list_view.h"
#include "gui_test_support.h"

namespace {

// A design of six threads of one stitch each, named "0" to "5".
HMKDesign sixThreads() {
    HMKDesign design;
    for (int thread = 0; thread < 6; ++thread) {
        if (thread > 0) {
            design.stitches().emplace_back(0, 0, false, true);
        }
        design.stitches().emplace_back(10, 5, false, false);
        design.threads().push_back(
            HMKThread(HMKColor(0.1 * thread, 0.2, 0.3), std::to_string(thread), "", "", ""));
    }
    design.recomputeBounds();
    design.setDisplayRange({0, design.stitches().size()});
    return design;
}

std::string order(const HMKDesign& design) {
    std::string text;
    for (const HMKThread& thread : design.threads()) {
        text += thread.name;
    }
    return text;
}

QPoint centerOfRow(HMKThreadListView& view, int row) {
    return view.visualRect(view.model()->index(row, 0)).center();
}

}  // namespace

TEST_F(GuiTest, ClickShowsAThreadAloneAndAgainShowsAll) {
    HMKDocumentWindow* window = openWindow("flower.pes");
    ASSERT_TRUE(window);
    HMKThreadListView& list = window->threadList();
    QTest::mouseClick(list.viewport(), Qt::LeftButton, Qt::NoModifier, centerOfRow(list, 1));
    EXPECT_EQ(window->document().shownThread(), 1);
    EXPECT_FALSE(window->document().design().isShownOfThread(0));
    QTest::mouseClick(list.viewport(), Qt::LeftButton, Qt::NoModifier, centerOfRow(list, 1));
    EXPECT_EQ(window->document().shownThread(), -1);
    EXPECT_TRUE(window->document().design().isShownOfAllThreads());
}

TEST_F(GuiTest, ContextMenuEnablesWhatTheRowAllows) {
    HMKDocumentWindow* window = openWindow("flower.pes");
    ASSERT_TRUE(window);
    HMKThreadListView& list = window->threadList();
    // back, down, up, front, combine (the separator is skipped).
    const std::vector<std::pair<int, std::vector<bool>>> table = {
        {0, {false, false, true, true, false}},
        {2, {true, true, true, true, true}},
        {4, {true, true, false, false, true}},
    };
    for (const auto& [row, enabled] : table) {
        const QPoint position = centerOfRow(list, row);
        QContextMenuEvent event(QContextMenuEvent::Mouse, position,
                                list.viewport()->mapToGlobal(position));
        QApplication::sendEvent(list.viewport(), &event);
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        ASSERT_TRUE(menu) << "row " << row;
        std::vector<bool> actual;
        for (QAction* action : menu->actions()) {
            if (!action->isSeparator()) {
                actual.push_back(action->isEnabled());
            }
        }
        EXPECT_EQ(actual, enabled) << "row " << row;
        menu->close();
    }
}

TEST_F(GuiTest, DroppingARowAboveAnotherMovesTheThread) {
    const std::vector<std::tuple<int, int, std::string>> table = {
        {2, 5, "013425"},
        {5, 2, "015234"},
        {2, 2, "012345"},
    };
    HMKDocumentWindow* window = application_->newWindow();
    HMKThreadListView& list = window->threadList();
    for (const auto& [source, target, expected] : table) {
        window->document().setDesign(sixThreads());
        QApplication::processEvents();
        list.resize(300, 6 * 64 + 40);
        QMimeData* data = list.model()->mimeData({list.model()->index(source, 0)});
        // Just below the top edge of the target row: a drop between rows.
        const QPoint position =
            list.visualRect(list.model()->index(target, 0)).topLeft() + QPoint(20, 2);
        QDragEnterEvent enter(position, Qt::MoveAction, data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(list.viewport(), &enter);
        QDragMoveEvent move(position, Qt::MoveAction, data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(list.viewport(), &move);
        QDropEvent drop(position, Qt::MoveAction, data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(list.viewport(), &drop);
        EXPECT_EQ(order(window->document().design()), expected)
            << "row " << source << " above " << target;
        delete data;
    }
}
