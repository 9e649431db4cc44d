// HMKDocument: one open design, the object every window of the desktop application talks to.
// It owns one HMKDesign for its whole life, opens, saves and reverts it, turns every editing
// operation into an undoable step of whole-design snapshots, answers the clipboard, shows
// failures through one alert callback, and keeps a recovery file while there are unsaved
// edits. It needs Qt Core and Gui only, so everything here is testable without a window.
//
// For the views:
// - Read the design with design(); never change it directly. Redraw on designChanged()
//   (anything may have changed) or selectionChanged() (only the selection marks changed).
// - Edit through the commands below. Each returns false when it failed, was refused or was
//   cancelled; a failure has already been shown through the alert handler.
// - A drag of the selection is drawn by the canvas while the mouse moves and ends in one
//   moveByVector() call, so that it is one undo step.
// - Menu enabling: hasSelection() for the selection commands, canPaste() (and
//   QClipboard::dataChanged) for Paste, undoStack() (or createUndoAction()) for Undo/Redo,
//   isModified() for Save and Revert.
// - shownThreadChanged() asks for a redraw too; the thread list selects that row and the
//   colour chooser may follow it.
// - Report zoom, centre and selection mode with setViewState(); after restoreRecovery() adopt
//   viewState() (viewStateRestored()).
// - Life cycle: at start, offer HMKRecoveryStore::pendingRecoveries() and call
//   restoreRecovery() on a new document for each one accepted (HMKRecoveryStore::discard()
//   the others). Call close() when the user closes a window, saved or not. At quit or the end
//   of the session, destroying the documents keeps their unsaved edits for the next start.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <QAction>
#include <QDateTime>
#include <QLockFile>
#include <QObject>
#include <QString>
#include <QThreadPool>
#include <QTimer>
#include <QUndoStack>

#include "document/recovery.h"
#include "document/undo_history.h"
#include "model/design.h"
#include "model/error.h"
#include "platform/settings.h"

// The document has no file yet, so Save needs a place (Save As).
inline constexpr int kDocumentWithoutFileError = 311;

enum class HMKAlertStyle { informational = 1, warning = 2 };

// A message for the user. Without a confirm button it is a plain message with "OK"; with one
// it is a question that the other button cancels.
struct HMKAlert {
    QString title;
    QString text;
    HMKAlertStyle style = HMKAlertStyle::warning;
    QString confirmButton;
    QString cancelButton;
    // Shows a "Do not show this message again" check box.
    bool offersSuppression = false;

    static HMKAlert message(QString title, QString text,
                            HMKAlertStyle style = HMKAlertStyle::warning) {
        HMKAlert alert;
        alert.title = std::move(title);
        alert.text = std::move(text);
        alert.style = style;
        return alert;
    }
    static HMKAlert question(QString title, QString text, HMKAlertStyle style,
                             QString confirmButton, QString cancelButton) {
        HMKAlert alert = message(std::move(title), std::move(text), style);
        alert.confirmButton = std::move(confirmButton);
        alert.cancelButton = std::move(cancelButton);
        return alert;
    }
};

struct HMKAlertAnswer {
    bool confirmed = true;
    bool suppressed = false;
};

// Shows an alert window-modally and returns the user's answer. Without a handler, alerts go
// to the diagnostic log and questions count as confirmed.
using HMKAlertHandler = std::function<HMKAlertAnswer(const HMKAlert&)>;

// How a click in the design view selects.
enum class HMKSelectionMode { rectangle = 0, stitch = 1, block = 2, thread = 3 };

// How the window shows the design; kept in the recovery file and given back on restoring.
struct HMKViewState {
    double scaling = 1;
    // The design point at the centre of the visible area.
    HMKPoint center;
    HMKSelectionMode selectionMode = HMKSelectionMode::rectangle;
};

struct HMKCommandTexts;

class HMKDocument : public QObject {
    Q_OBJECT
public:
    // The document reads "DefaultThreads", "AlertWriteToURL", the basting values and the undo
    // budget from settings, which must outlive it.
    explicit HMKDocument(HMKSettings& settings = HMKSettings::shared(), QObject* parent = nullptr);
    // Waits for a recovery write in progress. A document destroyed without close() keeps its
    // recovery file (written now if edits are newer than it), so quitting loses nothing.
    ~HMKDocument() override;

