#include "document/document.h"

#include <cmath>
#include <system_error>

#include <QFileInfo>
#include <QUuid>

#include "document/document_texts.h"
#include "document/pasteboard.h"
#include "formats/file_io.h"
#include "model/archive.h"
#include "model/color_list.h"
#include "model/diagnostics.h"

// The undo step's name and the title of the alert that reports the command's failure.
struct HMKCommandTexts {
    std::string_view undoKey;
    std::string_view undoDefault;
    std::string_view alertKey;
    std::string_view alertDefault;
};

namespace {

constexpr HMKCommandTexts kConvertStitches{"UNDO_STITCHES", "convert stitches",
                                           "STITCHCONVERT_ALERT_TITLE", "Convert stitches"};
constexpr HMKCommandTexts kDelete{"UNDO_DELETE", "delete", "DELETE_ALERT_TITLE", "Delete Design"};
constexpr HMKCommandTexts kBasting{"UNDO_BASTING", "basting", "BASTING_ALERT_TITLE", "Add basting"};
constexpr HMKCommandTexts kThreadInsert{"UNDO_THREADINSERT", "thread insert",
                                        "THREADINSERT_ALERT_TITLE", "Insert thread"};
constexpr HMKCommandTexts kThreadDelete{"UNDO_THREADDELETE", "thread delete",
                                        "THREADDELETE_ALERT_TITLE", "Delete thread"};
constexpr HMKCommandTexts kThreadMove{"UNDO_THREADMOVE", "thread move", "THREADMOVE_ALERT_TITLE",
                                      "Move thread"};
constexpr HMKCommandTexts kMove{"UNDO_MOVE", "move", "MOVE_ALERT_TITLE", "Move Design"};
constexpr HMKCommandTexts kResize{"UNDO_RESIZE", "resize", "RESIZE_ALERT_TITLE", "Resize Design"};
constexpr HMKCommandTexts kFlipV{"UNDO_FLIPV", "flip vertical", "FLIP_ALERT_TITLE", "Flip Design"};
constexpr HMKCommandTexts kFlipH{"UNDO_FLIPH", "flip horizontal", "FLIP_ALERT_TITLE",
                                 "Flip Design"};
constexpr HMKCommandTexts kRotate{"UNDO_ROTATE", "rotate", "ROTATION_ALERT_TITLE", "Rotate Design"};
constexpr HMKCommandTexts kCenter{"UNDO_CENTER", "center", "CENTER_ALERT_TITLE", "Center Design"};
constexpr HMKCommandTexts kPaste{"UNDO_PASTE", "paste", "PASTE_ALERT_TITLE", "Paste Design"};
constexpr HMKCommandTexts kCut{"UNDO_CUT", "cut", "CUT_ALERT_TITLE", "Cut Design"};
// Colour and hoop changes cannot fail with the shipped palettes and the hoop menu; a missing
// palette file is still reported, under a title of its own.
constexpr HMKCommandTexts kPaletteChange{"UNDO_PALETTECHANGE", "palette change",
                                         "COLOR_ALERT_TITLE", "Thread Colors"};
constexpr HMKCommandTexts kPaletteReset{"UNDO_PALETTERESET", "palette reset", "COLOR_ALERT_TITLE",
                                        "Thread Colors"};
constexpr HMKCommandTexts kColorChange{"UNDO_COLORCHANGE", "color change", "COLOR_ALERT_TITLE",
                                       "Thread Colors"};
constexpr HMKCommandTexts kHoop{"UNDO_HOOP", "change hoop", "HOOP_ALERT_TITLE", "Change Hoop"};

// The menu's rotation steps; the right turn is written as 315 rather than -45.
constexpr std::int32_t kRotateLeftDegrees = 45;
constexpr std::int32_t kRotateRightDegrees = 315;
constexpr std::chrono::milliseconds kDefaultRecoveryDelay{3000};
constexpr std::string_view kArchiveExtension = "hemlark";
// The only PES version the writer produces, as designVersion (version x 10).
constexpr std::int32_t kWrittenPesVersion = 10;

bool isArchive(const std::filesystem::path& url) {
    return lowercaseExtension(url) == kArchiveExtension;
}

std::optional<QDateTime> modificationDate(const std::filesystem::path& url) {
    const QFileInfo info(QString::fromStdString(url.string()));
    if (!info.exists()) {
        return std::nullopt;
    }
    return info.lastModified().toUTC();
}

std::size_t megabytes(int count) {
    return static_cast<std::size_t>(std::max(count, 0)) << 20;
}

}  // namespace

