// The application as a whole: preferences that persist, and closing an edited window.
#include <QApplication>
#include <QCheckBox>
#include <QTest>

#include "gui/preferences_dialog.h"
#include "gui_test_support.h"

TEST_F(GuiTest, PreferencesPersistAcrossARestartAndApplyAtOnce) {
    HMKDocumentWindow* window = openWindow("star.pes");
    ASSERT_TRUE(window);
    HMKPreferencesDialog* preferences = application_->showPreferences();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(preferences));
    const std::vector<const HMKSettingKey<bool>*> keys = {
        &HMKSettings::showGrid, &HMKSettings::showJumps, &HMKSettings::soundMuted};
    std::vector<bool> expected;
    for (const HMKSettingKey<bool>* key : keys) {
        QCheckBox* box = preferences->checkBoxFor(*key);
        ASSERT_TRUE(box);
        box->setFocus();
        // Space toggles a focused check box, as a mouse click would.
        QTest::keyClick(box, Qt::Key_Space);
        expected.push_back(!key->defaultValue);
    }
    // The open window follows at once.
    EXPECT_TRUE(window->action(HMKCommand::showGrid)->isChecked());
    EXPECT_FALSE(window->action(HMKCommand::showJumps)->isChecked());

    restartApplication();
    preferences = application_->showPreferences();
    for (std::size_t i = 0; i < keys.size(); ++i) {
        EXPECT_EQ(preferences->checkBoxFor(*keys[i])->isChecked(), expected[i]) << keys[i]->name;
    }
}

TEST_F(GuiTest, ClosingAnEditedWindowAsksToSave) {
    HMKDocumentWindow* window = openWindow("star.pes");
    ASSERT_TRUE(window);
    window->close();
    EXPECT_TRUE(saveQuestions_.empty()) << "an unedited window closes without asking";

    window = openWindow("star.pes");
    window->document().selectAll();
    window->document().flipH();
    saveAnswer_ = HMKSaveAnswer::cancel;
    EXPECT_FALSE(window->close());
    ASSERT_EQ(saveQuestions_.size(), 1u);
    EXPECT_EQ(saveQuestions_.front(), "star.pes");
    saveAnswer_ = HMKSaveAnswer::discard;
    EXPECT_TRUE(window->close());
}
