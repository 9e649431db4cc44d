// "Export to Machine…": the export dialog, the machine's save dialog and the whole command,
// driven with mouse and keyboard against a fake volume monitor and a scratch "stick".
#include <fstream>

#include <QAbstractProxyModel>
#include <QCheckBox>
#include <QComboBox>
#include <QFileSystemModel>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <QToolButton>

#include "gui/export_dialog.h"
#include "gui/machine_export_flow.h"
#include "gui/machine_save_dialog.h"
#include "gui_test_support.h"
#include "platform/fake_volume_monitor.h"

namespace fs = std::filesystem;

namespace {

// A design whose stitches and threads add up to count.
HMKDesign designCounting(std::int32_t count) {
    HMKDesign design;
    design.stitches().assign(static_cast<std::size_t>(count - 1), HMKStitch(1, 1, false, false));
    design.stitches()[1].isColorChange = true;
    design.setThreads({HMKThread(), HMKThread()});
    return design;
}

void clickRow(QTableView* table, int row) {
    const QRect cell = table->visualRect(table->model()->index(row, 1));
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, cell.center());
}

// Types the name into the save dialog and presses Return.
void typeName(QFileDialog& dialog, const QString& name) {
    auto* edit = dialog.findChild<QLineEdit*>("fileNameEdit");
    ASSERT_TRUE(edit);
    edit->selectAll();
    QTest::keyClicks(edit, name);
    QTest::keyClick(edit, Qt::Key_Return);
}

class MachineExportGuiTest : public GuiTest {
protected:
    void SetUp() override {
        GuiTest::SetUp();
        stick_ = scratch_ / "STICK";
        stickPath_ = QString::fromStdString(stick_.string());
        fs::create_directories(stick_);
        dialogHooks().alert = [this](QWidget*, const HMKAlert& alert) {
            alerts_.push_back(alert.title);
            alertTexts_.append(alert.text);
            return HMKAlertAnswer{};
        };
    }

    fs::path stick_;
    QString stickPath_;
    FakeVolumeMonitor monitor_;
    QStringList alertTexts_;
};

}  // namespace

TEST_F(MachineExportGuiTest, TheDialogFollowsTheChosenMachineAndTheSticks) {
    monitor_.setVolumes({fakeStick("/media/a/ONE"), fakeStick("/media/a/CAMERA", "exfat")});
    const HMKDesign design = designCounting(100);
    HMKExportDialog dialog(monitor_, *settings_, design);
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    EXPECT_EQ(dialog.shownLimits().first(), "unlimited");
    EXPECT_TRUE(dialog.ejectBox()->isChecked());

    dialog.machineChooser()->setFocus();
    QTest::keyClick(dialog.machineChooser(), Qt::Key_Down);
    EXPECT_EQ(dialog.machine().ident(), 1);
    EXPECT_EQ(dialog.shownLimits(), (QStringList{"max. 64,000", "JEF", "EMB", "1", "max. 100"}));
    EXPECT_EQ(settings_->value(HMKSettings::machineTag), 1);

    QTableView* table = dialog.volumeTable();
    ASSERT_EQ(table->model()->rowCount(), 1);
    EXPECT_EQ(table->model()->index(0, 1).data().toString(),
              "ONE\nMS-DOS (FAT32), 3.0 GB available of 8.0 GB");
    EXPECT_FALSE(table->model()->index(0, 0).data().isValid());
    EXPECT_EQ(HMKExportDialog(monitor_, *settings_, design).machine().ident(), 1);
    EXPECT_FALSE(dialog.exportButton()->isEnabled());
    clickRow(table, 0);
    EXPECT_TRUE(dialog.exportButton()->isEnabled());
    // Another stick plugged in keeps the selection; pulling the selected one out removes it.
    monitor_.setVolumes({fakeStick("/media/a/ANOTHER"), fakeStick("/media/a/ONE")});
    ASSERT_TRUE(dialog.selectedVolume());
    EXPECT_EQ(dialog.selectedVolume()->mountPath, "/media/a/ONE");
    monitor_.setVolumes({fakeStick("/media/a/ANOTHER")});
    EXPECT_FALSE(dialog.selectedVolume());
    EXPECT_FALSE(dialog.exportButton()->isEnabled());
    EXPECT_FALSE(dialog.emptyTableLabel()->isVisible());
    monitor_.setVolumes({}, "The disk service is missing.");
    EXPECT_EQ(table->model()->rowCount(), 0);
    EXPECT_TRUE(dialog.emptyTableLabel()->isVisible());
    EXPECT_EQ(dialog.emptyTableLabel()->text(), "The disk service is missing.");
}