HMKDocument::HMKDocument(HMKSettings& settings, QObject* parent)
    : QObject(parent),
      settings_(settings),
      history_([this](HMKDesign& snapshot) { swapDesign(snapshot); }) {
    QUndoStack& stack = history_.stack();
    connect(&stack, &QUndoStack::indexChanged, this, [this] { updateModified(); });
    connect(&stack, &QUndoStack::cleanChanged, this, [this] { updateModified(); });
    for (auto signal : {&QUndoStack::canUndoChanged, &QUndoStack::canRedoChanged}) {
        connect(&stack, signal, this, &HMKDocument::undoStateChanged);
    }
    for (auto signal : {&QUndoStack::undoTextChanged, &QUndoStack::redoTextChanged}) {
        connect(&stack, signal, this, &HMKDocument::undoStateChanged);
    }
    history_.setMemoryBudget(megabytes(settings_.value(HMKSettings::undoMemoryMegabytes)));
    connect(&settings_, &HMKSettings::changed, this, [this](const QString& key) {
        if (key == HMKSettings::undoMemoryMegabytes.name) {
            history_.setMemoryBudget(megabytes(settings_.value(HMKSettings::undoMemoryMegabytes)));
        }
    });

    recoveryTimer_.setSingleShot(true);
    recoveryTimer_.setInterval(kDefaultRecoveryDelay);
    connect(&recoveryTimer_, &QTimer::timeout, this, [this] { startRecoveryWrite(); });
    recoveryWriter_.setMaxThreadCount(1);
}

HMKDocument::~HMKDocument() {
    // The stack signals its clearing while it is destroyed, after the timer is gone.
    history_.stack().disconnect(this);
    const bool writeDue = recoveryTimer_.isActive() || recoveryWriteWanted_;
    recoveryTimer_.stop();
    recoveryWriter_.waitForDone();
    if (!closed_ && writeDue) {
        writeRecoveryNow();
    }
}

QString HMKDocument::displayName() const {
    if (fileURL_.empty()) {
        return documentText("UNTITLED", "Untitled");
    }
    return QString::fromStdString(fileURL_.filename().string());
}

bool HMKDocument::isModified() const {
    return modifiedWithoutHistory_ || !history_.stack().isClean();
}

bool HMKDocument::canSaveInPlace() const {
    return !fileURL_.empty() && (isArchive(fileURL_) || design_.isWritable());
}

// --- Opening, saving, reverting -----------------------------------------------------------

std::optional<HMKDesign> HMKDocument::loadDesign(const std::filesystem::path& url,
                                                 HMKError* error) {
    if (isArchive(url)) {
        auto design = readDesignArchive(url, error);
        if (design) {
            design->setDesignLocation(url);
            design->setDesignName(url.filename().string());
        }
        return design;
    }
    HMKDesign design;
    if (!design.importDesignFromURL(url, error)) {
        return std::nullopt;
    }
    return design;
}

void HMKDocument::adoptOpenedDesign(HMKDesign design, const std::filesystem::path& url,
                                    bool modified) {
    const std::int32_t shownBefore = shownThread();
    design_ = std::move(design);
    fileURL_ = url;
    fileModificationDate_ = modificationDate(url);
    history_.clear();
    modifiedWithoutHistory_ = modified;
    notifyDesignReplaced(shownBefore);
    emit fileURLChanged();
    updateModified();
}

bool HMKDocument::readFromURL(const std::filesystem::path& url, HMKError* error) {
    // Something to report even if a reader failed without saying why.
    if (error) {
        *error = {std::string(kHMKPosixErrorDomain), -4, "The file cannot be opened.", ""};
    }
    auto design = loadDesign(url, error);
    if (!design) {
        return false;
    }
    adoptOpenedDesign(std::move(*design), url);
    const std::vector<std::string> palettes = paletteMenu();
    const int defaultPalette = settings_.value(HMKSettings::defaultThreads);
    if (!isArchive(url) && !design_.useThreadFile() && defaultPalette > 0 &&
        static_cast<std::size_t>(defaultPalette) < palettes.size()) {
        // Exactly as if the user had chosen the palette: one undoable step.
        changePalette(palettes[static_cast<std::size_t>(defaultPalette)]);
    }
    return true;
}

