#include "document/recovery.h"

#include <algorithm>
#include <system_error>

#include <QCborMap>
#include <QCborStreamWriter>
#include <QCborValue>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include "formats/file_io.h"
#include "model/archive.h"

namespace {

// The recovery file is a CBOR map with these keys; the version changes if their meaning does.
constexpr qint64 kRecoveryVersion = 1;
constexpr QLatin1StringView kVersionKey("HMKRecoveryVersion");
constexpr QLatin1StringView kDocumentUrlKey("HMKDocumentURL");
constexpr QLatin1StringView kModificationDateKey("HMKModificationDate");
constexpr QLatin1StringView kIsEditedKey("HMKIsEdited");
constexpr QLatin1StringView kViewScalingKey("HMKViewScaling");
constexpr QLatin1StringView kViewCenterXKey("HMKViewCenterX");
constexpr QLatin1StringView kViewCenterYKey("HMKViewCenterY");
constexpr QLatin1StringView kSelectedThreadKey("HMKSelectedThread");
constexpr QLatin1StringView kSelectionModeKey("HMKSelectionMode");
constexpr QLatin1StringView kDesignKey("HMKDesign");

constexpr const char* kRecoverySuffix = ".recovery";
constexpr const char* kLockSuffix = ".lock";

bool unreadable(HMKError* error, const QString& detail) {
    if (error) {
        *error = makeError(kRecoveryUnreadableError, "The recovered state cannot be read.");
        error->failureReason = detail.toStdString();
    }
    return false;
}

std::optional<std::int32_t> smallInteger(const QCborMap& map, QLatin1StringView key) {
    const QCborValue value = map.value(key);
    if (!value.isInteger() || value.toInteger() < INT32_MIN || value.toInteger() > INT32_MAX) {
        return std::nullopt;
    }
    return static_cast<std::int32_t>(value.toInteger());
}

}  // namespace

QByteArray encodeRecoveryState(const HMKRecoveryState& state) {
    QByteArray bytes;
    QCborStreamWriter writer(&bytes);
    writer.startMap();
    auto key = [&writer](QLatin1StringView name) { writer.append(name); };
    key(kVersionKey), writer.append(kRecoveryVersion);
    key(kDocumentUrlKey), writer.append(QString::fromStdString(state.documentURL.string()));
    key(kIsEditedKey), writer.append(state.isEdited);
    if (state.modificationDate) {
        key(kModificationDateKey), writer.append(state.modificationDate->toMSecsSinceEpoch());
    }
    if (state.viewScaling) {
        key(kViewScalingKey), writer.append(*state.viewScaling);
    }
    if (state.viewCenter) {
        key(kViewCenterXKey), writer.append(state.viewCenter->x);
        key(kViewCenterYKey), writer.append(state.viewCenter->y);
    }
    if (state.selectedThread) {
        key(kSelectedThreadKey), writer.append(static_cast<qint64>(*state.selectedThread));
    }
    if (state.selectionMode) {
        key(kSelectionModeKey), writer.append(static_cast<qint64>(*state.selectionMode));
    }
    // The archive goes straight into the output, without another copy of it.
    key(kDesignKey),
        writer.appendByteString(reinterpret_cast<const char*>(state.archivedDesign.data()),
                                static_cast<qsizetype>(state.archivedDesign.size()));
    writer.endMap();
    return bytes;
}

std::optional<HMKRecoveryState> decodeRecoveryState(const QByteArray& bytes, HMKError* error) {
    QCborParserError parseError;
    const QCborValue root = QCborValue::fromCbor(bytes, &parseError);
    if (parseError.error != QCborError::NoError || !root.isMap()) {
        unreadable(error, QStringLiteral("not a recovery file"));
        return std::nullopt;
    }
    const QCborMap map = root.toMap();
    if (map.value(kVersionKey).toInteger(-1) != kRecoveryVersion ||
        !map.value(kDesignKey).isByteArray() || !map.value(kDocumentUrlKey).isString()) {
        unreadable(error, QStringLiteral("unknown version or missing design"));
        return std::nullopt;
    }
    HMKRecoveryState state;
    state.documentURL = map.value(kDocumentUrlKey).toString().toStdString();
    state.isEdited = map.value(kIsEditedKey).toBool(false);
    if (map.value(kModificationDateKey).isInteger()) {
        state.modificationDate =
            QDateTime::fromMSecsSinceEpoch(map.value(kModificationDateKey).toInteger(), Qt::UTC);
    }
    if (map.value(kViewScalingKey).isDouble()) {
        state.viewScaling = map.value(kViewScalingKey).toDouble();
    }
    if (map.value(kViewCenterXKey).isDouble() && map.value(kViewCenterYKey).isDouble()) {
        state.viewCenter =
            HMKPoint{map.value(kViewCenterXKey).toDouble(), map.value(kViewCenterYKey).toDouble()};
    }
    state.selectedThread = smallInteger(map, kSelectedThreadKey);
    state.selectionMode = smallInteger(map, kSelectionModeKey);
    const QByteArray design = map.value(kDesignKey).toByteArray();
    state.archivedDesign.assign(design.begin(), design.end());
    return state;
}