TEST_F(MachineExportGuiTest, ADesignOverTheStitchLimitIsRefusedAndTheDialogStays) {
    settings_->setValue(HMKSettings::machineTag, 1);
    monitor_.setVolumes({fakeStick(stickPath_)});
    for (const std::int32_t count : {64001, 64000}) {
        const HMKDesign design = designCounting(count);
        HMKExportDialog dialog(monitor_, *settings_, design);
        dialog.show();
        clickRow(dialog.volumeTable(), 0);
        QTest::mouseClick(dialog.exportButton(), Qt::LeftButton);
        EXPECT_EQ(dialog.result() == QDialog::Accepted, count == 64000) << count;
    }
    EXPECT_EQ(alerts_, std::vector<QString>{"Export Design"});
    EXPECT_EQ(alertTexts_, QStringList{"Too many stitches.\nmax. 64,000"});
}

TEST_F(MachineExportGuiTest, TheSaveDialogListsTheMachinesFoldersAndRefusesOtherNames) {
    for (const char* folder : {"EMB/EmbF", "Other"}) {
        fs::create_directories(stick_ / folder);
    }
    const HMKVolumeLayout layout(stick_, "STICK", *HMKMachine::fromIdent(1));
    HMKMachineSaveDialog dialog(layout, "rose");
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    EXPECT_EQ(dialog.directory().absolutePath(), stickPath_ + "/EMB/EmbF");
    EXPECT_TRUE(dialog.findChild<QToolButton*>("newFolderButton")->isEnabled());

    // Once the stick's root is read, of its two folders only the machine's is listed.
    dialog.setDirectory(stickPath_);
    auto* files = qobject_cast<QFileSystemModel*>(dialog.proxyModel()->sourceModel());
    ASSERT_TRUE(files);
    const QModelIndex root = files->index(stickPath_);
    ASSERT_TRUE(QTest::qWaitFor([&] { return files->rowCount(root) == 2; }));
    const QModelIndex shown = dialog.proxyModel()->mapFromSource(root);
    ASSERT_EQ(dialog.proxyModel()->rowCount(shown), 1);
    EXPECT_EQ(dialog.proxyModel()->index(0, 0, shown).data().toString(), "EMB");

    dialog.setDirectory(stickPath_ + "/EMB/EmbF");
    typeName(dialog, "rose.pes");
    EXPECT_NE(dialog.result(), QDialog::Accepted);
    ASSERT_EQ(alertTexts_.size(), 1);
    EXPECT_TRUE(alertTexts_.first().contains("only JEF files"));
    typeName(dialog, "rose");
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_EQ(dialog.selectedFiles(), QStringList{stickPath_ + "/EMB/EmbF/rose.jef"});

    // Machines that read no new folders get no "New Folder", but names are accepted as ever.
    const HMKVolumeLayout fixedFolders(stick_, "STICK", *HMKMachine::fromIdent(2));
    ASSERT_TRUE(fixedFolders.createDefaultFolder());
    HMKMachineSaveDialog noFolders(fixedFolders, "rose");
    noFolders.show();
    EXPECT_FALSE(noFolders.findChild<QToolButton*>("newFolderButton")->isEnabled());
    typeName(noFolders, "tulip");
    EXPECT_EQ(noFolders.selectedFiles(), QStringList{stickPath_ + "/EmbF5/tulip.jef"});
    EXPECT_EQ(noFolders.result(), QDialog::Accepted);
}

TEST_F(MachineExportGuiTest, ExportToMachineWritesTheCopyCleansAndEjects) {
    HMKDocumentWindow* window = openWindow("heart.jef");
    ASSERT_TRUE(window);
    QAction* command = window->action(HMKCommand::exportToMachine);
    EXPECT_TRUE(command->isVisible() && command->isEnabled());
    fs::create_directories(stick_ / ".fseventsd");
    settings_->setValue(HMKSettings::machineTag, 1);
    monitor_.setVolumes({fakeStick(stickPath_)});
    runDialog_ = [](QDialog& dialog) {
        if (auto* choice = qobject_cast<HMKExportDialog*>(&dialog)) {
            dialog.show();
            clickRow(choice->volumeTable(), 0);
            QTest::mouseClick(choice->exportButton(), Qt::LeftButton);
        } else if (auto* save = qobject_cast<HMKMachineSaveDialog*>(&dialog)) {
            save->show();
            typeName(*save, "rose");
        }
        return dialog.result();
    };
    exportToMachine(window, window->document(), *settings_, monitor_);
    ASSERT_TRUE(QTest::qWaitFor([this] { return !alerts_.empty(); }));
    EXPECT_EQ(alerts_, std::vector<QString>{"Design exported and drive ejected"});
    EXPECT_TRUE(fs::exists(stick_ / "EMB/EmbF/rose.jef"));
    EXPECT_FALSE(fs::exists(stick_ / ".fseventsd"));
    EXPECT_EQ(monitor_.ejected, QStringList{stickPath_});
    EXPECT_FALSE(window->document().isModified());

    // The menu command opens the same dialog.
    bool opened = false;
    runDialog_ = [&opened](QDialog& dialog) {
        opened = qobject_cast<HMKExportDialog*>(&dialog) != nullptr;
        return int(QDialog::Rejected);
    };
    command->trigger();
    EXPECT_TRUE(opened);
}
