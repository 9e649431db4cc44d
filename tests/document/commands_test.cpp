#include "document_test_support.h"

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
        {"change hoop", [](HMKDocument& d) { return d.selectHoop("Janome", -1); }},
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
    EXPECT_EQ(std::unique_ptr<QAction>(document->createUndoAction(nullptr))->text(),
              "Undo palette change");
    document->undo();
    expectIdentical(document->design(), before);
}

TEST_F(DocumentTest, TheOldestStepsGoWhenTheUndoBudgetIsExceeded) {
    auto document = makeDocument();
    HMKDesign large;  // about 1.2 MB per snapshot
    large.setStitches(std::vector<HMKStitch>(100'000, HMKStitch(1, 0, false, false)));
    large.setThreads({HMKThread()});
    document->setDesign(large);
    document->selectAll();
    std::vector<HMKDesign> designs{document->design()};
    for (int step = 1; step <= 4; ++step) {
        ASSERT_TRUE(document->moveByVector({1, 1}));
        designs.push_back(document->design());
        if (step == 2) {
            document->undoStack()->setClean();
        }
    }
    settings_->setValue(HMKSettings::undoMemoryMegabytes, 3);
    // Steps 3 and 4 are kept, and the clean state after step 2 with them.
    EXPECT_EQ(document->undoStack()->count(), 2);
    EXPECT_LE(document->undoMemoryUsed(), std::size_t{3} << 20);
    document->undo();
    document->undo();
    EXPECT_TRUE(document->undoStack()->isClean());
    expectIdentical(document->design(), designs[2]);
    document->redo();
    document->redo();
    expectIdentical(document->design(), designs[4]);
    // A step larger than the whole budget still stays.
    settings_->setValue(HMKSettings::undoMemoryMegabytes, 0);
    EXPECT_EQ(document->undoStack()->count(), 1);
}
