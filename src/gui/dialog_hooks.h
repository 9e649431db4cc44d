// Every place where the application would wait for the user in a modal dialog goes through
// these hooks: alerts and questions, the unsaved-changes question, file choosers and the
// command dialogs. The application uses the real dialogs; tests replace a hook with a
// function that answers at once, so no test blocks in a nested event loop.
#pragma once

#include <functional>

#include <QColor>
#include <QDialog>
#include <QString>
#include <QStringList>

#include "document/document.h"

class QWidget;

// The answer to "Save changes before closing?".
enum class HMKSaveAnswer { save, discard, cancel };

struct HMKDialogHooks {
    // Shows an alert window-modally over parent (the document's alert handler).
    std::function<HMKAlertAnswer(QWidget* parent, const HMKAlert& alert)> alert;
    // Asks whether to save the named document's changes.
    std::function<HMKSaveAnswer(QWidget* parent, const QString& documentName)> askToSave;
    // Files to open; empty when cancelled.
    std::function<QStringList(QWidget* parent, const QString& folder, const QString& filter)>
        openFileNames;
    // Where to save; empty when cancelled.
    std::function<QString(QWidget* parent, const QString& suggestedPath, const QString& filter)>
        saveFileName;
    // A colour; invalid when cancelled.
    std::function<QColor(QWidget* parent, const QColor& initial, const QString& title)> color;
    // Runs a prepared dialog and returns its result (QDialog::Accepted or Rejected).
    std::function<int(QDialog& dialog)> runDialog;
};

// The process's hooks, set to the real dialogs at first use.
HMKDialogHooks& dialogHooks();

// An alert handler for a document that shows its alerts over parent through the hooks.
HMKAlertHandler alertHandlerFor(QWidget* parent);
