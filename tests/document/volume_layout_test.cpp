#include <gtest/gtest.h>

#include <fstream>

#include "document/volume_layout.h"
#include "support/test_support.h"

namespace fs = std::filesystem;

namespace {

// A stick with a folder at the machines' file limit and one just below it.
class VolumeLayoutTest : public ::testing::Test {
protected:
    void SetUp() override {
        for (auto [name, files] : {std::pair{"EMB/Full", 100}, std::pair{"EMB/Room", 99}}) {
            fs::create_directories(root_ / name);
            for (int i = 0; i < files; ++i) {
                std::ofstream(root_ / name / ("d" + std::to_string(i) + ".jef"));
            }
        }
    }
    HMKVolumeLayout layout(int ident) const {
        return HMKVolumeLayout(root_, "STICK", *HMKMachine::fromIdent(ident));
    }

    ScratchFolder folder_;
    const fs::path root_ = folder_.file("STICK");
};

}  // namespace

TEST_F(VolumeLayoutTest, TheDialogShowsOnlyPlacesTheMachineLooksIn) {
    struct Case {
        int ident;
        const char* path;
        bool shown;
    };
    const Case cases[] = {
        {0, "", true},
        {0, "any/depth/at/all", true},
        {0, "../OTHER", false},
        {1, "", true},
        {1, "EMB", true},
        {1, "EMB/EmbF", true},
        {1, "EMB/EmbF/a.jef", false},
        {1, "EMB/EmbF/deeper", false},
        {1, "Other", false},
        {1, "EMB/Full", false},
        {1, "EMB/Room", true},
        {1, "../OTHER/EMB", false},
        {2, "EmbF5", true},
        {2, "EmbF5/a.jef", false},
        {2, "EmbF6", false},
        {4, "PC_LINK", true},
        {4, "EMB_FILE", true},
        {4, "EMB", false},
        {5, "EmbF16", true},
        {5, "EmbF17", false},
        {5, "EmbF5/sub", false},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(layout(test.ident).shouldShow(root_ / test.path), test.shown)
            << test.ident << " " << test.path;
    }
}

TEST_F(VolumeLayoutTest, OnlyNamesTheMachineFindsAndReadsAreValid) {
    struct Case {
        int ident;
        const char* path;
        const char* refusal;  // part of the refusal, "" when valid
    };
    const Case cases[] = {
        {0, "rose.jef", ""},
        {0, "a/b/rose.PES", ""},
        {0, "rose.DsT", ""},
        {0, "rose.vp3", "only JEF, PES, PEC, EXP, DST, PCS files"},
        {0, "rose", "ending in .jef"},
        {0, "../OTHER/rose.jef", "on the volume “STICK”"},
        {0, "", "on the volume “STICK”"},
        {1, "EMB/EmbF/rose.jef", ""},
        {1, "EMB/EmbF/rose.JEF", ""},
        {1, "EMB/rose.jef", "1 level(s) below EMB, such as EMB/EmbF."},
        {1, "EMB/EmbF/x/rose.jef", "level(s) below"},
        {1, "Other/EmbF/rose.jef", "only in the folder EMB"},
        {1, "rose.jef", "only in the folder EMB"},
        {1, "EMB/EmbF/rose.dst", "only JEF files"},
        {1, "EMB/Full/rose.jef", "“Full” already holds 100 entries"},
        {1, "EMB/Room/rose.jef", ""},
        {2, "EmbF5/rose.jef", ""},
        {2, "EmbF5/sub/rose.jef", "directly in EmbF5"},
        {4, "PC_LINK/rose.jef", ""},
        {4, "EMB_FILE/a/rose.jef", "directly in EMB_FILE, PC_LINK"},
        {5, "EmbF10/rose.jef", ""},
        {5, "EmbF4/rose.jef", "only in the folders EmbF5 ... EmbF16"},
        {5, "EmbF5/rose.pes", "only JEF files"},
    };
    for (const Case& test : cases) {
        const QString refusal = layout(test.ident).refusal(root_ / test.path);
        EXPECT_EQ(refusal.isEmpty(), *test.refusal == '\0') << test.path;
        EXPECT_TRUE(refusal.contains(QString::fromUtf8(test.refusal)))
            << test.path << ": " << refusal.toStdString();
    }
}

TEST_F(VolumeLayoutTest, TheDialogOpensInTheDefaultFolderMadeIfMissing) {
    struct Case {
        int ident;
        const char* folder;
        bool newFolders;
    };
    const Case cases[] = {{0, "", false},        {1, "EMB/EmbF", true},
                          {2, "EmbF5", false},   {3, "EmbF5/MyDesign", true},
                          {4, "EMB_FILE", true}, {5, "EmbF5", true}};
    for (const Case& test : cases) {
        const HMKVolumeLayout volume = layout(test.ident);
        EXPECT_EQ(volume.defaultFolder(), (root_ / test.folder / "").lexically_normal());
        EXPECT_TRUE(volume.createDefaultFolder());
        EXPECT_TRUE(fs::is_directory(volume.defaultFolder()));
        EXPECT_EQ(volume.allowsNewFolders(), test.newFolders) << test.ident;
    }
    std::ofstream(root_ / "blocked");
    HMKError error;
    EXPECT_FALSE(HMKVolumeLayout(root_ / "blocked", "X", *HMKMachine::fromIdent(1))
                     .createDefaultFolder(&error));
    EXPECT_FALSE(error.message().empty());
}
