#include "gui/dialog_hooks.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QFileDialog>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>

namespace {

HMKAlertAnswer showAlert(QWidget* parent, const HMKAlert& alert) {
    QMessageBox box(
        alert.style == HMKAlertStyle::warning ? QMessageBox::Warning : QMessageBox::Information,
        alert.title, alert.title, QMessageBox::NoButton, parent);
    box.setWindowModality(Qt::WindowModal);
    box.setInformativeText(alert.text);
    QAbstractButton* confirm = nullptr;
    if (alert.confirmButton.isEmpty()) {
        box.addButton(QMessageBox::Ok);
    } else {
        confirm = box.addButton(alert.confirmButton, QMessageBox::AcceptRole);
        box.addButton(alert.cancelButton, QMessageBox::RejectRole);
    }
    if (alert.offersSuppression) {
        box.setCheckBox(new QCheckBox(QObject::tr("Do not show this message again"), &box));
    }
    box.exec();
    HMKAlertAnswer answer;
    answer.confirmed = !confirm || box.clickedButton() == confirm;
    answer.suppressed = box.checkBox() && box.checkBox()->isChecked();
    return answer;
}

HMKSaveAnswer askToSave(QWidget* parent, const QString& documentName) {
    QMessageBox box(
        QMessageBox::Warning, QObject::tr("Save Changes"),
        QObject::tr("Save the changes to \u201C%1\u201D before closing?").arg(documentName),
        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, parent);
    box.setInformativeText(QObject::tr("Your changes are lost if you don't save them."));
    box.setDefaultButton(QMessageBox::Save);
    box.setWindowModality(Qt::WindowModal);
    switch (box.exec()) {
        case QMessageBox::Save:
            return HMKSaveAnswer::save;
        case QMessageBox::Discard:
            return HMKSaveAnswer::discard;
        default:
            return HMKSaveAnswer::cancel;
    }
}

HMKDialogHooks makeRealHooks() {
    HMKDialogHooks hooks;
    hooks.alert = showAlert;
    hooks.askToSave = askToSave;
    hooks.openFileNames = [](QWidget* parent, const QString& folder, const QString& filter) {
        return QFileDialog::getOpenFileNames(parent, QObject::tr("Open Design"), folder, filter);
    };
    hooks.saveFileName = [](QWidget* parent, const QString& suggested, const QString& filter) {
        return QFileDialog::getSaveFileName(parent, QObject::tr("Save Design"), suggested, filter);
    };
    hooks.color = [](QWidget* parent, const QColor& initial, const QString& title) {
        return QColorDialog::getColor(initial, parent, title);
    };
    hooks.runDialog = [](QDialog& dialog) { return dialog.exec(); };
    return hooks;
}

}  // namespace

HMKDialogHooks& dialogHooks() {
    static HMKDialogHooks hooks = makeRealHooks();
    return hooks;
}

HMKAlertHandler alertHandlerFor(QWidget* parent) {
    QPointer<QWidget> guarded(parent);
    return [guarded](const HMKAlert& alert) { return dialogHooks().alert(guarded, alert); };
}
