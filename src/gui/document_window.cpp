#include "gui/document_window.h"

#include <algorithm>
#include <set>

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QDockWidget>
#include <QFileInfo>
#include <QLabel>
#include <QMenuBar>
#include <QMimeData>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QScreen>
#include <QStatusBar>
#include <QToolBar>
#include <QUndoStack>

#include "formats/file_io.h"
#include "formats/format_extensions.h"
#include "gui/application_controller.h"
#include "gui/command_dialog.h"
#include "gui/design_canvas.h"
#include "gui/dialog_hooks.h"
#include "gui/information_panel.h"
#include "gui/machine_export_flow.h"
#include "gui/player_panel.h"
#include "gui/thread_list_view.h"
#include "platform/printout.h"

namespace {

QString fileText(const std::filesystem::path& path) {
    return QString::fromStdString(path.string());
}

std::filesystem::path filePath(const QString& text) {
    return std::filesystem::path(text.toStdString());
}

}  // namespace

HMKDocumentWindow::HMKDocumentWindow(HMKApplicationController& application, HMKSettings& settings,
                                     QWidget* parent)
    : QMainWindow(parent),
      application_(application),
      settings_(settings),
      document_(std::make_unique<HMKDocument>(settings)) {
    setAttribute(Qt::WA_DeleteOnClose);
    setAcceptDrops(true);
    setWindowIcon(QIcon::fromTheme(QStringLiteral("hemlark"), windowIcon()));
    document_->setAlertHandler(alertHandlerFor(this));
    actions_ = new HMKActionRegistry(settings_, this);
    canvas_ = new HMKDesignCanvas(*document_, settings_, this);
    setCentralWidget(canvas_);
    buildDocks();
    buildMenus();
    buildPlayer();
    buildToolBar();
    buildStatusBar();
    connectActions();

    // A sensible first size: most of the screen, at most a comfortable desktop window.
    const QSize available = screen() ? screen()->availableGeometry().size() : QSize(1280, 800);
    resize(std::min(1200, available.width() * 9 / 10), std::min(780, available.height() * 9 / 10));

    connect(document_.get(), &HMKDocument::designChanged, this, &HMKDocumentWindow::updateActions);
    connect(document_.get(), &HMKDocument::selectionChanged, this,
            &HMKDocumentWindow::updateActions);
    connect(document_.get(), &HMKDocument::undoStateChanged, this,
            &HMKDocumentWindow::updateActions);
    connect(document_.get(), &HMKDocument::modifiedChanged, this, &HMKDocumentWindow::updateTitle);
    connect(document_.get(), &HMKDocument::fileURLChanged, this, &HMKDocumentWindow::updateTitle);
    connect(QApplication::clipboard(), &QClipboard::dataChanged, this,
            &HMKDocumentWindow::updateActions);
    updateTitle();
    updateActions();
}

HMKDocumentWindow::~HMKDocumentWindow() = default;

bool HMKDocumentWindow::isEmptyAndUnchanged() const {
    return document_->design().stitches().empty() && !document_->isModified() &&
           document_->fileURL().empty();
}

// --- Building ---------------------------------------------------------------------------------

void HMKDocumentWindow::buildDocks() {
    information_ = new HMKInformationPanel(*document_, settings_, this);
    auto* informationDock = new QDockWidget(tr("Information"), this);
    informationDock->setObjectName(QStringLiteral("information"));
    informationDock->setWidget(information_);
    informationDock->setFeatures(QDockWidget::DockWidgetClosable | QDockWidget::DockWidgetMovable);
    addDockWidget(Qt::RightDockWidgetArea, informationDock);

    threadList_ = new HMKThreadListView(*document_, this);
    auto* threadDock = new QDockWidget(tr("Threads"), this);
    threadDock->setObjectName(QStringLiteral("threads"));
    threadDock->setWidget(threadList_);
    threadDock->setFeatures(QDockWidget::DockWidgetClosable | QDockWidget::DockWidgetMovable);
    addDockWidget(Qt::RightDockWidgetArea, threadDock);
    resizeDocks({informationDock, threadDock}, {280, 280}, Qt::Horizontal);
}

