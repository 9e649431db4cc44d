// HMKDocumentWindow: the main window of one open document. It holds the design canvas in
// the middle, the information panel and the thread list in docks at the side, the menus and
// toolbar made from its action registry, and a status bar with the pointer position and the
// zoom. It connects every action to the document and enables each only when it can act.
#pragma once

#include <memory>

#include <QMainWindow>

#include "document/document.h"
#include "gui/action_registry.h"
#include "platform/settings.h"

class HMKApplicationController;
class HMKDesignCanvas;
class HMKInformationPanel;
class HMKPlayerPanel;
class QDockWidget;
class QPagedPaintDevice;
class HMKThreadListView;
class QLabel;
class QMenu;

class HMKDocumentWindow : public QMainWindow {
    Q_OBJECT
public:
    HMKDocumentWindow(HMKApplicationController& application, HMKSettings& settings,
                      QWidget* parent = nullptr);
    ~HMKDocumentWindow() override;

    HMKDocument& document() { return *document_; }
    HMKActionRegistry& actions() { return *actions_; }
    QAction* action(HMKCommand command) const { return actions_->action(command); }
    HMKDesignCanvas& canvas() { return *canvas_; }
    HMKThreadListView& threadList() { return *threadList_; }
    HMKInformationPanel& informationPanel() { return *information_; }
    HMKPlayerPanel& playerPanel() { return *player_; }
    // The window shows no design and has no unsaved edits (a new file may replace it).
    bool isEmptyAndUnchanged() const;

    // --- Files ---------------------------------------------------------------------------
    // Reads a file into this window's document; shows the failure and returns false.
    bool openFile(const QString& path);
    bool save();
    bool saveAs();
    // Asks to save unsaved edits; false when the user cancelled (the window stays).
    bool maybeSave();

    // --- Printing --------------------------------------------------------------------------
    // Paints the printout the print options choose onto the device (a printer or PDF).
    bool printTo(QPagedPaintDevice& device);

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void buildMenus();
    void buildPlayer();
    void buildToolBar();
    void buildDocks();
    void buildStatusBar();
    void connectActions();
    void updateActions();
    void updateTitle();
    void fillRecentMenu(QMenu* menu);
    void fillHoopMenu(QMenu* menu);
    void fillPaletteMenu(QMenu* menu);
    void showError(const QString& title, const HMKError& error);
    void rotateFree();
    void resizeSelection();
    void moveSelection();
    void addBasting();
    void chooseBackground();
    void print();
    void printPreview();
    void exportPdf();

    HMKApplicationController& application_;
    HMKSettings& settings_;
    std::unique_ptr<HMKDocument> document_;
    HMKActionRegistry* actions_ = nullptr;
    HMKDesignCanvas* canvas_ = nullptr;
    HMKThreadListView* threadList_ = nullptr;
    HMKInformationPanel* information_ = nullptr;
    QLabel* positionLabel_ = nullptr;
    QLabel* zoomLabel_ = nullptr;
    HMKPlayerPanel* player_ = nullptr;
    QDockWidget* playerDock_ = nullptr;
};
