// The texts of the machine export: the names of the machine profiles in the chooser, the
// fields that show a profile's limits, and the line that describes a volume in the volume
// table ("MS-DOS (FAT32), 3.2 GB available of 7.8 GB"). The export dialog and `hemlark
// volumes` show them; each is looked up by key with an English default.
#pragma once

#include <cstdint>

#include <QString>
#include <QStringList>

#include "model/machine.h"

// What the machine needs, in plain words ("JEF machines, folder EMB/EmbF, 64,000 stitches").
QString machineDisplayName(std::int32_t ident);

// The fields that show a profile's limits.
struct HMKMachineFieldTexts {
    // "unlimited" or "max. 64,000"
    QString maxStitches;
    // "JEF, DST"
    QString fileTypes;
    // "-", "EMB", "EMB_FILE, PC_LINK" or "EmbF5 ... EmbF16"
    QString rootFolders;
    // "-", "unsupported", "1" or "1 - 2"
    QString subFolderRange;
    // "unlimited" or "max. 100"
    QString filesPerFolder;
};
HMKMachineFieldTexts machineFieldTexts(const HMKMachine& machine);

// "max. 64,000" for a limit, "unlimited" for -1.
QString limitText(std::int32_t limit);

// The volume table's line: the upper-cased file system and "available of" with the free and
// total sizes, in GB above 1,000,000,000 bytes and MB up to it.
QString volumeDetailText(const QString& fileSystem, qint64 freeBytes, qint64 totalBytes);
