// Every command of the desktop application is one QAction made here, from one table: its
// text, shortcut (a standard key where the desktop has one), icon from the icon theme with a
// fallback, and, for the display switches, the setting it shows. Menus, the toolbar and the
// context menus of a window all reuse its registry's actions; the window connects them to the
// document and decides when each is enabled.
#pragma once

#include <array>
#include <cstddef>

#include <QAction>
#include <QActionGroup>
#include <QObject>

#include "document/document.h"
#include "platform/settings.h"

enum class HMKCommand {
    // File
    open,
    save,
    saveAs,
    revert,
    exportToMachine,
    print,
    printPreview,
    exportPdf,
    // File > Print Options
    printJumps,
    printGrid,
    printCenter,
    printHoop,
    printFirst,
    printLast,
    printStructure,
    printFastMode,
    printTemplate,
    close,
    quit,
    // Edit
    undo,
    redo,
    cut,
    copy,
    paste,
    deleteSelection,
    selectAll,
    deselect,
    invertSelection,
    preferences,
    // Design
    rotateLeft,
    rotateRight,
    rotateFree,
    flipVertical,
    flipHorizontal,
    resize,
    move,
    center,
    basting,
    stitchesToJumps,
    jumpsToStitches,
    insertThread,
    resetPalette,
    // View
    zoomIn,
    zoomOut,
    zoomToFit,
    actualSize,
    showJumps,
    showGrid,
    showCenter,
    showHoop,
    showFirst,
    showLast,
    showStructure,
    drawFastMode,
    showRulers,
    backgroundColor,
    stitchOutPlayer,
    measure,
    selectRectangle,
    selectStitch,
    selectBlock,
    selectThread,
    // Help
    about,
    count
};

class HMKActionRegistry : public QObject {
    Q_OBJECT
public:
    // The display switches are checked from the settings and write them when toggled.
    HMKActionRegistry(HMKSettings& settings, QObject* parent);

    QAction* action(HMKCommand command) const {
        return actions_[static_cast<std::size_t>(command)];
    }
    // The selection mode shown by the checked mode action.
    static HMKSelectionMode selectionModeOf(HMKCommand command);
    static HMKCommand commandOf(HMKSelectionMode mode);

private:
    std::array<QAction*, static_cast<std::size_t>(HMKCommand::count)> actions_{};
    QActionGroup* selectionModes_ = nullptr;
};