void HMKDocumentWindow::buildMenus() {
    const auto add = [this](QMenu* menu, std::initializer_list<HMKCommand> commands) {
        for (HMKCommand command : commands) {
            menu->addAction(action(command));
        }
    };
    QMenu* file = menuBar()->addMenu(tr("&File"));
    add(file, {HMKCommand::open});
    QMenu* recent =
        file->addMenu(QIcon::fromTheme(QStringLiteral("document-open-recent")), tr("Open &Recent"));
    connect(recent, &QMenu::aboutToShow, this, [this, recent] { fillRecentMenu(recent); });
    fillRecentMenu(recent);
    file->addSeparator();
    add(file, {HMKCommand::save, HMKCommand::saveAs, HMKCommand::revert});
    file->addSeparator();
    add(file, {HMKCommand::exportToMachine, HMKCommand::print, HMKCommand::printPreview,
               HMKCommand::exportPdf});
    QMenu* printOptions = file->addMenu(tr("Print &Options"));
    add(printOptions, {HMKCommand::printTemplate});
    printOptions->addSeparator();
    add(printOptions, {HMKCommand::printJumps, HMKCommand::printGrid, HMKCommand::printCenter,
                       HMKCommand::printHoop, HMKCommand::printFirst, HMKCommand::printLast,
                       HMKCommand::printStructure, HMKCommand::printFastMode});
    file->addSeparator();
    add(file, {HMKCommand::close, HMKCommand::quit});

    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    add(edit, {HMKCommand::undo, HMKCommand::redo});
    edit->addSeparator();
    add(edit, {HMKCommand::cut, HMKCommand::copy, HMKCommand::paste, HMKCommand::deleteSelection});
    edit->addSeparator();
    add(edit, {HMKCommand::selectAll, HMKCommand::deselect, HMKCommand::invertSelection});
    edit->addSeparator();
    add(edit, {HMKCommand::preferences});

    QMenu* design = menuBar()->addMenu(tr("&Design"));
    add(design, {HMKCommand::rotateLeft, HMKCommand::rotateRight, HMKCommand::rotateFree});
    add(design, {HMKCommand::flipVertical, HMKCommand::flipHorizontal});
    design->addSeparator();
    add(design, {HMKCommand::resize, HMKCommand::move, HMKCommand::center});
    design->addSeparator();
    add(design, {HMKCommand::basting, HMKCommand::stitchesToJumps, HMKCommand::jumpsToStitches,
                 HMKCommand::insertThread});
    design->addSeparator();
    QMenu* hoop = design->addMenu(tr("&Hoop"));
    connect(hoop, &QMenu::aboutToShow, this, [this, hoop] { fillHoopMenu(hoop); });
    fillHoopMenu(hoop);
    QMenu* palette = design->addMenu(tr("Thread &Palette"));
    connect(palette, &QMenu::aboutToShow, this, [this, palette] { fillPaletteMenu(palette); });
    fillPaletteMenu(palette);

    QMenu* view = menuBar()->addMenu(tr("&View"));
    add(view,
        {HMKCommand::zoomIn, HMKCommand::zoomOut, HMKCommand::zoomToFit, HMKCommand::actualSize});
    view->addSeparator();
    add(view, {HMKCommand::showJumps, HMKCommand::showGrid, HMKCommand::showCenter,
               HMKCommand::showHoop, HMKCommand::showFirst, HMKCommand::showLast,
               HMKCommand::showStructure, HMKCommand::drawFastMode, HMKCommand::showRulers});
    add(view, {HMKCommand::backgroundColor});
    view->addSeparator();
    add(view, {HMKCommand::stitchOutPlayer, HMKCommand::measure});
    view->addSeparator();
    QMenu* modes = view->addMenu(tr("&Selection Mode"));
    add(modes, {HMKCommand::selectRectangle, HMKCommand::selectStitch, HMKCommand::selectBlock,
                HMKCommand::selectThread});
    view->addSeparator();
    for (QDockWidget* dock : findChildren<QDockWidget*>()) {
        view->addAction(dock->toggleViewAction());
    }

    QMenu* help = menuBar()->addMenu(tr("&Help"));
    add(help, {HMKCommand::about});

    canvas_->setContextMenuActions({action(HMKCommand::cut),
                                    action(HMKCommand::copy),
                                    action(HMKCommand::paste),
                                    action(HMKCommand::deleteSelection),
                                    nullptr,
                                    action(HMKCommand::rotateLeft),
                                    action(HMKCommand::rotateRight),
                                    action(HMKCommand::rotateFree),
                                    action(HMKCommand::flipVertical),
                                    action(HMKCommand::flipHorizontal),
                                    nullptr,
                                    action(HMKCommand::resize),
                                    action(HMKCommand::move),
                                    action(HMKCommand::stitchesToJumps),
                                    action(HMKCommand::jumpsToStitches),
                                    action(HMKCommand::insertThread),
                                    nullptr,
                                    action(HMKCommand::selectAll),
                                    action(HMKCommand::deselect),
                                    action(HMKCommand::invertSelection)});
}

