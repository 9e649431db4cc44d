// The Hemlark desktop application: `hemlark-gui [FILE...]` opens the files given, each in a
// window of its own. `--screenshot PNG` draws the first window into a picture once its design
// is drawn, and quits (used for the documentation).
#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>
#include <QStandardPaths>
#include <QThreadPool>
#include <QTimer>

#include "gui/application_controller.h"
#include "gui/design_canvas.h"
#include "gui/document_window.h"
#include "platform/settings.h"

namespace {

// Without a desktop session (offscreen, a bare window manager) Qt knows no icon theme.
void ensureIconTheme() {
    QStringList paths = QIcon::themeSearchPaths();
    for (const QString& folder :
         QStandardPaths::locateAll(QStandardPaths::GenericDataLocation, QStringLiteral("icons"),
                                   QStandardPaths::LocateDirectory)) {
        if (!paths.contains(folder)) {
            paths.append(folder);
        }
    }
    QIcon::setThemeSearchPaths(paths);
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == QLatin1String("hicolor")) {
        QIcon::setThemeName(QStringLiteral("Adwaita"));
    }
    QIcon::setFallbackThemeName(QStringLiteral("hicolor"));
}

int saveScreenshot(HMKApplicationController& controller, const QString& path) {
    const QList<HMKDocumentWindow*> windows = controller.windows();
    if (windows.isEmpty()) {
        return 1;
    }
    HMKDocumentWindow* window = windows.first();
    // The offscreen screen is small; show the window at its usual desktop size.
    window->resize(1200, 760);
    QCoreApplication::processEvents();
    window->canvas().waitForImage();
    // Let the side pictures (drawn in the background) arrive.
    for (int round = 0; round < 20; ++round) {
        QThreadPool::globalInstance()->waitForDone();
        QCoreApplication::processEvents();
    }
    window->canvas().waitForImage();
    // Quality 0 asks for the strongest compression: the picture goes into the repository.
    return window->grab().save(path, "PNG", 0) ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Hemlark"));
    QApplication::setApplicationVersion(QStringLiteral(HEMLARK_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("hemlark"));
    ensureIconTheme();
    HMKSettings& settings = HMKSettings::shared();
    installSettingsAsUserDefaults(settings);

    QCommandLineParser parser;
    parser.setApplicationDescription(QApplication::translate("main", "Embroidery design editor"));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("files"),
                                 QApplication::translate("main", "Designs to open."),
                                 QStringLiteral("[FILE...]"));
    const QCommandLineOption screenshot(
        QStringLiteral("screenshot"),
        QApplication::translate("main", "Save a picture of the first window and quit."),
        QStringLiteral("PNG"));
    parser.addOption(screenshot);
    parser.process(application);

    HMKApplicationController controller(settings);
    if (parser.isSet(screenshot)) {
        controller.openFiles(parser.positionalArguments());
        return saveScreenshot(controller, parser.value(screenshot));
    }
    controller.start(parser.positionalArguments());
    return QApplication::exec();
}