void HMKDocument::setDesign(HMKDesign design) {
    adoptOpenedDesign(std::move(design), {}, true);
}

bool HMKDocument::save(HMKError* error) {
    if (fileURL_.empty()) {
        return fail(error, kDocumentWithoutFileError, "The design has no file yet.");
    }
    return saveToURL(fileURL_, error);
}

bool HMKDocument::saveToURL(const std::filesystem::path& url, HMKError* error) {
    // The writer makes only one PES version, so a file of another is never replaced by it.
    if (lowercaseExtension(url) == "pes" && std::filesystem::exists(url)) {
        HMKDesign existing;
        existing.importDesignFromURL(url);
        if (existing.designVersion() != kWrittenPesVersion) {
            return fail(error, 204, "Don't overwrite other PES versions.");
        }
    }
    // The copy is written, so a failed write leaves the document's design untouched; after
    // success it becomes the design, with the changes the writer made (type, threads, hoop).
    HMKDesign written = design_;
    written.setDesignLocation(url);
    written.setDesignName(url.filename().string());
    const bool archive = isArchive(url);
    if (!(archive ? writeDesignArchive(url, written, error)
                  : written.exportDesignToURL(url, error))) {
        return false;
    }
    const std::int32_t shownBefore = shownThread();
    design_ = std::move(written);
    const bool renamed = fileURL_ != url;
    fileURL_ = url;
    fileModificationDate_ = modificationDate(url);
    notifyDesignReplaced(shownBefore);
    if (renamed) {
        emit fileURLChanged();
    }
    if (!archive && !settings_.value(HMKSettings::alertWriteToURL)) {
        HMKAlert warning = HMKAlert::message(
            documentText("WRITE_ALERT_TITLE", "Warning"),
            documentText("WRITE_ALERT_INFO",
                         "Always check hoop size & dimensions before stitching."));
        warning.offersSuppression = true;
        const HMKAlertAnswer answer = alert(warning);
        if (answer.suppressed) {
            settings_.setValue(HMKSettings::alertWriteToURL, true);
        }
    }
    // The undo history ends at every save.
    history_.clear();
    modifiedWithoutHistory_ = false;
    updateModified();
    return true;
}

bool HMKDocument::exportCopyToURL(const std::filesystem::path& url, HMKError* error) const {
    HMKDesign copy = design_;
    copy.setDesignLocation(url);
    if (isArchive(url)) {
        return writeDesignArchive(url, copy, error);
    }
    return copy.exportDesignToURL(url, error);
}

bool HMKDocument::revertToSaved(HMKError* error) {
    if (fileURL_.empty()) {
        return fail(error, kDocumentWithoutFileError, "The design has no file yet.");
    }
    return readFromURL(fileURL_, error);
}

void HMKDocument::close() {
    closed_ = true;
    recoveryTimer_.stop();
    recoveryWriter_.waitForDone();
    if (!recoveryId_.isEmpty()) {
        std::error_code ignored;
        std::filesystem::remove(recoveryFile(), ignored);
    }
    recoveryLock_.reset();
}

// --- Selection -----------------------------------------------------------------------------

void HMKDocument::selectionDidChange() {
    emit selectionChanged();
}

void HMKDocument::selectAll() {
    design_.selectAll();
    selectionDidChange();
}

void HMKDocument::deselectAll() {
    design_.deselectAll();
    selectionDidChange();
}

void HMKDocument::invertSelection() {
    design_.invertAll();
    selectionDidChange();
}

void HMKDocument::selectInRect(const HMKRect& rect, bool unselect) {
    design_.selectInRect(rect, unselect);
    selectionDidChange();
}

void HMKDocument::selectAt(HMKSelectionMode mode, HMKPoint point, float tolerance, bool unselect) {
    switch (mode) {
        case HMKSelectionMode::rectangle:
            return;
        case HMKSelectionMode::stitch:
            design_.selectStitchAt(point, tolerance, unselect);
            break;
        case HMKSelectionMode::block:
            design_.selectBlockAt(point, tolerance, unselect);
            break;
        case HMKSelectionMode::thread: {
            const std::int32_t thread = design_.indexOfThreadAt(point, tolerance);
            if (thread < 0) {
                return;
            }
            // A colour-change stitch is the first stitch of the next thread.
            std::int32_t current = 0;
            bool any = false;
            for (HMKStitch& stitch : design_.stitches()) {
                current += stitch.isColorChange ? 1 : 0;
                if (current == thread) {
                    stitch.isSelected = !unselect;
                }
                any = any || stitch.isSelected;
            }
            design_.setSelectionActive(any);
            break;
        }
    }
    selectionDidChange();
}