void HMKDocumentWindow::buildToolBar() {
    QToolBar* tools = addToolBar(tr("Main Toolbar"));
    tools->setObjectName(QStringLiteral("main"));
    tools->setMovable(false);
    tools->setToolButtonStyle(Qt::ToolButtonIconOnly);
    for (HMKCommand command :
         {HMKCommand::open, HMKCommand::save, HMKCommand::count, HMKCommand::undo, HMKCommand::redo,
          HMKCommand::count, HMKCommand::rotateLeft, HMKCommand::rotateRight,
          HMKCommand::flipHorizontal, HMKCommand::flipVertical, HMKCommand::count,
          HMKCommand::zoomOut, HMKCommand::zoomToFit, HMKCommand::zoomIn, HMKCommand::count,
          HMKCommand::stitchOutPlayer}) {
        // count marks a separator here.
        if (command == HMKCommand::count) {
            tools->addSeparator();
        } else {
            tools->addAction(action(command));
        }
    }
}

void HMKDocumentWindow::buildPlayer() {
    player_ = new HMKPlayerPanel(canvas_->stitchOut(), settings_, this);
    playerDock_ = new QDockWidget(tr("Stitch-Out Player"), this);
    playerDock_->setObjectName(QStringLiteral("player"));
    playerDock_->setWidget(player_);
    playerDock_->setFeatures(QDockWidget::DockWidgetClosable | QDockWidget::DockWidgetMovable |
                             QDockWidget::DockWidgetFloatable);
    addDockWidget(Qt::BottomDockWidgetArea, playerDock_);
    playerDock_->hide();
    // Closing the panel ends the animation; the canvas shows the whole design again.
    connect(playerDock_, &QDockWidget::visibilityChanged, this, [this](bool visible) {
        if (!visible && !playerDock_->isVisible()) {
            action(HMKCommand::stitchOutPlayer)->setChecked(false);
        }
    });
}

void HMKDocumentWindow::buildStatusBar() {
    positionLabel_ = new QLabel(this);
    zoomLabel_ = new QLabel(this);
    positionLabel_->setMinimumWidth(180);
    statusBar()->addPermanentWidget(positionLabel_);
    statusBar()->addPermanentWidget(zoomLabel_);
    connect(canvas_, &HMKDesignCanvas::measurementChanged, this, [this](const QString& text) {
        if (text.isEmpty()) {
            statusBar()->clearMessage();
        } else {
            statusBar()->showMessage(tr("Measured: %1").arg(text));
        }
    });
    connect(canvas_, &HMKDesignCanvas::zoomChanged, this,
            [this](double zoom) { zoomLabel_->setText(tr("%1 %").arg(zoom * 100, 0, 'f', 0)); });
    connect(canvas_, &HMKDesignCanvas::pointerMoved, this, [this](std::optional<HMKPoint> point) {
        if (!point) {
            positionLabel_->clear();
            return;
        }
        const HMKMeasurementUnit unit = settings_.value(HMKSettings::measurementUnit);
        const auto text = [unit](double units) {
            return QString::fromStdString(HMKValueTransformer::transformedValue(units / 10, unit));
        };
        positionLabel_->setText(tr("x %1   y %2").arg(text(point->x), text(point->y)));
    });
    zoomLabel_->setText(tr("%1 %").arg(canvas_->zoomFactor() * 100, 0, 'f', 0));
}

