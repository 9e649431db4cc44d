// Crash safety. While a document has unsaved edits it keeps its state in a recovery file in
// the user's state folder ($XDG_STATE_HOME/hemlark, by default ~/.local/state/hemlark): the
// archived design, the file it belongs to and that file's modification date, and how the
// window showed it. HMKDocument writes and removes its own file; at start the application
// lists the files no running instance owns (pendingRecoveries) and offers to restore them
// (HMKDocument::restoreRecovery) or to throw them away (discard).
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include <QByteArray>
#include <QDateTime>
#include <QLockFile>
#include <QString>

#include "model/design.h"
#include "model/error.h"

// The recovery file cannot be read (damaged, or written by an unknown version).
inline constexpr int kRecoveryUnreadableError = 310;

// What a recovery file holds; absent optionals were not stored.
struct HMKRecoveryState {
    // The document's file; empty for a design that never had one.
    std::filesystem::path documentURL;
    // The file's modification date when it was opened or saved, to notice later changes.
    std::optional<QDateTime> modificationDate;
    // The document had unsaved edits.
    bool isEdited = false;
    std::optional<double> viewScaling;
    std::optional<HMKPoint> viewCenter;
    // The thread shown alone.
    std::optional<std::int32_t> selectedThread;
    // The design view's selection mode (HMKSelectionMode as a number).
    std::optional<std::int32_t> selectionMode;
    // The design as keyed archive (see model/archive.h).
    std::vector<std::uint8_t> archivedDesign;
};

// --- The file's contents ---------------------------------------------------------------------
QByteArray encodeRecoveryState(const HMKRecoveryState& state);
// None, with kRecoveryUnreadableError, when the bytes are no recovery file of this program.
std::optional<HMKRecoveryState> decodeRecoveryState(const QByteArray& bytes,
                                                    HMKError* error = nullptr);
// Archives the design into the state and writes the file atomically (slow for big designs:
// call it off the GUI thread).
bool writeRecoveryFile(const std::filesystem::path& file, HMKRecoveryState state,
                       const HMKDesign& design, HMKError* error = nullptr);
std::optional<HMKRecoveryState> readRecoveryFile(const std::filesystem::path& file,
                                                 HMKError* error = nullptr);

// --- The folder ------------------------------------------------------------------------------
// One recovery file found at start.
struct HMKRecoveryEntry {
    // Names the file and the lock that marks it as owned by a running document.
    QString id;
    std::filesystem::path file;
    // The document's file; empty for a design that never had one.
    std::filesystem::path documentURL;
    // When the state was last written.
    QDateTime savedAt;
    // The document file's name, or "Untitled".
    QString displayName() const;
};

class HMKRecoveryStore {
public:
    // $XDG_STATE_HOME/hemlark, or ~/.local/state/hemlark when the variable is unset or
    // relative (Qt 6.4's QStandardPaths has no state location yet).
    static std::filesystem::path folder();
    static std::filesystem::path fileForId(const QString& id);
    // Locks the id for this process (a document owns its file while it is open); null when
    // another running process holds it. A killed owner's lock counts as free.
    static std::unique_ptr<QLockFile> lock(const QString& id);
    // The recovery files no running document owns, newest first; unreadable files are left
    // alone and not offered.
    static std::vector<HMKRecoveryEntry> pendingRecoveries();
    // Removes the entry's file (the user declined to restore it).
    static bool discard(const HMKRecoveryEntry& entry);
};
