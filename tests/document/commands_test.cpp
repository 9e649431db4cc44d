#include "document_test_support.h"

#include "document/undo_history.h"

namespace {

struct Command {
    const char* undoName;
    std::function<bool(HMKDocument&)> run;
    // Puts the design where the command has something to do (before the step under test).
    std::function<void(HMKDocument&)> prepare = [](HMKDocument&) {};
};

HMKDesign pastedDesign() {
    HMKDesign design;
    design.setStitches({{10, 0, false, false}, {0, 10, false, false}});
    design.setThreads({HMKThread(HMKColor(0, 0, 1), "Blue", "", "", "")});
    design.recomputeBounds();
    return design;
}

}  // namespace

TEST_F(DocumentTest, EveryCommandUndoesAndRedoesBySwappingWholeDesigns) {
    const std::vector<Command> commands = {
        {"rotate", [](HMKDocument& d) { return d.rotateByDegrees(30); }},
        {"rotate", [](HMKDocument& d) { return d.rotateL(); }},
        {"rotate", [](HMKDocument& d) { return d.rotateR(); }},
        {"flip vertical", [](HMKDocument& d) { return d.flipV(); }},
        {"flip horizontal", [](HMKDocument& d) { return d.flipH(); }},
        {"move",
         [](HMKDocument& d) {
             return d.moveByVector({25, -12.5});
         }},
        {"resize", [](HMKDocument& d) { return d.resizeByPercent(1.5f); }},
        {"center", [](HMKDocument& d) { return d.center(); },
         [](HMKDocument& d) {
             d.moveByVector({80, 80});
         }},
        {"delete", [](HMKDocument& d) { return d.deleteWithUndo(); }},
        {"convert stitches", [](HMKDocument& d) { return d.toggleSelectionToJumps(true); }},
        {"basting", [](HMKDocument& d) { return d.bastingWithStitchlength(5, 2); }},
        {"thread insert", [](HMKDocument& d) { return d.insertThreadBeforeSelection(); }},
        {"thread delete", [](HMKDocument& d) { return d.deleteThreadWithIndex(2); }},
        {"thread move", [](HMKDocument& d) { return d.moveThreadFromIndex(0, 3); }},
        {"color change",
         [](HMKDocument& d) { return d.changeWithUndoThread(1, HMKColor(0, 1, 0), ""); }},
        {"palette change", [](HMKDocument& d) { return d.changePalette("Madeira Rayon"); }},
        {"palette reset", [](HMKDocument& d) { return d.resetPalette(); }},
        {"change hoop", [](HMKDocument& d) { return d.selectHoop("Janome", 4); }},
        {"paste", [](HMKDocument& d) { return d.pasteWithUndo(pastedDesign()); }},
        {"cut", [](HMKDocument& d) { return d.cut(); }},
    };
    for (const Command& command : commands) {
        SCOPED_TRACE(command.undoName);
        auto document = openWithSelection("heart.jef");
        command.prepare(*document);
        const int steps = document->undoStack()->count();
        const HMKDesign before = document->design();
        ASSERT_TRUE(command.run(*document));
        EXPECT_EQ(document->undoStack()->undoText(), command.undoName);
        EXPECT_TRUE(document->isModified());
        const HMKDesign after = document->design();
        const HMKStitch* afterRecords = document->design().stitches().data();

        EXPECT_EQ(document->undoStack()->count(), steps + 1);

        document->undo();
        expectIdentical(document->design(), before);
        document->redo();
        expectIdentical(document->design(), after);
        // The very records made by the command come back: a swap, not a recomputation.
        EXPECT_EQ(document->design().stitches().data(), afterRecords);
    }
}

TEST_F(DocumentTest, RefusedCommandsLeaveNoStep) {
    struct Refusal {
        const char* name;
        std::function<bool(HMKDocument&)> run;
        bool confirms;
        const char* alertTitle;  // nullptr: refused silently
    };
    const std::vector<Refusal> refusals = {
        {"resize by 0", [](HMKDocument& d) { return d.resizeByPercent(0); }, true, "Resize Design"},
        {"thread out of range", [](HMKDocument& d) { return d.deleteThreadWithIndex(4); }, true,
         nullptr},
        {"thread onto itself", [](HMKDocument& d) { return d.moveThreadFromIndex(1, 1); }, true,
         nullptr},
        {"colour of no thread",
         [](HMKDocument& d) { return d.changeWithUndoThread(-1, HMKColor(), ""); }, true, nullptr},
        {"unknown hoop", [](HMKDocument& d) { return d.selectHoop("Janome", 99); }, true, nullptr},
        {"centre cancelled", [](HMKDocument& d) { return d.center(); }, false, "Center Design"},
        {"reset cancelled", [](HMKDocument& d) { return d.resetPalette(); }, false, "Reset Colors"},
    };
    for (const Refusal& refusal : refusals) {
        SCOPED_TRACE(refusal.name);
        auto document = openWithSelection("heart.jef");
        const HMKDesign before = document->design();
        alerts_.clear();
        answer_.confirmed = refusal.confirms;
        EXPECT_FALSE(refusal.run(*document));
        EXPECT_EQ(document->undoStack()->count(), 0);
        EXPECT_FALSE(document->isModified());
        expectIdentical(document->design(), before);
        ASSERT_EQ(alerts_.size(), refusal.alertTitle ? 1u : 0u);
        if (refusal.alertTitle) {
            EXPECT_EQ(alerts_[0].title, refusal.alertTitle);
        }
    }
}

TEST_F(DocumentTest, AFailedCommandIsReportedAndStillUndoable) {
    auto document = openWithSelection("heart.jef");
    const HMKDesign before = document->design();
    EXPECT_FALSE(document->changePalette("No Such Palette"));
    ASSERT_EQ(alerts_.size(), 1u);
    EXPECT_EQ(alerts_[0].title, "Thread Colors");
    EXPECT_EQ(alerts_[0].text,
              QString::fromStdString(makeError(140, "color palette not found").message()));
    EXPECT_EQ(alerts_[0].style, HMKAlertStyle::warning);
    EXPECT_EQ(document->undoStack()->undoText(), "palette change");
    document->undo();
    expectIdentical(document->design(), before);
}

TEST(UndoHistory, TheOldestStepsGoWhenTheBudgetIsExceeded) {
    HMKDesign current;
    HMKUndoHistory history([&current](HMKDesign& snapshot) { std::swap(current, snapshot); });
    auto designOf = [](float size) {
        HMKDesign design;
        design.setStitches(std::vector<HMKStitch>(1000, HMKStitch(size, 0, false, false)));
        return design;
    };
    const std::size_t snapshot = HMKUndoHistory::snapshotBytes(designOf(0));
    history.setMemoryBudget(snapshot * 5 / 2);
    for (int step = 1; step <= 5; ++step) {
        HMKDesign before = std::exchange(current, designOf(static_cast<float>(step)));
        history.record(QString::number(step), std::move(before));
        if (step == 3) {
            history.stack().setClean();
        }
    }
    // Steps 4 and 5 are kept, the clean state at step 3 too.
    EXPECT_EQ(history.stack().count(), 2);
    EXPECT_LE(history.memoryUsed(), history.memoryBudget());
    history.stack().undo();
    history.stack().undo();
    EXPECT_TRUE(history.stack().isClean());
    EXPECT_EQ(current.stitches()[0].deltaX, 3);
    history.stack().redo();
    history.stack().redo();
    EXPECT_EQ(current.stitches()[0].deltaX, 5);
    // One step over the budget on its own is still kept.
    history.setMemoryBudget(0);
    EXPECT_EQ(history.stack().count(), 1);
}