void HMKDocumentWindow::connectActions() {
    HMKDocument& document = *document_;
    const auto on = [this](HMKCommand command, auto function) {
        connect(action(command), &QAction::triggered, this, function);
    };
    on(HMKCommand::open, [this] { application_.showOpenDialog(this); });
    on(HMKCommand::save, [this] { save(); });
    on(HMKCommand::saveAs, [this] { saveAs(); });
    on(HMKCommand::revert, [this, &document] {
        HMKError error;
        if (!document.revertToSaved(&error)) {
            showError(tr("Revert Failed"), error);
        }
    });
    on(HMKCommand::exportToMachine,
       [this, &document] { exportToMachine(this, document, settings_, desktopVolumeMonitor()); });
    on(HMKCommand::print, [this] { print(); });
    on(HMKCommand::printPreview, [this] { printPreview(); });
    on(HMKCommand::exportPdf, [this] { exportPdf(); });
    on(HMKCommand::close, [this] { close(); });
    on(HMKCommand::quit, [this] { application_.quit(); });

    on(HMKCommand::undo, [&document] { document.undo(); });
    on(HMKCommand::redo, [&document] { document.redo(); });
    on(HMKCommand::cut, [&document] { document.cut(); });
    on(HMKCommand::copy, [this, &document] {
        document.copy();
        updateActions();
    });
    on(HMKCommand::paste, [&document] { document.paste(); });
    on(HMKCommand::deleteSelection, [&document] { document.deleteWithUndo(); });
    on(HMKCommand::selectAll, [&document] { document.selectAll(); });
    on(HMKCommand::deselect, [&document] { document.deselectAll(); });
    on(HMKCommand::invertSelection, [&document] { document.invertSelection(); });
    on(HMKCommand::preferences, [this] { application_.showPreferences(); });

    on(HMKCommand::rotateLeft, [&document] { document.rotateL(); });
    on(HMKCommand::rotateRight, [&document] { document.rotateR(); });
    on(HMKCommand::rotateFree, [this] { rotateFree(); });
    on(HMKCommand::flipVertical, [&document] { document.flipV(); });
    on(HMKCommand::flipHorizontal, [&document] { document.flipH(); });
    on(HMKCommand::resize, [this] { resizeSelection(); });
    on(HMKCommand::move, [this] { moveSelection(); });
    on(HMKCommand::center, [&document] { document.center(); });
    on(HMKCommand::basting, [this] { addBasting(); });
    on(HMKCommand::stitchesToJumps, [&document] { document.toggleSelectionToJumps(true); });
    on(HMKCommand::jumpsToStitches, [&document] { document.toggleSelectionToJumps(false); });
    on(HMKCommand::insertThread, [&document] { document.insertThreadBeforeSelection(); });
    on(HMKCommand::resetPalette, [&document] { document.resetPalette(); });

    on(HMKCommand::zoomIn, [this] { canvas_->zoomIn(); });
    on(HMKCommand::zoomOut, [this] { canvas_->zoomOut(); });
    on(HMKCommand::zoomToFit, [this] { canvas_->zoomToFit(); });
    on(HMKCommand::actualSize, [this] { canvas_->zoomToActualSize(); });
    on(HMKCommand::backgroundColor, [this] { chooseBackground(); });
    connect(action(HMKCommand::stitchOutPlayer), &QAction::toggled, this, [this](bool on) {
        playerDock_->setVisible(on);
        canvas_->stitchOut().setActive(on);
        if (on) {
            player_->setFocus();
        }
    });
    connect(action(HMKCommand::measure), &QAction::toggled, canvas_,
            &HMKDesignCanvas::setMeasuring);
    connect(canvas_, &HMKDesignCanvas::measuringChanged, action(HMKCommand::measure),
            &QAction::setChecked);
    for (HMKCommand mode : {HMKCommand::selectRectangle, HMKCommand::selectStitch,
                            HMKCommand::selectBlock, HMKCommand::selectThread}) {
        on(mode,
           [this, mode] { canvas_->setSelectionMode(HMKActionRegistry::selectionModeOf(mode)); });
    }
    connect(canvas_, &HMKDesignCanvas::selectionModeChanged, this, [this](HMKSelectionMode mode) {
        action(HMKActionRegistry::commandOf(mode))->setChecked(true);
    });
    action(HMKActionRegistry::commandOf(canvas_->selectionMode()))->setChecked(true);
    on(HMKCommand::about, [this] { application_.showAbout(this); });
}

