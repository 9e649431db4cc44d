#include "gui/action_registry.h"

#include <QApplication>
#include <QIcon>
#include <QKeySequence>
#include <QStyle>

namespace {

struct ActionRow {
    HMKCommand command;
    const char* text;
    // A standard key where the desktop defines one, else a fixed shortcut (may be empty).
    QKeySequence::StandardKey standardKey = QKeySequence::UnknownKey;
    const char* shortcut = "";
    // Icon theme name and the style's icon when the theme has none.
    const char* iconName = "";
    QStyle::StandardPixmap fallbackIcon = QStyle::SP_CustomBase;
    const HMKSettingKey<bool>* setting = nullptr;
    const char* statusTip = "";
};

using Key = QKeySequence;

const ActionRow kActions[] = {
    {HMKCommand::open, QT_TRANSLATE_NOOP("HMKActionRegistry", "&Open…"), Key::Open, "",
     "document-open", QStyle::SP_DialogOpenButton, nullptr,
     QT_TRANSLATE_NOOP("HMKActionRegistry", "Open an embroidery design")},
    {HMKCommand::save, QT_TRANSLATE_NOOP("HMKActionRegistry", "&Save"), Key::Save, "",
     "document-save", QStyle::SP_DialogSaveButton},
    {HMKCommand::saveAs, QT_TRANSLATE_NOOP("HMKActionRegistry", "Save &As…"), Key::SaveAs,
     "Ctrl+Shift+S", "document-save-as"},
    {HMKCommand::revert, QT_TRANSLATE_NOOP("HMKActionRegistry", "Re&vert to Saved"),
     Key::UnknownKey, "", "document-revert"},
    {HMKCommand::exportToMachine, QT_TRANSLATE_NOOP("HMKActionRegistry", "&Export to Machine…"),
     Key::UnknownKey, "Ctrl+Shift+E", "document-send"},
    {HMKCommand::print, QT_TRANSLATE_NOOP("HMKActionRegistry", "&Print…"), Key::Print, "",
     "document-print", QStyle::SP_CustomBase, nullptr,
     QT_TRANSLATE_NOOP("HMKActionRegistry", "Print the worksheet or the 1:1 template")},
    {HMKCommand::printPreview, QT_TRANSLATE_NOOP("HMKActionRegistry", "Print Pre&view…"),
     Key::UnknownKey, "Ctrl+Shift+P", "document-print-preview"},
    {HMKCommand::exportPdf, QT_TRANSLATE_NOOP("HMKActionRegistry", "Export as P&DF…"),
     Key::UnknownKey, "", "application-pdf"},
    {HMKCommand::printJumps, QT_TRANSLATE_NOOP("HMKActionRegistry", "Print &Jumps"),
     Key::UnknownKey, "", "", QStyle::SP_CustomBase, &HMKSettings::printJumps},
    {HMKCommand::printGrid, QT_TRANSLATE_NOOP("HMKActionRegistry", "Print &Grid"), Key::UnknownKey,
     "", "", QStyle::SP_CustomBase, &HMKSettings::printGrid},
    {HMKCommand::printCenter, QT_TRANSLATE_NOOP("HMKActionRegistry", "Print &Centre"),
     Key::UnknownKey, "", "", QStyle::SP_CustomBase, &HMKSettings::printCenter},
    {HMKCommand::printHoop, QT_TRANSLATE_NOOP("HMKActionRegistry", "Print &Hoop"), Key::UnknownKey,
     "", "", QStyle::SP_CustomBase, &HMKSettings::printHoop},
    {HMKCommand::printFirst, QT_TRANSLATE_NOOP("HMKActionRegistry", "Print &First Stitch"),
     Key::UnknownKey, "", "", QStyle::SP_CustomBase, &HMKSettings::printFirst},
    {HMKCommand::printLast, QT_TRANSLATE_NOOP("HMKActionRegistry", "Print &Last Stitch"),
     Key::UnknownKey, "", "", QStyle::SP_CustomBase, &HMKSettings::printLast},
    {HMKCommand::printStructure, QT_TRANSLATE_NOOP("HMKActionRegistry", "Print &Structure"),
     Key::UnknownKey, "", "", QStyle::SP_CustomBase, &HMKSettings::printStructure},
    {HMKCommand::printFastMode,
     QT_TRANSLATE_NOOP("HMKActionRegistry", "Print Fast &Mode (Flat Thread)"), Key::UnknownKey, "",
     "", QStyle::SP_CustomBase, &HMKSettings::printFastMode},
    {HMKCommand::printTemplate,
     QT_TRANSLATE_NOOP("HMKActionRegistry", "Print &Template at True Size"), Key::UnknownKey, "",
     "", QStyle::SP_CustomBase, &HMKSettings::printTemplate,
     QT_TRANSLATE_NOOP("HMKActionRegistry",
                       "Print the design 1:1 with centre cross and hoop, to place it on the "
                       "fabric, instead of the worksheet")},
    {HMKCommand::close, QT_TRANSLATE_NOOP("HMKActionRegistry", "&Close"), Key::Close, "Ctrl+W",
     "window-close"},
    {HMKCommand::quit, QT_TRANSLATE_NOOP("HMKActionRegistry", "&Quit"), Key::Quit, "Ctrl+Q",
     "application-exit"},

    {HMKCommand::undo, QT_TRANSLATE_NOOP("HMKActionRegistry", "&Undo"), Key::Undo, "", "edit-undo",
     QStyle::SP_ArrowBack},
    {HMKCommand::redo, QT_TRANSLATE_NOOP("HMKActionRegistry", "&Redo"), Key::Redo, "", "edit-redo",
     QStyle::SP_ArrowForward},
    {HMKCommand::cut, QT_TRANSLATE_NOOP("HMKActionRegistry", "Cu&t"), Key::Cut, "", "edit-cut"},
    {HMKCommand::copy, QT_TRANSLATE_NOOP("HMKActionRegistry", "&Copy"), Key::Copy, "", "edit-copy"},
    {HMKCommand::paste, QT_TRANSLATE_NOOP("HMKActionRegistry", "&Paste"), Key::Paste, "",
     "edit-paste"},
    {HMKCommand::deleteSelection, QT_TRANSLATE_NOOP("HMKActionRegistry", "&Delete"), Key::Delete,
     "", "edit-delete", QStyle::SP_TrashIcon},
    {HMKCommand::selectAll, QT_TRANSLATE_NOOP("HMKActionRegistry", "Select &All"), Key::SelectAll,
     "", "edit-select-all"},
    {HMKCommand::deselect, QT_TRANSLATE_NOOP("HMKActionRegistry", "Dese&lect"), Key::Deselect,
     "Ctrl+Shift+A"},
    {HMKCommand::invertSelection, QT_TRANSLATE_NOOP("HMKActionRegistry", "&Invert Selection"),
     Key::UnknownKey, "Ctrl+I"},
    {HMKCommand::preferences, QT_TRANSLATE_NOOP("HMKActionRegistry", "Pre&ferences…"),
     Key::Preferences, "Ctrl+,", "preferences-system"},

    {HMKCommand::rotateLeft, QT_TRANSLATE_NOOP("HMKActionRegistry", "Rotate &Left"),
     Key::UnknownKey, "Ctrl+L", "object-rotate-left"},
    {HMKCommand::rotateRight, QT_TRANSLATE_NOOP("HMKActionRegistry", "Rotate &Right"),
     Key::UnknownKey, "Ctrl+R", "object-rotate-right"},
    {HMKCommand::rotateFree, QT_TRANSLATE_NOOP("HMKActionRegistry", "R&otate by Angle…"),
     Key::UnknownKey, "Ctrl+Shift+R"},
    {HMKCommand::flipVertical, QT_TRANSLATE_NOOP("HMKActionRegistry", "Flip &Vertically"),
     Key::UnknownKey, "Ctrl+Shift+V", "object-flip-vertical"},
    {HMKCommand::flipHorizontal, QT_TRANSLATE_NOOP("HMKActionRegistry", "Flip &Horizontally"),
     Key::UnknownKey, "Ctrl+Shift+H", "object-flip-horizontal"},
    {HMKCommand::resize, QT_TRANSLATE_NOOP("HMKActionRegistry", "Re&size…"), Key::UnknownKey,
     "Ctrl+Shift+Z"},
    {HMKCommand::move, QT_TRANSLATE_NOOP("HMKActionRegistry", "&Move…"), Key::UnknownKey, "Ctrl+M"},
    {HMKCommand::center, QT_TRANSLATE_NOOP("HMKActionRegistry", "&Centre in Hoop"), Key::UnknownKey,
     "Ctrl+E", "format-justify-center"},
    {HMKCommand::basting, QT_TRANSLATE_NOOP("HMKActionRegistry", "Add &Basting…"), Key::UnknownKey,
     "Ctrl+B"},
    {HMKCommand::stitchesToJumps, QT_TRANSLATE_NOOP("HMKActionRegistry", "Stitches to &Jumps"),
     Key::UnknownKey, "Ctrl+J"},
    {HMKCommand::jumpsToStitches, QT_TRANSLATE_NOOP("HMKActionRegistry", "J&umps to Stitches"),
     Key::UnknownKey, "Ctrl+Shift+J"},
    {HMKCommand::insertThread, QT_TRANSLATE_NOOP("HMKActionRegistry", "&Insert Thread"),
     Key::UnknownKey, "Ctrl+T"},
    {HMKCommand::resetPalette, QT_TRANSLATE_NOOP("HMKActionRegistry", "&Reset Colours…")},

    {HMKCommand::zoomIn, QT_TRANSLATE_NOOP("HMKActionRegistry", "Zoom &In"), Key::ZoomIn, "Ctrl++",
     "zoom-in"},
    {HMKCommand::zoomOut, QT_TRANSLATE_NOOP("HMKActionRegistry", "Zoom &Out"), Key::ZoomOut,
     "Ctrl+-", "zoom-out"},
    {HMKCommand::zoomToFit, QT_TRANSLATE_NOOP("HMKActionRegistry", "Zoom to &Fit"), Key::UnknownKey,
     "Ctrl+0", "zoom-fit-best"},
    {HMKCommand::actualSize, QT_TRANSLATE_NOOP("HMKActionRegistry", "&Actual Size"),
     Key::UnknownKey, "Ctrl+1", "zoom-original"},
    {HMKCommand::showJumps, QT_TRANSLATE_NOOP("HMKActionRegistry", "Show &Jumps"), Key::UnknownKey,
     "", "", QStyle::SP_CustomBase, &HMKSettings::showJumps},
    {HMKCommand::showGrid, QT_TRANSLATE_NOOP("HMKActionRegistry", "Show &Grid"), Key::UnknownKey,
     "Ctrl+G", "", QStyle::SP_CustomBase, &HMKSettings::showGrid},
    {HMKCommand::showCenter, QT_TRANSLATE_NOOP("HMKActionRegistry", "Show &Centre"),
     Key::UnknownKey, "", "", QStyle::SP_CustomBase, &HMKSettings::showCenter},
    {HMKCommand::showHoop, QT_TRANSLATE_NOOP("HMKActionRegistry", "Show &Hoop"), Key::UnknownKey,
     "Ctrl+H", "", QStyle::SP_CustomBase, &HMKSettings::showHoop},
    {HMKCommand::showFirst, QT_TRANSLATE_NOOP("HMKActionRegistry", "Show &First Stitch"),
     Key::UnknownKey, "", "", QStyle::SP_CustomBase, &HMKSettings::showFirst},
    {HMKCommand::showLast, QT_TRANSLATE_NOOP("HMKActionRegistry", "Show &Last Stitch"),
     Key::UnknownKey, "", "", QStyle::SP_CustomBase, &HMKSettings::showLast},
    {HMKCommand::showStructure, QT_TRANSLATE_NOOP("HMKActionRegistry", "Show &Structure"),
     Key::UnknownKey, "", "", QStyle::SP_CustomBase, &HMKSettings::showStructure},
    {HMKCommand::drawFastMode, QT_TRANSLATE_NOOP("HMKActionRegistry", "Fast &Mode (Flat Thread)"),
     Key::UnknownKey, "", "", QStyle::SP_CustomBase, &HMKSettings::drawFastMode},
    {HMKCommand::showRulers, QT_TRANSLATE_NOOP("HMKActionRegistry", "Show &Rulers"),
     Key::UnknownKey, "Ctrl+Shift+U", "", QStyle::SP_CustomBase, &HMKSettings::showRulers},
    {HMKCommand::backgroundColor, QT_TRANSLATE_NOOP("HMKActionRegistry", "&Background Colour…"),
     Key::UnknownKey, "", "color-select"},
    {HMKCommand::stitchOutPlayer, QT_TRANSLATE_NOOP("HMKActionRegistry", "Stitch-Out &Player"),
     Key::UnknownKey, "F5", "media-playback-start", QStyle::SP_MediaPlay, nullptr,
     QT_TRANSLATE_NOOP("HMKActionRegistry", "Sew the design out stitch by stitch")},
    {HMKCommand::measure, QT_TRANSLATE_NOOP("HMKActionRegistry", "Mea&sure"), Key::UnknownKey,
     "Ctrl+Shift+M", "", QStyle::SP_CustomBase, nullptr,
     QT_TRANSLATE_NOOP("HMKActionRegistry",
                       "Drag on the design to measure a distance and an angle; Esc ends")},
    {HMKCommand::selectRectangle, QT_TRANSLATE_NOOP("HMKActionRegistry", "Select by &Rectangle")},
    {HMKCommand::selectStitch, QT_TRANSLATE_NOOP("HMKActionRegistry", "Select by &Stitch")},
    {HMKCommand::selectBlock, QT_TRANSLATE_NOOP("HMKActionRegistry", "Select by &Block")},
    {HMKCommand::selectThread, QT_TRANSLATE_NOOP("HMKActionRegistry", "Select by &Thread")},

    {HMKCommand::about, QT_TRANSLATE_NOOP("HMKActionRegistry", "&About Hemlark"), Key::UnknownKey,
     "", "help-about"},
};

struct ModeRow {
    HMKCommand command;
    HMKSelectionMode mode;
};
constexpr ModeRow kSelectionModes[] = {
    {HMKCommand::selectRectangle, HMKSelectionMode::rectangle},
    {HMKCommand::selectStitch, HMKSelectionMode::stitch},
    {HMKCommand::selectBlock, HMKSelectionMode::block},
    {HMKCommand::selectThread, HMKSelectionMode::thread},
};

QIcon iconFor(const ActionRow& row) {
    const QIcon fallback = row.fallbackIcon == QStyle::SP_CustomBase
                               ? QIcon()
                               : QApplication::style()->standardIcon(row.fallbackIcon);
    return *row.iconName ? QIcon::fromTheme(row.iconName, fallback) : fallback;
}

}  // namespace