    // --- The design and the file -----------------------------------------------------------
    const HMKDesign& design() const { return design_; }
    // Empty while the design has no file.
    const std::filesystem::path& fileURL() const { return fileURL_; }
    // The file's name, or "Untitled".
    QString displayName() const;
    // Unsaved edits (also after restoring a recovery file with edits).
    bool isModified() const;
    // Save can write the design back to its own file (else the application offers Save As).
    bool canSaveInPlace() const;
    void setAlertHandler(HMKAlertHandler handler) { alertHandler_ = std::move(handler); }

    // --- Opening, saving, reverting ----------------------------------------------------------
    // These report failures to the caller (there may be no window yet), not as alerts.
    // Opens an embroidery file or a ".hemlark" archive. Without a thread side file, the
    // palette of "DefaultThreads" is applied as an undoable palette change.
    bool readFromURL(const std::filesystem::path& url, HMKError* error = nullptr);
    // Starts the document with a design that has no file (a pasted or dropped design); it
    // counts as modified, as nothing of it is saved.
    void setDesign(HMKDesign design);
    // Writes the design to its file.
    bool save(HMKError* error = nullptr);
    // Writes the design to url in the format of its extension and makes url the document's
    // file. An existing PES file of another version than 1 is never overwritten (error 204,
    // the file stays byte for byte). Unless "AlertWriteToURL" is set, warns to check the hoop
    // size, with a box to stop the warning. Clears the undo history.
    bool saveToURL(const std::filesystem::path& url, HMKError* error = nullptr);
    // Writes a copy of the design to url (the machine export, "Save a Copy"); the document,
    // its file and its history stay as they are. A thread side file goes beside the copy when
    // the design's threads come from one.
    bool exportCopyToURL(const std::filesystem::path& url, HMKError* error = nullptr) const;
    // Reads the file again, dropping every edit and the undo history.
    bool revertToSaved(HMKError* error = nullptr);
    // The user closed the document (saved or not): its recovery file goes.
    void close();

    // --- Selection (not undoable; the design view's mouse and the Edit menu) ----------------
    bool hasSelection() const { return design_.selectionActive(); }
    void selectAll();
    void deselectAll();
    void invertSelection();
    // Adds the stitches inside rect to the selection, or removes them with unselect.
    void selectInRect(const HMKRect& rect, bool unselect);
    // A click in the given mode: the stitch, the block (run between jumps and colour
    // changes) or the whole thread at point; rectangle mode selects nothing on a click.
    void selectAt(HMKSelectionMode mode, HMKPoint point, float tolerance, bool unselect);

    // --- Undoable commands of the Design menu ----------------------------------------------
    // Whole degrees, positive from x towards y (counter-clockwise with y up).
    bool rotateByDegrees(std::int32_t degrees);
    bool rotateL();  // 45 degrees
    bool rotateR();  // 315 degrees
    bool flipV();
    bool flipH();
    bool moveByVector(HMKPoint vector);
    // factor 1.0 keeps the size (the dialog divides the user's percent by 100); 0 is refused.
    bool resizeByPercent(float factor);
    // Moves the whole design onto the hoop's centre, after asking.
    bool center();
    bool deleteWithUndo();
    // Turns the selected stitches into jumps, or back with toJumps false.
    bool toggleSelectionToJumps(bool toJumps);
    // Adds a basting outline and remembers the values as "BastingLength"/"BastingDistance".
    bool bastingWithStitchlength(float lengthMm, float distanceMm);
    // The basting values last used, in millimetres (the dialog's starting values).
    std::pair<double, double> lastBastingValues() const;

    // --- Undoable thread commands (thread list, Design menu) -------------------------------
    bool insertThreadBeforeSelection();
    // Merges thread index into the one before it ("Combine with previous").
    bool deleteThreadWithIndex(std::int32_t index);
    bool moveThreadFromIndex(std::int32_t from, std::int32_t to);
    // One thread to the nearest colour of a palette ("" for the colour itself).
    bool changeWithUndoThread(std::int32_t index, const HMKColor& color,
                              const std::string& palette);
    // Every thread to its nearest colour in the palette; saving then keeps a side file.
    bool changePalette(const std::string& palette);
    // After asking: deletes the side file and gives the threads back the colours the design
    // file itself holds (as far as the colour blocks still match them).
    bool resetPalette();
    // The palettes of the palette menu: "" (no palette) first, then the shipped ones; the
    // index of an entry is its "DefaultThreads" value.
    static std::vector<std::string> paletteMenu();
    // The hoop of a vendor with that code (-1 removes the hoop).
    bool selectHoop(std::string_view vendor, std::int32_t code);