// --- State ------------------------------------------------------------------------------------

void HMKDocumentWindow::updateActions() {
    HMKDocument& document = *document_;
    const HMKDesign& design = document.design();
    const bool hasDesign = !design.stitches().empty() && !design.threads().empty();
    const bool selection = document.hasSelection();
    QUndoStack* stack = document.undoStack();
    const auto enable = [this](HMKCommand command, bool enabled) {
        action(command)->setEnabled(enabled);
    };
    enable(HMKCommand::save, hasDesign && (document.isModified() || !document.canSaveInPlace()));
    enable(HMKCommand::saveAs, hasDesign);
    enable(HMKCommand::exportToMachine, hasDesign);
    enable(HMKCommand::revert, document.isModified() && !document.fileURL().empty());
    enable(HMKCommand::undo, stack->canUndo());
    enable(HMKCommand::redo, stack->canRedo());
    action(HMKCommand::undo)
        ->setText(stack->canUndo() ? tr("&Undo %1").arg(stack->undoText()) : tr("&Undo"));
    action(HMKCommand::redo)
        ->setText(stack->canRedo() ? tr("&Redo %1").arg(stack->redoText()) : tr("&Redo"));
    for (HMKCommand command :
         {HMKCommand::cut, HMKCommand::copy, HMKCommand::deleteSelection, HMKCommand::deselect,
          HMKCommand::rotateLeft, HMKCommand::rotateRight, HMKCommand::rotateFree,
          HMKCommand::flipVertical, HMKCommand::flipHorizontal, HMKCommand::resize,
          HMKCommand::move, HMKCommand::stitchesToJumps, HMKCommand::jumpsToStitches,
          HMKCommand::insertThread}) {
        enable(command, selection);
    }
    enable(HMKCommand::paste, HMKDocument::canPaste());
    for (HMKCommand command :
         {HMKCommand::selectAll, HMKCommand::invertSelection, HMKCommand::center,
          HMKCommand::basting, HMKCommand::resetPalette, HMKCommand::zoomToFit, HMKCommand::print,
          HMKCommand::printPreview, HMKCommand::exportPdf, HMKCommand::stitchOutPlayer}) {
        enable(command, hasDesign);
    }
}

void HMKDocumentWindow::updateTitle() {
    setWindowTitle(tr("%1[*] \u2014 Hemlark").arg(document_->displayName()));
    setWindowFilePath(fileText(document_->fileURL()));
    setWindowModified(document_->isModified());
    updateActions();
}

void HMKDocumentWindow::fillRecentMenu(QMenu* menu) {
    menu->clear();
    const QStringList files = application_.recentFiles();
    for (const QString& file : files) {
        QAction* entry = menu->addAction(QFileInfo(file).fileName());
        entry->setStatusTip(file);
        connect(entry, &QAction::triggered, this, [this, file] { application_.openFiles({file}); });
    }
    menu->addSeparator();
    QAction* clear = menu->addAction(tr("&Clear Menu"));
    clear->setEnabled(!files.isEmpty());
    connect(clear, &QAction::triggered, this, [this] { application_.clearRecentFiles(); });
}

