// The machine export's steps without a disk service: the stitch limit, the export job with
// its messages, and the dialog's model, driven by a fake volume monitor.
#include <gtest/gtest.h>

#include <fstream>
#include <memory>

#include <QGuiApplication>
#include <QTemporaryDir>

#include "document/machine_export.h"
#include "document/machine_export_model.h"
#include "platform/fake_volume_monitor.h"

namespace fs = std::filesystem;

namespace {

class GuiApplication : public ::testing::Environment {
public:
    void SetUp() override {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        application_ = std::make_unique<QGuiApplication>(argc_, argv_);
    }
    void TearDown() override { application_.reset(); }

private:
    int argc_ = 1;
    char name_[24] = "machine_export_tests";
    char* argv_[2] = {name_, nullptr};
    std::unique_ptr<QGuiApplication> application_;
};

[[maybe_unused]] const auto* const environment =
    ::testing::AddGlobalTestEnvironment(new GuiApplication);

// A design whose stitches and threads add up to count: two threads and count - 1 records.
HMKDesign designCounting(std::int32_t count) {
    HMKDesign design;
    design.stitches().assign(static_cast<std::size_t>(count - 1), HMKStitch(1, 1, false, false));
    design.stitches()[1].isColorChange = true;
    design.setThreads({HMKThread(), HMKThread()});
    return design;
}

class MachineExportTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(folder_.isValid()); }

    QTemporaryDir folder_;
    const QString stick_ = folder_.filePath("STICK");
    FakeVolumeMonitor monitor_;
    HMKSettings settings_{folder_.filePath("hemlark.conf")};
};

}  // namespace

TEST_F(MachineExportTest, ExactlyTheStitchLimitPassesAndOneMoreIsRefused) {
    const HMKMachine machine = *HMKMachine::fromIdent(1);
    EXPECT_EQ(designCounting(64000).numberOfStitches() + 2, 64000);
    EXPECT_FALSE(stitchLimitAlert(machine, designCounting(64000)));
    const auto alert = stitchLimitAlert(machine, designCounting(64001));
    ASSERT_TRUE(alert);
    EXPECT_EQ(alert->title, "Export Design");
    EXPECT_EQ(alert->text, "Too many stitches.\nmax. 64,000");
    EXPECT_FALSE(stitchLimitAlert(*HMKMachine::fromIdent(0), designCounting(300000)));
}

TEST_F(MachineExportTest, EachEndingOfTheExportHasItsMessage) {
    struct Case {
        bool eject;
        bool hasVolume;
        QString ejectFailure;
        bool stall;
        bool writes;
        HMKMachineExportOutcome outcome;
        const char* title;
        HMKAlertStyle style;
    };
    using enum HMKMachineExportOutcome;
    const Case cases[] = {
        {false, true, "", false, true, exported, "Design exported", HMKAlertStyle::informational},
        {true, true, "", false, true, exportedAndEjected, "Design exported and drive ejected",
         HMKAlertStyle::informational},
        {true, true, "target is busy", false, true, exportedNotEjected,
         "Design exported, drive not ejected", HMKAlertStyle::warning},
        {true, false, "", false, true, exportedNotEjected, "Design exported, drive not ejected",
         HMKAlertStyle::warning},
        {true, true, "", true, true, exportedNotCleaned, "Design exported, files not deleted",
         HMKAlertStyle::warning},
        {true, true, "", false, false, failed, "Export", HMKAlertStyle::warning},
    };
    for (const Case& test : cases) {
        fs::create_directories(stick_.toStdString() + "/.fseventsd");
        std::ofstream(stick_.toStdString() + "/.fseventsd/slow");
        monitor_.ejected.clear();
        monitor_.ejectFailure = test.ejectFailure;
        HMKMachineExportRequest request;
        request.file = stick_.toStdString() + "/rose.jef";
        request.volumeRoot = stick_.toStdString();
        request.volumeName = "STICK";
        if (test.hasVolume) {
            request.volume = fakeStick(stick_);
        }
        request.ejectVolume = test.eject;
        if (test.stall) {
            request.cleanup.stepTimeLimit = std::chrono::milliseconds(20);
            request.cleanup.beforeRemoving = [](const fs::path&) {
                std::this_thread::sleep_for(std::chrono::milliseconds(200));
            };
        }
        HMKMachineExport exporter(&monitor_);
        const HMKMachineExportResult result =
            exporter.run(request, [&](const fs::path&, HMKError* error) {
                *error = makeError(12, "The disk is full.");
                return test.writes;
            });
        EXPECT_EQ(result.outcome, test.outcome) << test.title;
        EXPECT_EQ(result.alert.title, test.title);
        EXPECT_EQ(result.alert.style, test.style) << test.title;
        EXPECT_TRUE(result.alert.text.contains(test.ejectFailure));
        const bool ejectTried = test.eject && test.hasVolume && !test.stall && test.writes;
        EXPECT_EQ(monitor_.ejected, ejectTried ? QStringList{stick_} : QStringList{});
        EXPECT_FALSE(exporter.isRunning());
    }
}

