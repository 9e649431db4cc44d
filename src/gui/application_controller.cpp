#include "gui/application_controller.h"

#include <algorithm>

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QMimeData>
#include <QUrl>

#include "document/recovery.h"
#include "formats/format_extensions.h"
#include "gui/design_canvas.h"
#include "gui/dialog_hooks.h"
#include "gui/document_window.h"
#include "gui/preferences_dialog.h"

namespace {

constexpr int kMaximumRecentFiles = 10;
constexpr char kArchiveExtension[] = "hemlark";

QStringList readableExtensions() {
    QStringList extensions;
    for (const std::string& extension : importableExtensions()) {
        extensions.append(QString::fromStdString(extension));
    }
    extensions.append(QString::fromLatin1(kArchiveExtension));
    return extensions;
}

QString patterns(const QStringList& extensions) {
    QStringList result;
    for (const QString& extension : extensions) {
        result.append(QStringLiteral("*.") + extension);
        result.append(QStringLiteral("*.") + extension.toUpper());
    }
    return result.join(QLatin1Char(' '));
}

}  // namespace

HMKApplicationController::HMKApplicationController(HMKSettings& settings, QObject* parent)
    : QObject(parent), settings_(settings) {}

HMKApplicationController::~HMKApplicationController() {
    delete preferences_;
    // Windows left open (a test, a session end) go without asking; their documents keep
    // their recovery files.
    QList<QPointer<HMKDocumentWindow>> all;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* window = qobject_cast<HMKDocumentWindow*>(widget)) {
            all.append(window);
        }
    }
    for (const QPointer<HMKDocumentWindow>& window : all) {
        delete window.data();
    }
}

void HMKApplicationController::start(const QStringList& files) {
    const bool restored = offerRecovery();
    if (!files.isEmpty()) {
        openFiles(files);
    }
    if (windows().isEmpty()) {
        HMKDocumentWindow* window = newWindow();
        if (!restored && files.isEmpty() && !settings_.value(HMKSettings::skipOpenDialog)) {
            showOpenDialog(window);
        }
    }
}

bool HMKApplicationController::offerRecovery() {
    const std::vector<HMKRecoveryEntry> entries = HMKRecoveryStore::pendingRecoveries();
    if (entries.empty()) {
        return false;
    }
    QStringList names;
    for (const HMKRecoveryEntry& entry : entries) {
        names.append(QStringLiteral("\u2022 %1 (%2)")
                         .arg(entry.displayName(), QLocale().toString(entry.savedAt.toLocalTime(),
                                                                      QLocale::ShortFormat)));
    }
    const HMKAlertAnswer answer = dialogHooks().alert(
        nullptr, HMKAlert::question(tr("Restore Unsaved Designs?"),
                                    tr("Hemlark ended without saving these designs:\n%1\n\n"
                                       "Restore them, or throw the changes away?")
                                        .arg(names.join(QLatin1Char('\n'))),
                                    HMKAlertStyle::informational, tr("Restore"), tr("Discard")));
    if (!answer.confirmed) {
        for (const HMKRecoveryEntry& entry : entries) {
            HMKRecoveryStore::discard(entry);
        }
        return false;
    }
    bool restored = false;
    for (const HMKRecoveryEntry& entry : entries) {
        HMKDocumentWindow* window = newWindow();
        HMKError error;
        // A restored view state replaces the fit.
        window->canvas().fitWhenShown();
        if (window->document().restoreRecovery(entry, &error)) {
            restored = true;
        } else {
            dialogHooks().alert(window, HMKAlert::message(tr("The design could not be restored."),
                                                          QString::fromStdString(error.message())));
            window->close();
        }
    }
    return restored;
}

QList<HMKDocumentWindow*> HMKApplicationController::windows() const {
    QList<HMKDocumentWindow*> result;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        // A closed window lingers until the event loop deletes it.
        auto* window = qobject_cast<HMKDocumentWindow*>(widget);
        if (window && window->isVisible()) {
            result.append(window);
        }
    }
    return result;
}

HMKDocumentWindow* HMKApplicationController::newWindow() {
    auto* window = new HMKDocumentWindow(*this, settings_);
    // Cascade new windows a little, so that they don't hide each other.
    if (const QList<HMKDocumentWindow*> others = windows(); others.size() > 1) {
        window->move(others.at(others.size() - 2)->pos() + QPoint(32, 32));
    }
    window->show();
    return window;
}