// --- Commands ------------------------------------------------------------------------------

bool HMKDocument::perform(const HMKCommandTexts& texts,
                          const std::function<bool(HMKDesign&, HMKError*)>& operation) {
    const std::int32_t shownBefore = shownThread();
    HMKDesign before = design_;
    HMKError error;
    const bool succeeded = operation(design_, &error);
    // Kept after a failure too: the operation may have changed part of the design, and the
    // step takes it back.
    history_.record(documentText(texts.undoKey, texts.undoDefault), std::move(before));
    notifyDesignReplaced(shownBefore);
    if (!succeeded) {
        alertFailure(texts.alertKey, texts.alertDefault, error);
    }
    return succeeded;
}

bool HMKDocument::rotateByDegrees(std::int32_t degrees) {
    return perform(kRotate, [degrees](HMKDesign& design, HMKError* error) {
        return design.rotateSelectionByDegrees(degrees, error);
    });
}

bool HMKDocument::rotateL() {
    return rotateByDegrees(kRotateLeftDegrees);
}

bool HMKDocument::rotateR() {
    return rotateByDegrees(kRotateRightDegrees);
}

bool HMKDocument::flipV() {
    return perform(kFlipV, [](HMKDesign& design, HMKError* error) {
        return design.flipSelection("V", error);
    });
}

bool HMKDocument::flipH() {
    return perform(kFlipH, [](HMKDesign& design, HMKError* error) {
        return design.flipSelection("H", error);
    });
}

bool HMKDocument::moveByVector(HMKPoint vector) {
    return perform(kMove, [vector](HMKDesign& design, HMKError* error) {
        return design.moveSelectionByVector(vector, error);
    });
}

bool HMKDocument::resizeByPercent(float factor) {
    // The selection's way back would divide by the factor.
    if (factor == 0 || !std::isfinite(factor)) {
        alert(HMKAlert::message(documentText(kResize.alertKey, kResize.alertDefault),
                                documentText("RESIZE_ALERT_FACTOR", "The size must not be 0 %.")));
        return false;
    }
    return perform(kResize, [factor](HMKDesign& design, HMKError* error) {
        return design.resizeSelectionByPercent(factor, error);
    });
}

bool HMKDocument::center() {
    const HMKAlertAnswer answer = alert(HMKAlert::question(
        documentText(kCenter.alertKey, kCenter.alertDefault),
        documentText("CENTER_ALERT_INFO", "Move the whole design to the center of the hoop?"),
        HMKAlertStyle::informational, documentText("CENTER_ALERT_OK", "Center"),
        documentText("CENTER_ALERT_ALT", "Cancel")));
    if (!answer.confirmed) {
        return false;
    }
    return perform(kCenter, [](HMKDesign& design, HMKError*) { return design.centerDesign(); });
}

bool HMKDocument::deleteWithUndo() {
    return perform(
        kDelete, [](HMKDesign& design, HMKError* error) { return design.deleteSelection(error); });
}

bool HMKDocument::toggleSelectionToJumps(bool toJumps) {
    return perform(kConvertStitches, [toJumps](HMKDesign& design, HMKError* error) {
        return design.switchSelectionToJumps(toJumps, error);
    });
}

bool HMKDocument::bastingWithStitchlength(float lengthMm, float distanceMm) {
    settings_.setValue(HMKSettings::bastingLength, static_cast<double>(lengthMm));
    settings_.setValue(HMKSettings::bastingDistance, static_cast<double>(distanceMm));
    return perform(kBasting, [lengthMm, distanceMm](HMKDesign& design, HMKError* error) {
        return design.addBastingWithLength(lengthMm, distanceMm, error);
    });
}

std::pair<double, double> HMKDocument::lastBastingValues() const {
    return {settings_.value(HMKSettings::bastingLength),
            settings_.value(HMKSettings::bastingDistance)};
}

bool HMKDocument::insertThreadBeforeSelection() {
    return perform(kThreadInsert, [](HMKDesign& design, HMKError* error) {
        return design.insertThreadBeforeSelection(error);
    });
}