void HMKDocumentWindow::fillHoopMenu(QMenu* menu) {
    menu->clear();
    const HMKDesign& design = document_->design();
    const bool hasDesign = !design.stitches().empty();
    menu->setEnabled(hasDesign);
    QAction* none = menu->addAction(tr("&No Hoop"));
    connect(none, &QAction::triggered, this,
            [this] { document_->selectHoop(document_->design().hoopVendor(), -1); });
    std::vector<std::string> vendors;
    for (const HMKHoop& hoop : HMKDesign::hoops()) {
        if (std::find(vendors.begin(), vendors.end(), hoop.vendor()) == vendors.end()) {
            vendors.push_back(hoop.vendor());
        }
    }
    const HMKMeasurementUnit unit = settings_.value(HMKSettings::measurementUnit);
    for (const std::string& vendor : vendors) {
        QMenu* vendorMenu = menu->addMenu(QString::fromStdString(vendor));
        int tooSmall = 0;
        const std::vector<HMKHoop> hoops =
            HMKDesign::allHoopsFromVendor(vendor).value_or(std::vector<HMKHoop>());
        for (const HMKHoop& hoop : hoops) {
            if (!hoop.isWritable()) {
                continue;
            }
            if (hasDesign && !design.designFitsInHoop(hoop)) {
                ++tooSmall;
                continue;
            }
            QAction* entry = vendorMenu->addAction(QString::fromStdString(hoop.description()));
            entry->setCheckable(true);
            entry->setChecked(design.designHoop() && *design.designHoop() == hoop);
            connect(entry, &QAction::triggered, this,
                    [this, vendor, code = hoop.code()] { document_->selectHoop(vendor, code); });
        }
        if (tooSmall > 0) {
            vendorMenu->addSeparator();
            const auto length = [unit](double units) {
                return QString::fromStdString(
                    HMKValueTransformer::transformedValue(units / 10, unit));
            };
            QAction* why = vendorMenu->addAction(
                tr("%n smaller hoop(s) hidden: the design is %1 \u00D7 %2", nullptr, tooSmall)
                    .arg(length(design.designWidth()), length(design.designHeight())));
            why->setEnabled(false);
        }
    }
}

void HMKDocumentWindow::fillPaletteMenu(QMenu* menu) {
    menu->clear();
    menu->addAction(action(HMKCommand::resetPalette));
    menu->addSeparator();
    const std::string current = document_->design().designPalette();
    for (const std::string& palette : HMKDocument::paletteMenu()) {
        if (palette.empty()) {
            continue;
        }
        QAction* entry = menu->addAction(QString::fromStdString(palette));
        entry->setCheckable(true);
        entry->setChecked(palette == current);
        entry->setEnabled(!document_->design().stitches().empty());
        connect(entry, &QAction::triggered, this,
                [this, palette] { document_->changePalette(palette); });
    }
}

void HMKDocumentWindow::showError(const QString& title, const HMKError& error) {
    dialogHooks().alert(this, HMKAlert::message(title, QString::fromStdString(error.message())));
}

// --- Files ------------------------------------------------------------------------------------

bool HMKDocumentWindow::openFile(const QString& path) {
    HMKError error;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const bool read = document_->readFromURL(filePath(path), &error);
    QApplication::restoreOverrideCursor();
    if (!read) {
        showError(
            tr("The design \u201C%1\u201D could not be opened.").arg(QFileInfo(path).fileName()),
            error);
        return false;
    }
    application_.addRecentFile(path);
    canvas_->fitWhenShown();
    return true;
}

bool HMKDocumentWindow::save() {
    if (!document_->canSaveInPlace()) {
        return saveAs();
    }
    HMKError error;
    if (!document_->save(&error)) {
        showError(tr("The design could not be saved."), error);
        return false;
    }
    return true;
}

