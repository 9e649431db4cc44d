// The machine export job without a disk service: the message for each way it can end, and the
// copy it writes, with a fake volume monitor doing the eject.
#include <gtest/gtest.h>

#include <fstream>
#include <memory>

#include <QGuiApplication>
#include <QTemporaryDir>

#include "document/machine_export.h"
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

class MachineExportTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(folder_.isValid()); }

    QTemporaryDir folder_;
    const QString stick_ = folder_.filePath("STICK");
    FakeVolumeMonitor monitor_;
    HMKSettings settings_{folder_.filePath("hemlark.conf")};
};

}  // namespace

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
