#include <gtest/gtest.h>

#include "model/machine.h"

TEST(Machines, ProfilesHoldExactlyTheirTable) {
    using Folders = std::optional<std::vector<std::string>>;
    struct Row {
        std::vector<std::string> types;
        std::int32_t maxStitches;
        Folders roots;
        std::string defaultFolder;
        std::int32_t subfolderMin, subfolderMax, maxFiles;
    };
    const std::vector<Row> table = {
        {{"JEF", "PES", "PEC", "EXP", "DST", "PCS"}, -1, std::nullopt, "/", 0, -1, -1},
        {{"JEF"}, 64000, Folders({"EMB"}), "/EMB/EmbF/", 1, 1, 100},
        {{"JEF"}, 64000, Folders({"EmbF5"}), "/EmbF5/", 0, 0, 100},
        {{"JEF"}, 64000, Folders({"EmbF5"}), "/EmbF5/MyDesign/", 1, 1, 100},
        {{"JEF"}, 100000, Folders({"EMB_FILE", "PC_LINK"}), "/EMB_FILE/", 0, 0, 100},
        {{"JEF"},
         100000,
         Folders({"EmbF5", "EmbF6", "EmbF7", "EmbF8", "EmbF9", "EmbF10", "EmbF11", "EmbF12",
                  "EmbF13", "EmbF14", "EmbF15", "EmbF16"}),
         "/EmbF5/",
         0,
         0,
         100},
        {{"JEF"}, 100000, Folders({"EMB"}), "/EMB/EmbF/", 1, 1, 100},
        {{"JEF", "DST"}, 200000, Folders({"EMB"}), "/EMB/EmbF/", 1, 1, 100},
        {{"JEF"}, 200000, Folders({"EMB"}), "/EMB/EmbF/", 1, 1, 100},
    };
    const std::vector<std::string> fat = {"MS-DOS (FAT12)", "MS-DOS (FAT16)", "MS-DOS (FAT32)"};
    ASSERT_EQ(HMKMachine::allMachines().size(), table.size());
    for (std::int32_t ident = 0; ident < static_cast<std::int32_t>(table.size()); ++ident) {
        const Row& row = table[static_cast<std::size_t>(ident)];
        auto machine = HMKMachine::fromIdent(ident);
        ASSERT_TRUE(machine) << ident;
        EXPECT_EQ(machine->ident(), ident);
        EXPECT_EQ(machine->allowedFileTypes(), row.types) << ident;
        EXPECT_EQ(machine->allowedFileSystems(), fat) << ident;
        EXPECT_EQ(machine->maxStitches(), row.maxStitches) << ident;
        EXPECT_EQ(machine->rootFolders(), row.roots) << ident;
        EXPECT_EQ(machine->defaultFolder(), row.defaultFolder) << ident;
        EXPECT_EQ(machine->subfolderMin(), row.subfolderMin) << ident;
        EXPECT_EQ(machine->subfolderMax(), row.subfolderMax) << ident;
        EXPECT_EQ(machine->maxFilesPerFolder(), row.maxFiles) << ident;
    }
    EXPECT_FALSE(HMKMachine::fromIdent(-1));
    EXPECT_FALSE(HMKMachine::fromIdent(9));
}

TEST(Machines, DescriptionNamesEveryField) {
    EXPECT_EQ(HMKMachine::fromIdent(4)->description(),
              "Ident: 4, Formats: (JEF), max. Stitches: 100000, Filesystems: (MS-DOS (FAT12), "
              "MS-DOS (FAT16), MS-DOS (FAT32)), Root: (EMB_FILE, PC_LINK), Default: /EMB_FILE/, "
              "Subfolders: (0 - 0), max. Files: 100");
    EXPECT_NE(HMKMachine::fromIdent(0)->description().find("Root: (null)"), std::string::npos);
}