bool writeRecoveryFile(const std::filesystem::path& file, HMKRecoveryState state,
                       const HMKDesign& design, HMKError* error) {
    std::error_code ignored;
    std::filesystem::create_directories(file.parent_path(), ignored);
    state.archivedDesign = archiveDesign(design);
    const QByteArray bytes = encodeRecoveryState(state);
    return writeFileAtomically(file,
                               {reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                                static_cast<std::size_t>(bytes.size())},
                               error);
}

std::optional<HMKRecoveryState> readRecoveryFile(const std::filesystem::path& file,
                                                 HMKError* error) {
    auto bytes = readWholeFile(file);
    if (!bytes) {
        unreadable(error, QStringLiteral("the file cannot be read"));
        return std::nullopt;
    }
    return decodeRecoveryState(QByteArray::fromRawData(reinterpret_cast<const char*>(bytes->data()),
                                                       static_cast<qsizetype>(bytes->size())),
                               error);
}

QString HMKRecoveryEntry::displayName() const {
    if (documentURL.empty()) {
        return QStringLiteral("Untitled");
    }
    return QString::fromStdString(documentURL.filename().string());
}

std::filesystem::path HMKRecoveryStore::folder() {
    QString state = qEnvironmentVariable("XDG_STATE_HOME");
    if (!QDir::isAbsolutePath(state)) {
        state = QStandardPaths::writableLocation(QStandardPaths::HomeLocation) +
                QStringLiteral("/.local/state");
    }
    return std::filesystem::path(state.toStdString()) / "hemlark";
}

std::filesystem::path HMKRecoveryStore::fileForId(const QString& id) {
    return folder() / (id.toStdString() + kRecoverySuffix);
}

std::unique_ptr<QLockFile> HMKRecoveryStore::lock(const QString& id) {
    std::error_code ignored;
    std::filesystem::create_directories(folder(), ignored);
    auto lock = std::make_unique<QLockFile>(
        QString::fromStdString((folder() / (id.toStdString() + kLockSuffix)).string()));
    // Only a dead owner makes a lock stale: documents stay open for days.
    lock->setStaleLockTime(0);
    if (!lock->tryLock(0)) {
        return nullptr;
    }
    return lock;
}

std::vector<HMKRecoveryEntry> HMKRecoveryStore::pendingRecoveries() {
    std::vector<HMKRecoveryEntry> entries;
    const QDir dir(QString::fromStdString(folder().string()));
    const QFileInfoList files =
        dir.entryInfoList({QStringLiteral("*") + kRecoverySuffix}, QDir::Files, QDir::Time);
    for (const QFileInfo& info : files) {
        const QString id = info.completeBaseName();
        if (!lock(id)) {
            continue;  // an open document of a running instance
        }
        const std::filesystem::path file = info.filePath().toStdString();
        if (auto state = readRecoveryFile(file)) {
            entries.push_back({id, file, state->documentURL, info.lastModified()});
        }
    }
    // Locks left by killed owners of documents that had no unsaved edits.
    for (const QFileInfo& info :
         dir.entryInfoList({QStringLiteral("*") + kLockSuffix}, QDir::Files)) {
        if (!std::filesystem::exists(fileForId(info.completeBaseName()))) {
            lock(info.completeBaseName());
        }
    }
    return entries;
}

bool HMKRecoveryStore::discard(const HMKRecoveryEntry& entry) {
    std::error_code error;
    std::filesystem::remove(entry.file, error);
    return !error;
}
