// What the GUI tests share: an offscreen QApplication with temporary settings and state
// folders, dialog hooks that answer at once and record what was asked, and a fixture that
// opens a copy of a sample in a shown document window.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <QString>

#include "gui/application_controller.h"
#include "gui/dialog_hooks.h"
#include "gui/document_window.h"

class GuiTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // A copy of samples/name in the scratch folder.
    QString sample(const std::string& name);
    // A shown, active window holding a copy of the sample, its design drawn.
    HMKDocumentWindow* openWindow(const std::string& name);
    // Makes the application anew on the same settings file (a restart).
    void restartApplication();

    std::filesystem::path scratch_;
    std::unique_ptr<HMKSettings> settings_;
    std::unique_ptr<HMKApplicationController> application_;
    // What the hooks were asked, and how they answer.
    std::vector<QString> alerts_;
    std::vector<QString> saveQuestions_;
    HMKSaveAnswer saveAnswer_ = HMKSaveAnswer::cancel;
    // Runs instead of a command dialog; returns the dialog's result.
    std::function<int(QDialog&)> runDialog_;
};
