// The undo history of one document: Qt's QUndoStack filled with whole-design snapshots. Each
// step holds one full copy of the design; undoing or redoing a step swaps that copy with the
// document's design, so both are constant-time and give back exactly the design that was
// there, never a recomputed one. The steps together stay within a memory budget: when a new
// step goes over it, the oldest steps are dropped (the newest one always stays).
#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include <QString>
#include <QUndoStack>

#include "model/design.h"

class HMKUndoHistory {
public:
    // Exchanges the document's design with a snapshot; undo and redo both call it.
    using Swap = std::function<void(HMKDesign& snapshot)>;

    explicit HMKUndoHistory(Swap swap);
    HMKUndoHistory(const HMKUndoHistory&) = delete;
    HMKUndoHistory& operator=(const HMKUndoHistory&) = delete;

    // The stack, for its signals, its clean state and its ready-made Undo/Redo actions.
    QUndoStack& stack() { return stack_; }
    const QUndoStack& stack() const { return stack_; }

    // --- Recording -----------------------------------------------------------------------
    // Adds a step for a change that is already made: before is the design as it was, and
    // actionName the step's name ("rotate" shows as "Undo rotate").
    void record(const QString& actionName, HMKDesign before);
    // Forgets every step (after a save or a revert).
    void clear();

    // --- Memory --------------------------------------------------------------------------
    void setMemoryBudget(std::size_t bytes);
    std::size_t memoryBudget() const { return budget_; }
    // The bytes the snapshots of all steps hold.
    std::size_t memoryUsed() const;
    // The bytes one snapshot holds: its stitch and thread records and texts.
    static std::size_t snapshotBytes(const HMKDesign& design);

private:
    class SnapshotCommand;
    friend class SnapshotCommand;

    void swap(HMKDesign& snapshot);
    // Drops the oldest undoable steps until the budget holds or one step is left.
    void enforceBudget();

    Swap swap_;
    QUndoStack stack_;
    std::size_t budget_ = static_cast<std::size_t>(512) << 20;
    // Set while the stack is rebuilt, so that its replayed undo and redo calls change nothing.
    bool rebuilding_ = false;
};