bool HMKDocument::deleteThreadWithIndex(std::int32_t index) {
    // Invalid indices are ignored silently, without an undo step; thread 0 has no thread
    // before it to be combined with.
    if (index <= 0 || static_cast<std::size_t>(index) >= design_.numberOfThreads()) {
        return false;
    }
    return perform(kThreadDelete, [index](HMKDesign& design, HMKError* error) {
        return design.deleteThreadAtIndex(index, error);
    });
}

bool HMKDocument::moveThreadFromIndex(std::int32_t from, std::int32_t to) {
    const auto count = static_cast<std::int64_t>(design_.numberOfThreads());
    if (from < 0 || to < 0 || from >= count || to >= count || from == to) {
        return false;
    }
    return perform(kThreadMove, [from, to](HMKDesign& design, HMKError* error) {
        return design.moveThreadFromIndex(from, to, error);
    });
}

bool HMKDocument::changeWithUndoThread(std::int32_t index, const HMKColor& color,
                                       const std::string& palette) {
    if (index < 0 || static_cast<std::size_t>(index) >= design_.numberOfThreads()) {
        return false;
    }
    return perform(kColorChange, [&](HMKDesign& design, HMKError* error) {
        return design.changeThread(index, color, palette) ||
               fail(error, 140, "color palette not found");
    });
}

bool HMKDocument::changeWithUndoPalette(const std::string& palette, bool useThreadFile) {
    return perform(kPaletteChange, [&](HMKDesign& design, HMKError* error) {
        for (std::size_t i = 0; i < design.numberOfThreads(); ++i) {
            const HMKColor color = design.threads()[i].color;
            if (!design.changeThread(static_cast<std::int32_t>(i), color, palette)) {
                return fail(error, 140, "color palette not found");
            }
        }
        design.setUseThreadFile(useThreadFile);
        return true;
    });
}

bool HMKDocument::changePalette(const std::string& palette) {
    return changeWithUndoPalette(palette, true);
}

bool HMKDocument::resetPalette() {
    const HMKAlertAnswer answer = alert(HMKAlert::question(
        documentText("RESET_ALERT_TITLE", "Reset Colors"),
        documentText("RESET_ALERT_INFO", "External colors file will be deleted."),
        HMKAlertStyle::warning, documentText("RESET_ALERT_OK", "Reset"),
        documentText("RESET_ALERT_ALT", "Cancel")));
    if (!answer.confirmed) {
        return false;
    }
    // With the side file gone, reading the file again gives the threads it holds itself.
    std::optional<HMKDesign> own;
    if (!fileURL_.empty() && !isArchive(fileURL_)) {
        design_.deleteThreadsFromDesign(fileURL_);
        own = loadDesign(fileURL_, nullptr);
    }
    return perform(kPaletteReset, [&own](HMKDesign& design, HMKError*) {
        if (own && own->numberOfThreads() == design.numberOfThreads()) {
            design.setThreads(own->threads());
        }
        design.setUseThreadFile(false);
        return true;
    });
}

std::vector<std::string> HMKDocument::paletteMenu() {
    std::vector<std::string> menu{""};
    for (std::string& name : HMKColorList::shippedPaletteNames()) {
        menu.push_back(std::move(name));
    }
    return menu;
}

bool HMKDocument::selectHoop(std::string_view vendor, std::int32_t code) {
    bool known = code == -1;
    if (auto hoops = HMKDesign::allHoopsFromVendor(vendor)) {
        for (const HMKHoop& hoop : *hoops) {
            known = known || hoop.code() == code;
        }
    }
    if (!known) {
        return false;
    }
    return perform(kHoop, [vendor, code](HMKDesign& design, HMKError*) {
        design.setHoopFromVendor(vendor, code);
        return true;
    });
}

// --- Clipboard -----------------------------------------------------------------------------

bool HMKDocument::copy() {
    if (!hasSelection()) {
        return false;
    }
    // Only the selected stitches go: the copy's unselected ones are deleted.
    HMKDesign copied = design_;
    copied.invertAll();
    copied.deleteSelection();
    copied.deselectAll();
    writeDesignToClipboard(std::move(copied));
    return true;
}

bool HMKDocument::cut() {
    if (!copy()) {
        return false;
    }
    return perform(
        kCut, [](HMKDesign& design, HMKError* error) { return design.deleteSelection(error); });
}