void HMKApplicationController::openFiles(const QStringList& files, HMKDocumentWindow* origin) {
    for (const QString& file : files) {
        const QString absolute = QFileInfo(file).absoluteFilePath();
        HMKDocumentWindow* target = nullptr;
        for (HMKDocumentWindow* window : windows()) {
            if (QString::fromStdString(window->document().fileURL().string()) == absolute) {
                target = window;
                break;
            }
        }
        if (target) {
            target->raise();
            target->activateWindow();
            continue;
        }
        if (origin && origin->isEmptyAndUnchanged()) {
            target = origin;
        } else {
            for (HMKDocumentWindow* window : windows()) {
                if (window->isEmptyAndUnchanged()) {
                    target = window;
                    break;
                }
            }
        }
        const bool fresh = !target;
        if (fresh) {
            target = newWindow();
        }
        if (!target->openFile(absolute) && fresh) {
            target->close();
        }
    }
}

void HMKApplicationController::showOpenDialog(QWidget* parent) {
    QString folder;
    if (const QStringList recent = recentFiles(); !recent.isEmpty()) {
        folder = QFileInfo(recent.first()).absolutePath();
    }
    const QStringList files = dialogHooks().openFileNames(parent, folder, openFilter());
    openFiles(files, qobject_cast<HMKDocumentWindow*>(parent));
}

bool HMKApplicationController::quit() {
    for (HMKDocumentWindow* window : windows()) {
        if (!window->close()) {
            return false;
        }
    }
    return true;
}

QString HMKApplicationController::openFilter() const {
    return tr("Embroidery designs (%1)").arg(patterns(readableExtensions())) +
           QStringLiteral(";;") + tr("All files (*)");
}

QString HMKApplicationController::saveFilter() const {
    QStringList filters;
    for (const std::string& extension : exportableExtensions()) {
        const QString name = QString::fromStdString(extension);
        filters.append(tr("%1 design (*.%2)").arg(name.toUpper(), name));
    }
    // PES first: it keeps the most of a design.
    std::stable_partition(filters.begin(), filters.end(),
                          [](const QString& filter) { return filter.startsWith("PES"); });
    return filters.join(QStringLiteral(";;"));
}

QStringList HMKApplicationController::designFiles(const QMimeData* data) {
    QStringList files;
    if (!data || !data->hasUrls()) {
        return files;
    }
    const QStringList extensions = readableExtensions();
    for (const QUrl& url : data->urls()) {
        const QString file = url.toLocalFile();
        if (!file.isEmpty() && extensions.contains(QFileInfo(file).suffix().toLower())) {
            files.append(file);
        }
    }
    return files;
}

QStringList HMKApplicationController::recentFiles() const {
    return settings_.value(HMKSettings::recentFiles);
}

void HMKApplicationController::addRecentFile(const QString& path) {
    QStringList files = recentFiles();
    const QString absolute = QFileInfo(path).absoluteFilePath();
    files.removeAll(absolute);
    files.prepend(absolute);
    while (files.size() > kMaximumRecentFiles) {
        files.removeLast();
    }
    settings_.setValue(HMKSettings::recentFiles, files);
}

void HMKApplicationController::clearRecentFiles() {
    settings_.reset(HMKSettings::recentFiles);
}

HMKPreferencesDialog* HMKApplicationController::showPreferences() {
    if (!preferences_) {
        preferences_ = new HMKPreferencesDialog(settings_);
    }
    preferences_->show();
    preferences_->raise();
    preferences_->activateWindow();
    return preferences_;
}

void HMKApplicationController::showAbout(QWidget* parent) {
    QMessageBox box(parent);
    box.setWindowTitle(tr("About Hemlark"));
    box.setIconPixmap(
        QIcon::fromTheme(QStringLiteral("hemlark"), QApplication::windowIcon()).pixmap(64, 64));
    box.setText(tr("<h3>Hemlark %1</h3>").arg(QApplication::applicationVersion()));
    box.setInformativeText(
        tr("Opens, edits and converts machine embroidery designs.<br><br>"
           "Free software under the GNU General Public License. Updates come from your "
           "distribution's package manager."));
    box.setStandardButtons(QMessageBox::Close);
    dialogHooks().runDialog(box);
}
