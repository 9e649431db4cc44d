#include <gtest/gtest.h>

#include "document/machine_profile_texts.h"

TEST(MachineProfileTexts, FieldsShowEachProfilesLimits) {
    struct Case {
        int ident;
        const char* maxStitches;
        const char* fileTypes;
        const char* rootFolders;
        const char* subFolderRange;
        const char* filesPerFolder;
    };
    const Case cases[] = {
        {0, "unlimited", "JEF, PES, PEC, EXP, DST, PCS", "-", "-", "unlimited"},
        {1, "max. 64,000", "JEF", "EMB", "1", "max. 100"},
        {2, "max. 64,000", "JEF", "EmbF5", "unsupported", "max. 100"},
        {4, "max. 100,000", "JEF", "EMB_FILE, PC_LINK", "unsupported", "max. 100"},
        {5, "max. 100,000", "JEF", "EmbF5 ... EmbF16", "unsupported", "max. 100"},
        {7, "max. 200,000", "JEF, DST", "EMB", "1", "max. 100"},
    };
    for (const Case& test : cases) {
        const HMKMachineFieldTexts fields = machineFieldTexts(*HMKMachine::fromIdent(test.ident));
        EXPECT_EQ(fields.maxStitches, test.maxStitches) << test.ident;
        EXPECT_EQ(fields.fileTypes, test.fileTypes) << test.ident;
        EXPECT_EQ(fields.rootFolders, test.rootFolders) << test.ident;
        EXPECT_EQ(fields.subFolderRange, test.subFolderRange) << test.ident;
        EXPECT_EQ(fields.filesPerFolder, test.filesPerFolder) << test.ident;
    }
}

TEST(MachineProfileTexts, SizesSwitchFromMegabytesToGigabytesAboveOneBillionBytes) {
    struct Case {
        const char* fileSystem;
        qint64 freeBytes;
        qint64 totalBytes;
        const char* text;
    };
    const Case cases[] = {
        {"MS-DOS (FAT32)", 1'000'000'001, 1'000'000'001,
         "MS-DOS (FAT32), 1.0 GB available of 1.0 GB"},
        {"MS-DOS (FAT32)", 1'000'000'000, 1'000'000'001,
         "MS-DOS (FAT32), 1000.0 MB available of 1.0 GB"},
        {"MS-DOS (FAT16)", 1'000'000'000, 1'000'000'000,
         "MS-DOS (FAT16), 1000.0 MB available of 1000.0 MB"},
        {"MS-DOS (FAT12)", 2'450'000, 999'999'999, "MS-DOS (FAT12), 2.5 MB available of 1000.0 MB"},
        {"exfat", 3'210'000'000, 7'960'000'000, "EXFAT, 3.2 GB available of 8.0 GB"},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(volumeDetailText(test.fileSystem, test.freeBytes, test.totalBytes), test.text);
    }
}