bool HMKDocument::paste() {
    HMKError error;
    auto pasted = readDesignFromClipboard(&error);
    if (!pasted) {
        if (!error.message().empty()) {
            alertFailure(kPaste.alertKey, kPaste.alertDefault, error);
        }
        return false;
    }
    return pasteWithUndo(std::move(*pasted));
}

bool HMKDocument::pasteWithUndo(HMKDesign pasted) {
    pasted.selectAll();
    return perform(kPaste, [&pasted](HMKDesign& design, HMKError* error) {
        design.deselectAll();
        return design.appendDesign(pasted, error);
    });
}

bool HMKDocument::canPaste() {
    return clipboardHasDesign();
}

// --- Showing threads -----------------------------------------------------------------------

void HMKDocument::showThread(std::int32_t index) {
    if (index < 0 || static_cast<std::size_t>(index) >= design_.numberOfThreads()) {
        return;
    }
    for (std::size_t i = 0; i < design_.numberOfThreads(); ++i) {
        design_.setIsShown(static_cast<std::int32_t>(i) == index, static_cast<std::int32_t>(i));
    }
    emit shownThreadChanged(shownThread());
}

void HMKDocument::showAllThreads() {
    for (std::size_t i = 0; i < design_.numberOfThreads(); ++i) {
        design_.setIsShown(true, static_cast<std::int32_t>(i));
    }
    emit shownThreadChanged(-1);
}

std::int32_t HMKDocument::shownThread() const {
    if (design_.isShownOfAllThreads()) {
        return -1;
    }
    const std::int64_t shown = design_.indexOfShownThread();
    return shown == kThreadNotFound ? -1 : static_cast<std::int32_t>(shown);
}

// --- Undo ----------------------------------------------------------------------------------

void HMKDocument::swapDesign(HMKDesign& snapshot) {
    const std::int32_t shownBefore = shownThread();
    std::swap(design_, snapshot);
    notifyDesignReplaced(shownBefore);
}

void HMKDocument::notifyDesignReplaced(std::int32_t shownBefore) {
    emit designChanged();
    if (shownThread() != shownBefore) {
        emit shownThreadChanged(shownThread());
    }
}

QAction* HMKDocument::createUndoAction(QObject* parent) {
    return history_.stack().createUndoAction(parent, documentText("UNDO_MENU", "Undo"));
}

QAction* HMKDocument::createRedoAction(QObject* parent) {
    return history_.stack().createRedoAction(parent, documentText("REDO_MENU", "Redo"));
}

void HMKDocument::undo() {
    history_.stack().undo();
}

void HMKDocument::redo() {
    history_.stack().redo();
}

void HMKDocument::updateModified() {
    const bool modified = isModified();
    if (modified != lastModified_) {
        lastModified_ = modified;
        emit modifiedChanged(modified);
    }
    if (modified) {
        scheduleRecoveryWrite();
    } else {
        removeRecoveryFile();
    }
}

// --- Alerts --------------------------------------------------------------------------------

HMKAlertAnswer HMKDocument::alert(const HMKAlert& alert) const {
    if (alertHandler_) {
        return alertHandler_(alert);
    }
    logDiagnostic((alert.title + ": " + alert.text).toStdString());
    return {};
}

void HMKDocument::alertFailure(std::string_view titleKey, std::string_view titleDefault,
                               const HMKError& error) const {
    alert(HMKAlert::message(documentText(titleKey, titleDefault),
                            QString::fromStdString(error.message())));
}

// --- Recovery ------------------------------------------------------------------------------

void HMKDocument::setRecoveryDelay(std::chrono::milliseconds delay) {
    recoveryTimer_.setInterval(delay);
}

std::filesystem::path HMKDocument::recoveryFile() const {
    return recoveryId_.isEmpty() ? std::filesystem::path()
                                 : HMKRecoveryStore::fileForId(recoveryId_);
}

void HMKDocument::scheduleRecoveryWrite() {
    // Not restarted by later changes: the file is at most one delay behind while editing.
    if (!closed_ && !recoveryTimer_.isActive()) {
        recoveryTimer_.start();
    }
}

bool HMKDocument::ensureRecoveryLock() {
    if (recoveryLock_) {
        return true;
    }
    if (recoveryId_.isEmpty()) {
        recoveryId_ = QUuid::createUuid().toString(QUuid::WithoutBraces);
    }
    recoveryLock_ = HMKRecoveryStore::lock(recoveryId_);
    return recoveryLock_ != nullptr;
}

