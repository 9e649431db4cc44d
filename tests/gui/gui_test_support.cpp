#include "gui_test_support.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QTest>

#include "document/recovery.h"
#include "gui/design_canvas.h"

namespace {

class GuiEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        qputenv("XDG_STATE_HOME", QByteArray(home_.filePath("state").toUtf8()));
        qputenv("XDG_CONFIG_HOME", QByteArray(home_.filePath("config").toUtf8()));
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
            qputenv("QT_QPA_PLATFORM", "offscreen");
        }
        application_ = std::make_unique<QApplication>(argc_, argv_);
    }
    void TearDown() override { application_.reset(); }

private:
    QTemporaryDir home_;
    int argc_ = 1;
    char name_[16] = "gui_tests";
    char* argv_[2] = {name_, nullptr};
    std::unique_ptr<QApplication> application_;
};

[[maybe_unused]] const auto* const environment =
    ::testing::AddGlobalTestEnvironment(new GuiEnvironment);

}  // namespace

void GuiTest::SetUp() {
    scratch_ = std::filesystem::temp_directory_path() /
               ("hemlark-gui-tests-" + std::to_string(QCoreApplication::applicationPid()));
    std::filesystem::remove_all(scratch_);
    std::filesystem::remove_all(HMKRecoveryStore::folder());
    std::filesystem::create_directories(scratch_);
    settings_ =
        std::make_unique<HMKSettings>(QString::fromStdString((scratch_ / "hemlark.conf").string()));
    // The save warning would need an answer after every save.
    settings_->setValue(HMKSettings::alertWriteToURL, true);
    HMKDialogHooks& hooks = dialogHooks();
    hooks.alert = [this](QWidget*, const HMKAlert& alert) {
        alerts_.push_back(alert.title);
        return HMKAlertAnswer{};
    };
    hooks.askToSave = [this](QWidget*, const QString& name) {
        saveQuestions_.push_back(name);
        return saveAnswer_;
    };
    hooks.openFileNames = [](QWidget*, const QString&, const QString&) { return QStringList(); };
    hooks.saveFileName = [](QWidget*, const QString&, const QString&) { return QString(); };
    hooks.color = [](QWidget*, const QColor&, const QString&) { return QColor(); };
    hooks.runDialog = [this](QDialog& dialog) {
        return runDialog_ ? runDialog_(dialog) : int(QDialog::Rejected);
    };
    application_ = std::make_unique<HMKApplicationController>(*settings_);
}

void GuiTest::TearDown() {
    application_.reset();
    settings_.reset();
    std::filesystem::remove_all(scratch_);
    std::filesystem::remove_all(HMKRecoveryStore::folder());
}

QString GuiTest::sample(const std::string& name) {
    const std::filesystem::path copy = scratch_ / name;
    std::filesystem::copy_file(std::filesystem::path(HEMLARK_SAMPLES_DIR) / name, copy,
                               std::filesystem::copy_options::overwrite_existing);
    return QString::fromStdString(copy.string());
}

HMKDocumentWindow* GuiTest::openWindow(const std::string& name) {
    application_->openFiles({sample(name)});
    const QList<HMKDocumentWindow*> windows = application_->windows();
    if (windows.isEmpty()) {
        ADD_FAILURE() << "no window for " << name;
        return nullptr;
    }
    HMKDocumentWindow* window = windows.last();
    QApplication::setActiveWindow(window);
    EXPECT_TRUE(QTest::qWaitForWindowExposed(window));
    window->canvas().waitForImage();
    return window;
}

void GuiTest::restartApplication() {
    const QString file = settings_->fileName();
    application_.reset();
    settings_->sync();
    settings_ = std::make_unique<HMKSettings>(file);
    application_ = std::make_unique<HMKApplicationController>(*settings_);
}
