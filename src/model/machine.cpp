#include "model/machine.h"

#include <array>

#include "model/format_text.h"

namespace {

constexpr std::int32_t kNoLimit = -1;

struct MachineRow {
    std::vector<std::string> fileTypes;
    std::int32_t maxStitches;
    std::optional<std::vector<std::string>> rootFolders;
    const char* defaultFolder;
    std::int32_t subfolderMin;
    std::int32_t subfolderMax;
    std::int32_t maxFilesPerFolder;
};

// Indexed by ident. Profile 0 is the generic target; the others are machine families that
// read JEF (profile 7 also DST) from FAT sticks in fixed folders.
const std::array<MachineRow, 9>& machineTable() {
    static const std::array<MachineRow, 9> table{{
        {{"JEF", "PES", "PEC", "EXP", "DST", "PCS"},
         kNoLimit,
         std::nullopt,
         "/",
         0,
         kNoLimit,
         kNoLimit},
        {{"JEF"}, 64000, {{"EMB"}}, "/EMB/EmbF/", 1, 1, 100},
        {{"JEF"}, 64000, {{"EmbF5"}}, "/EmbF5/", 0, 0, 100},
        {{"JEF"}, 64000, {{"EmbF5"}}, "/EmbF5/MyDesign/", 1, 1, 100},
        {{"JEF"}, 100000, {{"EMB_FILE", "PC_LINK"}}, "/EMB_FILE/", 0, 0, 100},
        {{"JEF"},
         100000,
         {{"EmbF5", "EmbF6", "EmbF7", "EmbF8", "EmbF9", "EmbF10", "EmbF11", "EmbF12", "EmbF13",
           "EmbF14", "EmbF15", "EmbF16"}},
         "/EmbF5/",
         0,
         0,
         100},
        {{"JEF"}, 100000, {{"EMB"}}, "/EMB/EmbF/", 1, 1, 100},
        {{"JEF", "DST"}, 200000, {{"EMB"}}, "/EMB/EmbF/", 1, 1, 100},
        {{"JEF"}, 200000, {{"EMB"}}, "/EMB/EmbF/", 1, 1, 100},
    }};
    return table;
}

// Every machine reads the same FAT volumes.
const std::vector<std::string>& fatFileSystems() {
    static const std::vector<std::string> systems{"MS-DOS (FAT12)", "MS-DOS (FAT16)",
                                                  "MS-DOS (FAT32)"};
    return systems;
}

std::string listText(const std::vector<std::string>& items) {
    std::string text = "(";
    for (std::size_t i = 0; i < items.size(); ++i) {
        text += (i == 0 ? "" : ", ") + items[i];
    }
    return text + ")";
}

}  // namespace

std::optional<HMKMachine> HMKMachine::fromIdent(std::int32_t ident) {
    if (ident < 0 || static_cast<std::size_t>(ident) >= machineTable().size()) {
        return std::nullopt;
    }
    const MachineRow& row = machineTable()[static_cast<std::size_t>(ident)];
    HMKMachine machine;
    machine.ident_ = ident;
    machine.allowedFileTypes_ = row.fileTypes;
    machine.allowedFileSystems_ = fatFileSystems();
    machine.maxStitches_ = row.maxStitches;
    machine.rootFolders_ = row.rootFolders;
    machine.defaultFolder_ = row.defaultFolder;
    machine.subfolderMin_ = row.subfolderMin;
    machine.subfolderMax_ = row.subfolderMax;
    machine.maxFilesPerFolder_ = row.maxFilesPerFolder;
    return machine;
}

std::vector<HMKMachine> HMKMachine::allMachines() {
    std::vector<HMKMachine> machines;
    for (std::int32_t ident = 0; auto machine = fromIdent(ident); ++ident) {
        machines.push_back(*machine);
    }
    return machines;
}

std::string HMKMachine::description() const {
    // A missing folder list prints as "(null)", like any absent object in these texts.
    return formatText(
        "Ident: %i, Formats: %@, max. Stitches: %i, Filesystems: %@, Root: %@, Default: %@, "
        "Subfolders: (%i - %i), max. Files: %i",
        {ident_, listText(allowedFileTypes_), maxStitches_, listText(allowedFileSystems_),
         rootFolders_ ? listText(*rootFolders_) : std::string("(null)"), defaultFolder_,
         subfolderMin_, subfolderMax_, maxFilesPerFolder_});
}
