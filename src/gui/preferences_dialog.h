// HMKPreferencesDialog: the preferences window. Every control edits one setting at once
// (there is no OK button), so open windows follow each change immediately; "Restore
// Defaults" forgets them all.
#pragma once

#include <functional>
#include <vector>

#include <QDialog>

#include "platform/settings.h"

class QCheckBox;
class QSpinBox;

class HMKPreferencesDialog : public QDialog {
    Q_OBJECT
public:
    explicit HMKPreferencesDialog(HMKSettings& settings, QWidget* parent = nullptr);

    // The check box of a boolean setting, for tests.
    QCheckBox* checkBoxFor(const HMKSettingKey<bool>& key) const;

private:
    QWidget* buildDisplayPage();
    QWidget* buildGeneralPage();
    QWidget* buildPlayerPage();
    // A spin box that edits an integer setting.
    QSpinBox* spinBoxFor(const HMKSettingKey<int>& key, int minimum, int maximum,
                         const QString& suffix, QWidget* page);
    // Shows the stored values in every control.
    void reload();

    HMKSettings& settings_;
    std::vector<std::pair<const HMKSettingKey<bool>*, QCheckBox*>> checkBoxes_;
    // Each control's way of showing the stored value again.
    std::vector<std::function<void()>> reloaders_;
    bool reloading_ = false;
};