bool HMKDocumentWindow::saveAs() {
    const HMKDesign& design = document_->design();
    std::filesystem::path suggested = document_->fileURL();
    const auto writable = exportableExtensions();
    const std::string extension = lowercaseExtension(suggested);
    if (std::find(writable.begin(), writable.end(), extension) == writable.end()) {
        const std::string stem = std::filesystem::path(design.designName()).stem().string();
        suggested.replace_filename((stem.empty() ? "Untitled" : stem) + ".pes");
    }
    QString path = dialogHooks().saveFileName(this, fileText(suggested), application_.saveFilter());
    if (path.isEmpty()) {
        return false;
    }
    if (QFileInfo(path).suffix().isEmpty()) {
        path += QStringLiteral(".pes");
    }
    HMKError error;
    if (!document_->saveToURL(filePath(path), &error)) {
        showError(tr("The design could not be saved."), error);
        return false;
    }
    application_.addRecentFile(path);
    return true;
}

bool HMKDocumentWindow::maybeSave() {
    if (!document_->isModified()) {
        return true;
    }
    switch (dialogHooks().askToSave(this, document_->displayName())) {
        case HMKSaveAnswer::save:
            return save();
        case HMKSaveAnswer::discard:
            return true;
        case HMKSaveAnswer::cancel:
            break;
    }
    return false;
}

void HMKDocumentWindow::closeEvent(QCloseEvent* event) {
    if (!maybeSave()) {
        event->ignore();
        return;
    }
    document_->close();
    event->accept();
}

void HMKDocumentWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (!HMKApplicationController::designFiles(event->mimeData()).isEmpty()) {
        event->acceptProposedAction();
    }
}

void HMKDocumentWindow::dropEvent(QDropEvent* event) {
    const QStringList files = HMKApplicationController::designFiles(event->mimeData());
    if (files.isEmpty()) {
        return;
    }
    event->acceptProposedAction();
    // With Ctrl the designs are pasted into this one instead of opened.
    if (!(event->modifiers() & Qt::ControlModifier) || document_->design().stitches().empty()) {
        application_.openFiles(files, this);
        return;
    }
    for (const QString& file : files) {
        HMKDesign pasted;
        HMKError error;
        if (!pasted.importDesignFromURL(filePath(file), &error)) {
            showError(tr("The design \u201C%1\u201D could not be pasted.")
                          .arg(QFileInfo(file).fileName()),
                      error);
            continue;
        }
        document_->pasteWithUndo(std::move(pasted));
    }
}

// --- Command dialogs --------------------------------------------------------------------------

void HMKDocumentWindow::rotateFree() {
    const auto values =
        HMKCommandDialog::ask(this, tr("Rotate"), tr("Rotate the selection counter-clockwise by:"),
                              {{tr("&Angle:"), HMKDialogField::Kind::degrees, 90, -360, 360}},
                              settings_.value(HMKSettings::measurementUnit));
    if (values) {
        document_->rotateByDegrees(static_cast<std::int32_t>(std::lround(values->at(0))));
    }
}

void HMKDocumentWindow::resizeSelection() {
    const auto values =
        HMKCommandDialog::ask(this, tr("Resize"), tr("Resize the selection to:"),
                              {{tr("&Size:"), HMKDialogField::Kind::percent, 100, 1, 1000}},
                              settings_.value(HMKSettings::measurementUnit));
    if (values) {
        document_->resizeByPercent(static_cast<float>(values->at(0) / 100));
    }
}

void HMKDocumentWindow::moveSelection() {
    const auto values =
        HMKCommandDialog::ask(this, tr("Move"), tr("Move the selection by:"),
                              {{tr("&Right:"), HMKDialogField::Kind::length, 0, -1000, 1000},
                               {tr("&Up:"), HMKDialogField::Kind::length, 0, -1000, 1000}},
                              settings_.value(HMKSettings::measurementUnit));
    if (values) {
        // Millimetres to design units.
        document_->moveByVector({values->at(0) * 10, values->at(1) * 10});
    }
}

