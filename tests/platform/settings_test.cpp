#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "model/units.h"
#include "model/user_defaults.h"
#include "platform/settings.h"

namespace {

class SettingsTest : public ::testing::Test {
protected:
    QString file() const { return folder_.filePath("hemlark.conf"); }
    QTemporaryDir folder_;
};

}  // namespace

TEST_F(SettingsTest, ValuesKeepTheirTypesAcrossInstances) {
    {
        HMKSettings settings(file());
        EXPECT_TRUE(settings.value(HMKSettings::showJumps));
        EXPECT_EQ(settings.value(HMKSettings::undoMemoryMegabytes), 512);
        settings.setValue(HMKSettings::showJumps, false);
        settings.setValue(HMKSettings::measurementUnit, HMKMeasurementUnit::fractionalInches);
        settings.setValue(HMKSettings::bastingLength, 2.5);
        settings.setValue(HMKSettings::backgroundColor, QColor(10, 20, 30, 40));
        settings.setValue(HMKSettings::recentFiles, QStringList{"/a.dst", "/b, c.pes"});
    }
    HMKSettings settings(file());
    EXPECT_FALSE(settings.value(HMKSettings::showJumps));
    EXPECT_EQ(settings.value(HMKSettings::measurementUnit), HMKMeasurementUnit::fractionalInches);
    EXPECT_EQ(settings.value(HMKSettings::bastingLength), 2.5);
    EXPECT_EQ(settings.value(HMKSettings::backgroundColor), QColor(10, 20, 30, 40));
    EXPECT_EQ(settings.value(HMKSettings::recentFiles), (QStringList{"/a.dst", "/b, c.pes"}));
}

TEST_F(SettingsTest, UnreadableValuesFallBackToTheDefaults) {
    {
        QSettings raw(file(), QSettings::IniFormat);
        for (const char* key : {"ShowGrid", "StitchSpeed", "BackgroundColor", "BastingDistance"}) {
            raw.setValue(key, "perhaps");
        }
    }
    HMKSettings settings(file());
    EXPECT_EQ(settings.value(HMKSettings::showGrid), HMKSettings::showGrid.defaultValue);
    EXPECT_EQ(settings.value(HMKSettings::stitchSpeed), HMKSettings::stitchSpeed.defaultValue);
    EXPECT_EQ(settings.value(HMKSettings::backgroundColor),
              HMKSettings::backgroundColor.defaultValue);
    EXPECT_EQ(settings.value(HMKSettings::bastingDistance),
              HMKSettings::bastingDistance.defaultValue);
}

TEST_F(SettingsTest, ChangedIsSignalledOncePerRealChange) {
    HMKSettings settings(file());
    QStringList changes;
    QObject::connect(&settings, &HMKSettings::changed,
                     [&changes](const QString& key) { changes.append(key); });
    settings.setValue(HMKSettings::machineTag, 3);
    settings.setValue(HMKSettings::machineTag, 3);
    settings.setValue(HMKSettings::soundMuted, true);
    EXPECT_EQ(changes, (QStringList{"MachineTag", "SoundMuted"}));
    changes.clear();
    settings.resetAll();
    changes.sort();
    EXPECT_EQ(changes, (QStringList{"MachineTag", "SoundMuted"}));
    EXPECT_EQ(settings.value(HMKSettings::machineTag), 0);
}

TEST_F(SettingsTest, TheModelReadsThemAsUserDefaults) {
    HMKSettings settings(file());
    installSettingsAsUserDefaults(settings);
    HMKUserDefaults& defaults = HMKUserDefaults::standard();
    EXPECT_EQ(defaults.integerForKey("ShowJumps"), 1);
    EXPECT_EQ(defaults.doubleForKey("BastingLength"), 4.0);
    EXPECT_EQ(defaults.integerForKey("NoSuchKey"), std::nullopt);

    settings.setValue(HMKSettings::measurementUnit, HMKMeasurementUnit::decimalInches);
    EXPECT_EQ(HMKValueTransformer::currentUnit(), HMKMeasurementUnit::decimalInches);
    defaults.setDouble(7.5, "BastingDistance");
    defaults.setString("x", "Other");
    EXPECT_EQ(settings.value(HMKSettings::bastingDistance), 7.5);
    EXPECT_EQ(defaults.stringForKey("Other"), "x");
    HMKUserDefaults::install(makeMemoryUserDefaults());
}
