// HMKApplicationController: the application as a whole. It opens files into document
// windows (one window per document, reusing an empty one), offers to restore the designs of
// a session that ended without saving, keeps the recent files, shows the open dialog, the
// preferences and the About box, and quits after every window agreed to close.
#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>

#include "platform/settings.h"

class HMKDocumentWindow;
class HMKPreferencesDialog;
class QMimeData;
class QWidget;

class HMKApplicationController : public QObject {
    Q_OBJECT
public:
    explicit HMKApplicationController(HMKSettings& settings, QObject* parent = nullptr);
    ~HMKApplicationController() override;

    // --- Start --------------------------------------------------------------------------------
    // Offers pending recovery files, opens the files given, and without any shows a window and
    // (unless "SkipOpenDialog") the open dialog.
    void start(const QStringList& files);
    // Offers to restore the recovery files of an earlier session; true when any was restored.
    bool offerRecovery();

    // --- Windows and files --------------------------------------------------------------------
    QList<HMKDocumentWindow*> windows() const;
    // A new empty window, shown.
    HMKDocumentWindow* newWindow();
    // Opens each file in a window of its own; a file already open raises its window, and an
    // empty unchanged window (origin, if given, first) takes the first file.
    void openFiles(const QStringList& files, HMKDocumentWindow* origin = nullptr);
    void showOpenDialog(QWidget* parent);
    // Closes every window, each asking to save; stops at the first one the user keeps.
    bool quit();

    // The open dialog's filter (every readable format) and the save dialog's.
    QString openFilter() const;
    QString saveFilter() const;
    // The local design files in dragged data.
    static QStringList designFiles(const QMimeData* data);

    // --- Recent files -------------------------------------------------------------------------
    QStringList recentFiles() const;
    void addRecentFile(const QString& path);
    void clearRecentFiles();

    // --- Other windows ------------------------------------------------------------------------
    HMKPreferencesDialog* showPreferences();
    void showAbout(QWidget* parent);

private:
    HMKSettings& settings_;
    QPointer<HMKPreferencesDialog> preferences_;
};