void HMKDocumentWindow::addBasting() {
    const auto [length, distance] = document_->lastBastingValues();
    const auto values = HMKCommandDialog::ask(
        this, tr("Add Basting"), tr("Add a basting outline around the design:"),
        {{tr("Stitch &length:"), HMKDialogField::Kind::length, length, 1, 12},
         {tr("&Distance:"), HMKDialogField::Kind::length, distance, 0, 50}},
        settings_.value(HMKSettings::measurementUnit));
    if (values) {
        document_->bastingWithStitchlength(static_cast<float>(values->at(0)),
                                           static_cast<float>(values->at(1)));
    }
}

// --- Printing ---------------------------------------------------------------------------------

bool HMKDocumentWindow::printTo(QPagedPaintDevice& device) {
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const bool printed = paintPrintout(document_->design(), device, settings_.printOptions());
    QApplication::restoreOverrideCursor();
    if (!printed) {
        dialogHooks().alert(this, HMKAlert::message(tr("The design could not be printed."),
                                                    tr("The printer could not be started.")));
    }
    return printed;
}

void HMKDocumentWindow::print() {
    QPrinter printer(QPrinter::HighResolution);
    printer.setDocName(document_->displayName());
    QPrintDialog dialog(&printer, this);
    dialog.setWindowTitle(settings_.value(HMKSettings::printTemplate)
                              ? tr("Print Template at True Size")
                              : tr("Print Worksheet"));
    if (dialogHooks().runDialog(dialog) == QDialog::Accepted) {
        printTo(printer);
    }
}

void HMKDocumentWindow::printPreview() {
    QPrinter printer(QPrinter::HighResolution);
    printer.setDocName(document_->displayName());
    QPrintPreviewDialog preview(&printer, this);
    preview.setWindowTitle(tr("Print Preview — %1").arg(document_->displayName()));
    connect(&preview, &QPrintPreviewDialog::paintRequested, this,
            [this](QPrinter* target) { printTo(*target); });
    // The print options sit in the preview's own toolbar and redraw it when changed.
    if (auto* tools = preview.findChild<QToolBar*>()) {
        tools->addSeparator();
        for (HMKCommand command :
             {HMKCommand::printTemplate, HMKCommand::printJumps, HMKCommand::printGrid,
              HMKCommand::printHoop, HMKCommand::printFastMode}) {
            tools->addAction(action(command));
        }
    }
    if (auto* pages = preview.findChild<QPrintPreviewWidget*>()) {
        connect(&settings_, &HMKSettings::changed, pages, &QPrintPreviewWidget::updatePreview);
    }
    dialogHooks().runDialog(preview);
}

void HMKDocumentWindow::exportPdf() {
    std::filesystem::path suggested = document_->fileURL();
    const std::string stem =
        std::filesystem::path(document_->design().designName()).stem().string();
    suggested.replace_filename(
        (stem.empty() ? std::string("Untitled") : stem) +
        (settings_.value(HMKSettings::printTemplate) ? " template.pdf" : " worksheet.pdf"));
    QString path = dialogHooks().saveFileName(this, fileText(suggested), tr("PDF (*.pdf)"));
    if (path.isEmpty()) {
        return;
    }
    if (QFileInfo(path).suffix().isEmpty()) {
        path += QStringLiteral(".pdf");
    }
    HMKError error;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    // The paper the printing system would choose (the locale's when none is set up).
    const QPageSize paper = QPrinter().pageLayout().pageSize();
    const bool written =
        writePrintoutPdf(document_->design(), filePath(path), settings_.printOptions(),
                         paper.isValid() ? paper : QPageSize(QPageSize::A4), &error);
    QApplication::restoreOverrideCursor();
    if (!written) {
        showError(tr("The PDF could not be written."), error);
    }
}

void HMKDocumentWindow::chooseBackground() {
    const QColor color = dialogHooks().color(this, settings_.value(HMKSettings::backgroundColor),
                                             tr("Background Colour"));
    if (color.isValid()) {
        settings_.setValue(HMKSettings::backgroundColor, color);
    }
}