HMKRecoveryState HMKDocument::recoveryState() const {
    HMKRecoveryState state;
    state.documentURL = fileURL_;
    state.modificationDate = fileModificationDate_;
    state.isEdited = isModified();
    state.viewScaling = viewState_.scaling;
    state.viewCenter = viewState_.center;
    state.selectionMode = static_cast<std::int32_t>(viewState_.selectionMode);
    if (shownThread() >= 0) {
        state.selectedThread = shownThread();
    }
    return state;
}

void HMKDocument::startRecoveryWrite() {
    if (recoveryWriteRunning_) {
        recoveryWriteWanted_ = true;
        return;
    }
    if (!isModified()) {
        removeRecoveryFile();
        return;
    }
    if (!ensureRecoveryLock()) {
        return;
    }
    // Copying the design takes about a millisecond per million stitches; archiving and
    // writing it take far longer and run on the writer's thread.
    auto design = std::make_shared<const HMKDesign>(design_);
    recoveryWriteRunning_ = true;
    recoveryWriter_.start([this, file = recoveryFile(), state = recoveryState(), design] {
        HMKError error;
        if (!writeRecoveryFile(file, state, *design, &error)) {
            logDiagnostic("HMKDocument: recovery file not written: " + error.message());
        }
        QMetaObject::invokeMethod(
            this, [this] { recoveryWriteFinished(); }, Qt::QueuedConnection);
    });
}

void HMKDocument::recoveryWriteFinished() {
    recoveryWriteRunning_ = false;
    emit recoveryFileWritten();
    if (recoveryWriteWanted_) {
        recoveryWriteWanted_ = false;
        startRecoveryWrite();
    }
}

void HMKDocument::removeRecoveryFile() {
    recoveryTimer_.stop();
    if (recoveryId_.isEmpty()) {
        return;
    }
    // On the writer's thread, so that it follows a write still in progress.
    recoveryWriter_.start([file = recoveryFile()] {
        std::error_code ignored;
        std::filesystem::remove(file, ignored);
    });
}

bool HMKDocument::writeRecoveryNow(HMKError* error) {
    recoveryTimer_.stop();
    recoveryWriter_.waitForDone();
    recoveryWriteWanted_ = false;
    if (!isModified()) {
        if (!recoveryId_.isEmpty()) {
            std::error_code ignored;
            std::filesystem::remove(recoveryFile(), ignored);
        }
        return true;
    }
    if (!ensureRecoveryLock()) {
        return fail(error, kRecoveryUnreadableError, "The recovered state cannot be written.");
    }
    return writeRecoveryFile(recoveryFile(), recoveryState(), design_, error);
}

bool HMKDocument::restoreRecovery(const HMKRecoveryEntry& entry, HMKError* error) {
    auto state = readRecoveryFile(entry.file, error);
    if (!state) {
        return false;
    }
    auto lock = HMKRecoveryStore::lock(entry.id);
    if (!lock) {
        return fail(error, kRecoveryUnreadableError, "The design is open in another window.");
    }
    const std::filesystem::path& url = state->documentURL;
    std::optional<HMKDesign> fromFile;
    if (!url.empty()) {
        fromFile = loadDesign(url, nullptr);
    }
    // The recovered design wins when it holds edits, when the file changed since it was
    // written, or when the file is gone.
    const bool fileChanged = fromFile && modificationDate(url) != state->modificationDate;
    const bool useRecovered = state->isEdited || fileChanged || !fromFile;
    if (useRecovered) {
        fromFile = unarchiveDesign(state->archivedDesign, error);
        if (!fromFile) {
            return false;
        }
    }
    recoveryId_ = entry.id;
    recoveryLock_ = std::move(lock);
    adoptOpenedDesign(std::move(*fromFile), url, useRecovered);
    if (state->selectedThread) {
        showThread(*state->selectedThread);
    }
    if (state->selectionMode && *state->selectionMode >= 0 &&
        *state->selectionMode <= static_cast<std::int32_t>(HMKSelectionMode::thread)) {
        viewState_.selectionMode = static_cast<HMKSelectionMode>(*state->selectionMode);
    }
    if (state->viewScaling) {
        viewState_.scaling = *state->viewScaling;
    }
    if (state->viewCenter) {
        viewState_.center = *state->viewCenter;
    }
    emit viewStateRestored();
    return true;
}