    // --- Clipboard ---------------------------------------------------------------------------
    // Copies the selected stitches (false with no selection: nothing happens).
    bool copy();
    // Copies, then deletes the selection as one undo step.
    bool cut();
    // Appends the clipboard's design; exactly the pasted stitches end up selected.
    bool paste();
    // Appends a design (a file dropped with the paste modifier) as "paste".
    bool pasteWithUndo(HMKDesign pasted);
    static bool canPaste();

    // --- Showing threads ---------------------------------------------------------------------
    // Shows one thread alone (the thread list's click); not an edit.
    void showThread(std::int32_t index);
    void showAllThreads();
    // The thread shown alone, or -1 when all are shown.
    std::int32_t shownThread() const;

    // --- Undo ----------------------------------------------------------------------------------
    QUndoStack* undoStack() { return &history_.stack(); }
    // Menu actions whose texts follow the next step ("Undo rotate").
    QAction* createUndoAction(QObject* parent);
    QAction* createRedoAction(QObject* parent);
    void undo();
    void redo();
    std::size_t undoMemoryUsed() const { return history_.memoryUsed(); }

    // --- View state and recovery ------------------------------------------------------------
    const HMKViewState& viewState() const { return viewState_; }
    // The view reports its zoom, centre and selection mode (kept with the next recovery write).
    void setViewState(const HMKViewState& state) { viewState_ = state; }
    // Restores a recovery file on a new document: opens the document's file and, when the
    // document had edits or the file changed since, replaces its design with the recovered
    // one; then the thread shown alone and the view state come back. The document owns the
    // recovery file from then on.
    bool restoreRecovery(const HMKRecoveryEntry& entry, HMKError* error = nullptr);
    // Writes the recovery file now, on this thread (quitting, session end); nothing when
    // there are no unsaved edits.
    bool writeRecoveryNow(HMKError* error = nullptr);
    // How long after a change the recovery file is written (3 seconds unless changed).
    void setRecoveryDelay(std::chrono::milliseconds delay);
    // This document's recovery file (it exists only while there are unsaved edits).
    std::filesystem::path recoveryFile() const;

signals:
    // The design was replaced or changed in any way: redraw, refresh the information panel.
    void designChanged();
    // Only the selection marks changed.
    void selectionChanged();
    // A thread is shown alone (its index), or all again (-1).
    void shownThreadChanged(std::int32_t thread);
    void modifiedChanged(bool modified);
    // Undo or redo became possible or impossible, or their names changed.
    void undoStateChanged();
    // The document's file changed (save as, restore).
    void fileURLChanged();
    // restoreRecovery set a view state the window should adopt.
    void viewStateRestored();
    // A recovery write finished (in the background).
    void recoveryFileWritten();

private:
    // Snapshot, operation, undo step, alert on failure; the scheme of every command.
    bool perform(const HMKCommandTexts& texts,
                 const std::function<bool(HMKDesign&, HMKError*)>& operation);
    bool changeWithUndoPalette(const std::string& palette, bool useThreadFile);
    HMKAlertAnswer alert(const HMKAlert& alert) const;
    void alertFailure(std::string_view titleKey, std::string_view titleDefault,
                      const HMKError& error) const;
    // Reads a file into a new design (an embroidery file or an archive).
    static std::optional<HMKDesign> loadDesign(const std::filesystem::path& url, HMKError* error);
    // Installs a design that was just read from url, with an empty history; modified when
    // it holds edits that no file has.
    void adoptOpenedDesign(HMKDesign design, const std::filesystem::path& url,
                           bool modified = false);
    void swapDesign(HMKDesign& snapshot);
    void notifyDesignReplaced(std::int32_t shownBefore);
    void updateModified();
    void selectionDidChange();

    // --- Recovery ---
    void scheduleRecoveryWrite();
    void startRecoveryWrite();
    void recoveryWriteFinished();
    HMKRecoveryState recoveryState() const;
    bool ensureRecoveryLock();
    void removeRecoveryFile();

    HMKSettings& settings_;
    HMKDesign design_;
    HMKUndoHistory history_;
    std::filesystem::path fileURL_;
    std::optional<QDateTime> fileModificationDate_;
    // Edits that are in no undo step (a restored recovery file, an untitled design).
    bool modifiedWithoutHistory_ = false;
    bool lastModified_ = false;
    HMKViewState viewState_;
    HMKAlertHandler alertHandler_;

    QString recoveryId_;
    std::unique_ptr<QLockFile> recoveryLock_;
    QTimer recoveryTimer_;
    // One background thread, so writes and removals of the file happen in order.
    QThreadPool recoveryWriter_;
    bool recoveryWriteRunning_ = false;
    bool recoveryWriteWanted_ = false;
    bool closed_ = false;
};