TEST_F(MachineExportTest, TheExportWritesACopyAndLeavesTheDocumentAsItWas) {
    HMKDocument document(settings_);
    ASSERT_TRUE(document.readFromURL(fs::path(HEMLARK_SAMPLES_DIR) / "star.pcs"));
    const HMKDesign before = document.design();
    fs::create_directories(stick_.toStdString());
    HMKMachineExportRequest request;
    request.file = stick_.toStdString() + "/star.jef";
    request.volumeRoot = stick_.toStdString();
    request.volumeName = "STICK";
    HMKMachineExport exporter(&monitor_);
    const auto result = exporter.run(request, [&](const fs::path& file, HMKError* error) {
        return document.exportCopyToURL(file, error);
    });
    ASSERT_EQ(result.outcome, HMKMachineExportOutcome::exported) << result.alert.text.toStdString();
    HMKDesign written;
    EXPECT_TRUE(written.importDesignFromURL(request.file));
    EXPECT_EQ(document.design().designType(), before.designType());
    EXPECT_EQ(document.design().stitches(), before.stitches());
    EXPECT_EQ(document.fileURL(), fs::path(HEMLARK_SAMPLES_DIR) / "star.pcs");
}

TEST_F(MachineExportTest, TheModelRemembersTheMachineAndFollowsTheVolumes) {
    const HMKRemovableVolume fat = fakeStick("/media/a/FAT");
    HMKRemovableVolume readOnly = fakeStick("/media/a/LOCKED", "MS-DOS (FAT16)");
    readOnly.writable = false;
    monitor_.setVolumes({fat, fakeStick("/media/a/CAMERA", "exfat"), readOnly});
    {
        HMKMachineExportModel model(monitor_, settings_);
        EXPECT_EQ(model.machine().ident(), 0);
        model.selectMachine(5);
        EXPECT_EQ(model.fieldTexts().rootFolders, "EmbF5 ... EmbF16");
        ASSERT_EQ(model.rowCount(), 1);
        EXPECT_EQ(model.index(0, HMKMachineExportModel::textColumn).data().toString(),
                  "FAT\nMS-DOS (FAT32), 3.0 GB available of 8.0 GB");
        EXPECT_FALSE(model.index(0, HMKMachineExportModel::iconColumn).data().isValid());
    }
    EXPECT_EQ(settings_.value(HMKSettings::machineTag), 5);
    HMKMachineExportModel model(monitor_, settings_);
    EXPECT_EQ(model.machine().ident(), 5);
    monitor_.setVolumes({fakeStick("/media/a/B"), fat});
    EXPECT_EQ(model.rowCount(), 2);
    EXPECT_EQ(model.rowOfMountPath("/media/a/FAT"), 1);
    monitor_.setVolumes({fakeStick("/media/a/B")});
    EXPECT_EQ(model.rowOfMountPath("/media/a/FAT"), -1);
    monitor_.setVolumes({}, "The disk service is missing.");
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_EQ(model.emptyTableText(), "The disk service is missing.");
}