HMKActionRegistry::HMKActionRegistry(HMKSettings& settings, QObject* parent) : QObject(parent) {
    static_assert(std::size(kActions) == static_cast<std::size_t>(HMKCommand::count));
    for (const ActionRow& row : kActions) {
        auto* action = new QAction(iconFor(row), tr(row.text), this);
        QList<QKeySequence> shortcuts = QKeySequence::keyBindings(row.standardKey);
        if (shortcuts.isEmpty() && *row.shortcut) {
            shortcuts.append(QKeySequence(QString::fromLatin1(row.shortcut)));
        }
        action->setShortcuts(shortcuts);
        if (*row.statusTip) {
            action->setStatusTip(tr(row.statusTip));
        }
        if (row.setting) {
            const HMKSettingKey<bool>& key = *row.setting;
            action->setCheckable(true);
            action->setChecked(settings.value(key));
            connect(action, &QAction::toggled, &settings,
                    [&settings, &key](bool on) { settings.setValue(key, on); });
            connect(&settings, &HMKSettings::changed, action,
                    [action, &settings, &key] { action->setChecked(settings.value(key)); });
        }
        actions_[static_cast<std::size_t>(row.command)] = action;
    }
    selectionModes_ = new QActionGroup(this);
    for (const ModeRow& row : kSelectionModes) {
        action(row.command)->setCheckable(true);
        selectionModes_->addAction(action(row.command));
    }
    action(HMKCommand::selectRectangle)->setChecked(true);
    action(HMKCommand::stitchOutPlayer)->setCheckable(true);
    action(HMKCommand::measure)->setCheckable(true);
    action(HMKCommand::quit)->setMenuRole(QAction::QuitRole);
    action(HMKCommand::preferences)->setMenuRole(QAction::PreferencesRole);
    action(HMKCommand::about)->setMenuRole(QAction::AboutRole);
}

HMKSelectionMode HMKActionRegistry::selectionModeOf(HMKCommand command) {
    for (const ModeRow& row : kSelectionModes) {
        if (row.command == command) {
            return row.mode;
        }
    }
    return HMKSelectionMode::rectangle;
}

HMKCommand HMKActionRegistry::commandOf(HMKSelectionMode mode) {
    for (const ModeRow& row : kSelectionModes) {
        if (row.mode == mode) {
            return row.command;
        }
    }
    return HMKCommand::selectRectangle;
}
