// Editing a design with mouse and keyboard in a real window: select, rotate, delete, undo.
#include <QAction>
#include <QApplication>
#include <QDoubleSpinBox>
#include <QMenu>
#include <QMenuBar>
#include <QTest>

#include "gui/design_canvas.h"
#include "gui_test_support.h"

namespace {

QAction* menuAction(QMainWindow& window, const QString& menuTitle, QAction* action) {
    for (QMenu* menu : window.menuBar()->findChildren<QMenu*>()) {
        if (menu->title() == menuTitle && menu->actions().contains(action)) {
            return action;
        }
    }
    return nullptr;
}

}  // namespace

TEST_F(GuiTest, DraggedRectangleRotatedFromTheMenuIsUndoneExactly) {
    HMKDocumentWindow* window = openWindow("flower.pes");
    ASSERT_TRUE(window);
    const HMKDesign before = window->document().design();
    QWidget* viewport = window->canvas().viewport();
    // Drag over the left half of the design.
    const HMKCanvasGeometry& geometry = window->canvas().canvasGeometry();
    const QPoint from = geometry.toPixels(HMKPoint{before.xMin() - 5, before.yMax() + 5}).toPoint();
    const QPoint to =
        geometry.toPixels(HMKPoint{(before.xMin() + before.xMax()) / 2, before.yMin() - 5})
            .toPoint();
    QTest::mousePress(viewport, Qt::LeftButton, Qt::NoModifier, from);
    QTest::mouseMove(viewport, (from + to) / 2);
    QTest::mouseMove(viewport, to);
    QTest::mouseRelease(viewport, Qt::LeftButton, Qt::NoModifier, to);
    ASSERT_TRUE(window->document().hasSelection());
    QAction* rotate = menuAction(*window, "&Design", window->action(HMKCommand::rotateLeft));
    ASSERT_TRUE(rotate);
    ASSERT_TRUE(rotate->isEnabled());
    rotate->trigger();
    EXPECT_NE(window->document().design().stitches(), before.stitches());
    EXPECT_EQ(window->action(HMKCommand::undo)->text(), "&Undo rotate");

    QTest::keyClick(window, Qt::Key_Z, Qt::ControlModifier);
    const HMKDesign& expected = before;
    // Every move and flag as before (the selection marks came back with the drag's).
    ASSERT_EQ(window->document().design().stitches().size(), expected.stitches().size());
    for (std::size_t i = 0; i < expected.stitches().size(); ++i) {
        const HMKStitch& a = window->document().design().stitches()[i];
        const HMKStitch& e = expected.stitches()[i];
        ASSERT_TRUE(a.deltaX == e.deltaX && a.deltaY == e.deltaY &&
                    a.isJumpStitch == e.isJumpStitch && a.isColorChange == e.isColorChange)
            << "stitch " << i;
    }
}

TEST_F(GuiTest, SelectAllDeleteUndoByKeyboard) {
    HMKDocumentWindow* window = openWindow("star.pes");
    ASSERT_TRUE(window);
    const std::vector<HMKStitch> before = window->document().design().stitches();
    // Every rotate and flip needs a selection.
    EXPECT_FALSE(window->action(HMKCommand::rotateLeft)->isEnabled());
    QTest::keyClick(window, Qt::Key_A, Qt::ControlModifier);
    EXPECT_TRUE(window->action(HMKCommand::rotateLeft)->isEnabled());
    QTest::keyClick(window, Qt::Key_Delete);
    EXPECT_LT(window->document().design().stitches().size(), before.size());
    QTest::keyClick(window, Qt::Key_Z, Qt::ControlModifier);
    std::vector<HMKStitch> restored = window->document().design().stitches();
    for (HMKStitch& stitch : restored) {
        stitch.isSelected = false;
    }
    EXPECT_EQ(restored, before);
}

TEST_F(GuiTest, DraggingTheSelectionMovesItAsOneStep) {
    HMKDocumentWindow* window = openWindow("heart.pes");
    ASSERT_TRUE(window);
    HMKDocument& document = window->document();
    document.selectAll();
    window->canvas().waitForImage();
    const HMKDesign before = document.design();
    const HMKCanvasGeometry& geometry = window->canvas().canvasGeometry();
    // Press on a stitch of the selection: the end of the first sewn stitch.
    const QPoint from = geometry.toPixels(before.firstStitch()).toPoint();
    const QPoint to = from + QPoint(40, 0);
    QWidget* viewport = window->canvas().viewport();
    QTest::mousePress(viewport, Qt::LeftButton, Qt::NoModifier, from);
    QTest::mouseMove(viewport, from + QPoint(20, 0));
    QTest::mouseMove(viewport, to);
    QTest::mouseRelease(viewport, Qt::LeftButton, Qt::NoModifier, to);
    const double movedUnits = 40 / geometry.scale;
    EXPECT_NEAR(document.design().xMin() - before.xMin(), movedUnits, 1.0);
    EXPECT_EQ(document.undoStack()->count(), 1);
    document.undo();
    EXPECT_EQ(document.design().xMin(), before.xMin());
}

TEST_F(GuiTest, CommandDialogsRunTheirCommands) {
    HMKDocumentWindow* window = openWindow("star.pes");
    ASSERT_TRUE(window);
    window->document().selectAll();
    const float width = window->document().design().xMax() - window->document().design().xMin();
    // Resize to 50 %, typed into the dialog's field.
    runDialog_ = [](QDialog& dialog) {
        auto* field = dialog.findChild<QDoubleSpinBox*>();
        field->selectAll();
        QTest::keyClicks(field, "50");
        return int(QDialog::Accepted);
    };
    window->action(HMKCommand::resize)->trigger();
    const float resized = window->document().design().xMax() - window->document().design().xMin();
    EXPECT_NEAR(resized, width / 2, 2.0);
    EXPECT_EQ(window->action(HMKCommand::undo)->text(), "&Undo resize");
}
