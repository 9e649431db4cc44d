#include "document/undo_history.h"

#include <utility>
#include <vector>

#include <QUndoCommand>

// One step: the design on the other side of the change. Undo and redo are the same swap;
// which side the snapshot holds follows from how often it was swapped.
class HMKUndoHistory::SnapshotCommand : public QUndoCommand {
public:
    SnapshotCommand(HMKUndoHistory& history, const QString& text,
                    std::shared_ptr<HMKDesign> snapshot)
        : QUndoCommand(text), history_(history), snapshot_(std::move(snapshot)) {}

    void undo() override { history_.swap(*snapshot_); }
    void redo() override {
        // QUndoStack::push() calls redo() at once, but the change is already made.
        if (pushing_) {
            pushing_ = false;
            return;
        }
        history_.swap(*snapshot_);
    }

    const std::shared_ptr<HMKDesign>& snapshot() const { return snapshot_; }

private:
    HMKUndoHistory& history_;
    std::shared_ptr<HMKDesign> snapshot_;
    bool pushing_ = true;
};

HMKUndoHistory::HMKUndoHistory(Swap swap) : swap_(std::move(swap)) {}

void HMKUndoHistory::swap(HMKDesign& snapshot) {
    if (!rebuilding_) {
        swap_(snapshot);
    }
}

void HMKUndoHistory::record(const QString& actionName, HMKDesign before) {
    stack_.push(
        new SnapshotCommand(*this, actionName, std::make_shared<HMKDesign>(std::move(before))));
    enforceBudget();
}

void HMKUndoHistory::clear() {
    stack_.clear();
}

void HMKUndoHistory::setMemoryBudget(std::size_t bytes) {
    budget_ = bytes;
    enforceBudget();
}

std::size_t HMKUndoHistory::snapshotBytes(const HMKDesign& design) {
    std::size_t bytes = sizeof(HMKDesign) + design.stitches().capacity() * sizeof(HMKStitch) +
                        design.threads().capacity() * sizeof(HMKThread) +
                        design.designName().capacity() + design.designType().capacity();
    for (const HMKThread& thread : design.threads()) {
        bytes += thread.name.capacity() + thread.key.capacity() + thread.palette.capacity() +
                 thread.paletteName.capacity();
    }
    return bytes;
}

std::size_t HMKUndoHistory::memoryUsed() const {
    std::size_t bytes = 0;
    for (int i = 0; i < stack_.count(); ++i) {
        bytes += snapshotBytes(*static_cast<const SnapshotCommand*>(stack_.command(i))->snapshot());
    }
    return bytes;
}

void HMKUndoHistory::enforceBudget() {
    // Only steps below the current index can go: dropping a redo step would break the chain.
    int drop = 0;
    for (std::size_t used = memoryUsed(); used > budget_ && drop < stack_.index() - 1; ++drop) {
        used -=
            snapshotBytes(*static_cast<const SnapshotCommand*>(stack_.command(drop))->snapshot());
    }
    if (drop == 0) {
        return;
    }
    // QUndoStack can only forget steps from the top, so it is rebuilt from the kept steps;
    // the snapshots are shared, not copied, and nothing is swapped meanwhile.
    struct Step {
        QString text;
        std::shared_ptr<HMKDesign> snapshot;
    };
    std::vector<Step> kept;
    for (int i = drop; i < stack_.count(); ++i) {
        auto* command = static_cast<const SnapshotCommand*>(stack_.command(i));
        kept.push_back({command->text(), command->snapshot()});
    }
    const int index = stack_.index() - drop;
    const int cleanIndex = stack_.cleanIndex() >= drop ? stack_.cleanIndex() - drop : -1;
    rebuilding_ = true;
    stack_.clear();
    if (cleanIndex != 0) {
        stack_.resetClean();
    }
    for (Step& step : kept) {
        stack_.push(new SnapshotCommand(*this, step.text, std::move(step.snapshot)));
        if (stack_.index() == cleanIndex) {
            stack_.setClean();
        }
    }
    stack_.setIndex(index);
    rebuilding_ = false;
}
