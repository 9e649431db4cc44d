#include "document/machine_profile_texts.h"

#include <array>
#include <string>

#include "document/document_texts.h"
#include "model/format_text.h"
#include "model/units.h"

namespace {

struct MachineName {
    const char* key;
    const char* defaultName;
};

// Indexed by ident; each says what the machine reads and where, so the user can match it
// with the machine's manual.
constexpr std::array<MachineName, 9> kMachineNames{{
    {"MACHINE_0", "Any machine, any folder, no limits"},
    {"MACHINE_1", "JEF machines, folder EMB/EmbF, 64,000 stitches"},
    {"MACHINE_2", "JEF machines, folder EmbF5, 64,000 stitches"},
    {"MACHINE_3", "JEF machines, folder EmbF5/MyDesign, 64,000 stitches"},
    {"MACHINE_4", "JEF machines, folder EMB_FILE, 100,000 stitches"},
    {"MACHINE_5", "JEF machines, folders EmbF5 to EmbF16, 100,000 stitches"},
    {"MACHINE_6", "JEF machines, folder EMB/EmbF, 100,000 stitches"},
    {"MACHINE_7", "JEF and DST machines, folder EMB/EmbF, 200,000 stitches"},
    {"MACHINE_8", "JEF machines, folder EMB/EmbF, 200,000 stitches"},
}};

constexpr double kGigabyte = 1e9;
constexpr double kMegabyte = 1e6;

QString formatted(std::string_view key, std::string_view defaultFormat,
                  std::initializer_list<TextArg> args) {
    return QString::fromStdString(formatText(documentText(key, defaultFormat).toStdString(), args));
}

QString joined(const std::vector<std::string>& items) {
    QStringList texts;
    for (const std::string& item : items) {
        texts.append(QString::fromStdString(item));
    }
    return texts.join(QStringLiteral(", "));
}

QString rootFolderText(const HMKMachine& machine) {
    if (!machine.rootFolders() || machine.rootFolders()->empty()) {
        return QStringLiteral("-");
    }
    const std::vector<std::string>& folders = *machine.rootFolders();
    if (folders.size() == 1) {
        return QString::fromStdString(folders.front());
    }
    if (folders.size() == 2) {
        return formatted("EXPORT_TWO_FOLDERS", "%@, %@", {folders[0], folders[1]});
    }
    return formatted("EXPORT_FOLDER_RANGE", "%@ ... %@", {folders.front(), folders.back()});
}

QString subFolderRangeText(const HMKMachine& machine) {
    const std::int32_t minimum = machine.subfolderMin();
    const std::int32_t maximum = machine.subfolderMax();
    if (maximum == -1) {
        return QStringLiteral("-");
    }
    if (minimum == 0 && maximum == 0) {
        return documentText("EXPORT_UNSUPPORTED", "unsupported");
    }
    if (minimum == maximum) {
        return formatted("EXPORT_SUBFOLDERS", "%@", {std::to_string(minimum)});
    }
    return formatted("EXPORT_SUBFOLDER_RANGE", "%@ - %@",
                     {std::to_string(minimum), std::to_string(maximum)});
}

}  // namespace

QString machineDisplayName(std::int32_t ident) {
    if (ident < 0 || static_cast<std::size_t>(ident) >= kMachineNames.size()) {
        return {};
    }
    const MachineName& name = kMachineNames[static_cast<std::size_t>(ident)];
    return documentText(name.key, name.defaultName);
}

QString limitText(std::int32_t limit) {
    if (limit == -1) {
        return documentText("EXPORT_UNLIMITED", "unlimited");
    }
    return formatted("EXPORT_MAXIMUM", "max. %@", {groupedDecimal(limit, 0)});
}

HMKMachineFieldTexts machineFieldTexts(const HMKMachine& machine) {
    return {limitText(machine.maxStitches()), joined(machine.allowedFileTypes()),
            rootFolderText(machine), subFolderRangeText(machine),
            limitText(machine.maxFilesPerFolder())};
}

QString volumeDetailText(const QString& fileSystem, qint64 freeBytes, qint64 totalBytes) {
    const std::string type = fileSystem.toUpper().toStdString();
    const std::string availableOf = documentText("EXPORT_AVAIL", "available of").toStdString();
    const double free = static_cast<double>(freeBytes);
    const double total = static_cast<double>(totalBytes);
    if (free > kGigabyte && total > kGigabyte) {
        return QString::fromStdString(formatText(
            "%@, %1.1f GB %@ %1.1f GB", {type, free / kGigabyte, availableOf, total / kGigabyte}));
    }
    if (total > kGigabyte) {
        return QString::fromStdString(formatText(
            "%@, %1.1f MB %@ %1.1f GB", {type, free / kMegabyte, availableOf, total / kGigabyte}));
    }
    return QString::fromStdString(formatText(
        "%@, %1.1f MB %@ %1.1f MB", {type, free / kMegabyte, availableOf, total / kMegabyte}));
}
