// The user's settings, stored with QSettings in ~/.config/hemlark/hemlark.conf. Everything that
// remembers a choice (the desktop application, its preferences window, the documents) goes
// through this one typed wrapper: each setting is a key object below, named once with its
// default, read with value() and written with setValue(). The model reads the same settings
// through HMKUserDefaults once installSettingsAsUserDefaults() has run.
//
//     HMKSettings& settings = HMKSettings::shared();
//     if (settings.value(HMKSettings::showJumps)) ...
//     settings.setValue(HMKSettings::measurementUnit, HMKMeasurementUnit::decimalInches);
//     connect(&settings, &HMKSettings::changed, view, [](const QString& key) { ... });
#pragma once

#include <mutex>
#include <type_traits>
#include <utility>
#include <vector>

#include <QColor>
#include <QObject>
#include <QSettings>
#include <QString>
#include <QStringList>
#include <QVariant>

#include "model/sewing_time.h"
#include "model/units.h"
#include "platform/printout.h"

// One setting: the key it is stored under and the value used while none is stored.
template <typename T>
struct HMKSettingKey {
    const char* name;
    T defaultValue;
};

class HMKSettings : public QObject {
    Q_OBJECT
public:
    // --- Display switches of the design view --------------------------------------------
    inline static const HMKSettingKey<bool> showJumps{"ShowJumps", true};
    inline static const HMKSettingKey<bool> showGrid{"ShowGrid", false};
    inline static const HMKSettingKey<bool> showCenter{"ShowCenter", true};
    inline static const HMKSettingKey<bool> showHoop{"ShowHoop", true};
    inline static const HMKSettingKey<bool> showFirst{"ShowFirst", true};
    inline static const HMKSettingKey<bool> showLast{"ShowLast", true};
    inline static const HMKSettingKey<bool> showStructure{"ShowStructure", false};
    // Flat drawing instead of the shaded thread.
    inline static const HMKSettingKey<bool> drawFastMode{"DrawFastMode", false};
    inline static const HMKSettingKey<QColor> backgroundColor{"BackgroundColor",
                                                              QColor(255, 255, 255)};
    inline static const HMKSettingKey<bool> showRulers{"ShowRulers", false};

    // --- Print switches ------------------------------------------------------------------
    inline static const HMKSettingKey<bool> printJumps{"PrintJumps", false};
    inline static const HMKSettingKey<bool> printGrid{"PrintGrid", false};
    inline static const HMKSettingKey<bool> printCenter{"PrintCenter", true};
    inline static const HMKSettingKey<bool> printHoop{"PrintHoop", true};
    inline static const HMKSettingKey<bool> printFirst{"PrintFirst", true};
    inline static const HMKSettingKey<bool> printLast{"PrintLast", true};
    inline static const HMKSettingKey<bool> printStructure{"PrintStructure", false};
    inline static const HMKSettingKey<bool> printFastMode{"PrintFastMode", false};
    // Print at 1:1 as a placement template.
    inline static const HMKSettingKey<bool> printTemplate{"PrintTemplate", false};

    // --- Units, player and start-up ------------------------------------------------------
    inline static const HMKSettingKey<HMKMeasurementUnit> measurementUnit{
        "MeasurementUnit", HMKMeasurementUnit::millimetres};
    // Stitches per second of the stitch-out player.
    inline static const HMKSettingKey<int> stitchSpeed{"StitchSpeed", 100};
    inline static const HMKSettingKey<bool> soundMuted{"SoundMuted", false};
    // The embroidery machine's speed in stitches per minute, for the sewing-time estimate.
    inline static const HMKSettingKey<int> machineSpeed{"MachineSpeed", 700};
    inline static const HMKSettingKey<bool> skipOpenDialog{"SkipOpenDialog", false};
    // Kept for the settings file's sake: on Linux updates come from the package manager.
    inline static const HMKSettingKey<bool> checkForUpdates{"CheckForUpdates", false};
    // Most recently opened files first.
    inline static const HMKSettingKey<QStringList> recentFiles{"RecentFiles", {}};

    // --- Documents -----------------------------------------------------------------------
    // Palette applied to opened designs without a thread side file: 0 none, i the i-th
    // palette of HMKColorList::shippedPaletteNames() counted from 1.
    inline static const HMKSettingKey<int> defaultThreads{"DefaultThreads", 0};
    // The "check hoop size" warning after saving was turned off.
    inline static const HMKSettingKey<bool> alertWriteToURL{"AlertWriteToURL", false};
    // Last values of the basting dialog, in millimetres.
    inline static const HMKSettingKey<double> bastingLength{"BastingLength", 4.0};
    inline static const HMKSettingKey<double> bastingDistance{"BastingDistance", 3.0};
    // Memory the undo history of one document may hold; the oldest steps go first.
    inline static const HMKSettingKey<int> undoMemoryMegabytes{"UndoMemoryMegabytes", 512};

    // --- Machine export ------------------------------------------------------------------
    // The machine profile ident last chosen for exporting (see HMKMachine).
    inline static const HMKSettingKey<int> machineTag{"MachineTag", 0};

    // --- Where the settings live -----------------------------------------------------------
    // The user's settings file (~/.config/hemlark/hemlark.conf, following XDG_CONFIG_HOME).
    explicit HMKSettings(QObject* parent = nullptr);
    // Settings kept in the given INI file instead (tests, portable set-ups).
    explicit HMKSettings(const QString& fileName, QObject* parent = nullptr);
    // The process's one instance on the user's file, made on first use; every window
    // listens to it so that a change applies everywhere at once.
    static HMKSettings& shared();
    QString fileName() const;

    // --- Reading and writing ---------------------------------------------------------------
    // The stored value, or the key's default when none is stored or it cannot be read.
    template <typename T>
    T value(const HMKSettingKey<T>& key) const {
        return fromVariant(storedValue(key.name), key.defaultValue);
    }
    // Stores the value; emits changed() when it differs from what was stored.
    template <typename T>
    void setValue(const HMKSettingKey<T>& key, const T& value) {
        storeValue(key.name, toVariant(value));
    }
    // Forgets the stored value, so the default applies again.
    template <typename T>
    void reset(const HMKSettingKey<T>& key) {
        storeValue(key.name, QVariant());
    }
    // The sewing-time estimate's settings, with the machine speed above.
    HMKSewingTimeSettings sewingTimeSettings() const;
    // The print switches, unit and machine speed as the printouts take them.
    HMKPrintOptions printOptions() const;
    // Forgets every setting above (the preferences window's "Restore Defaults").
    void resetAll();
    // Writes pending changes to the file now (QSettings otherwise writes them a little later).
    void sync();

    // --- By name (for HMKUserDefaults, whose callers know only the key's name) ------------
    // The stored value, else the default of a key above with that name, else an invalid value.
    QVariant valueForName(const QString& name) const;
    void setValueForName(const QString& name, const QVariant& value);
    // The name of every key above.
    static QStringList allKeyNames();

signals:
    // A stored value changed (from any thread; queued to receivers on other threads).
    void changed(const QString& key);

private:
    // The name and default (as stored) of every key above.
    static const std::vector<std::pair<QString, QVariant>>& knownKeys();
    QVariant storedValue(const char* name) const;
    // An invalid value removes the key.
    void storeValue(const QString& name, const QVariant& value);

    template <typename T>
    static QVariant toVariant(const T& value) {
        if constexpr (std::is_enum_v<T>) {
            return static_cast<int>(value);
        } else if constexpr (std::is_same_v<T, QColor>) {
            // Readable in the file, unlike QSettings' binary form of colours.
            return value.name(QColor::HexArgb);
        } else {
            return QVariant::fromValue(value);
        }
    }
    // The INI file stores every scalar as text, so the values are converted back here and
    // anything unreadable falls back to the default.
    template <typename T>
    static T fromVariant(const QVariant& stored, const T& fallback) {
        if (!stored.isValid()) {
            return fallback;
        }
        bool ok = false;
        if constexpr (std::is_same_v<T, bool>) {
            const QString text = stored.toString().toLower();
            if (text == "true" || text == "1")
                return true;
            if (text == "false" || text == "0")
                return false;
            return fallback;
        } else if constexpr (std::is_enum_v<T> || std::is_same_v<T, int>) {
            const int number = stored.toInt(&ok);
            return ok ? static_cast<T>(number) : fallback;
        } else if constexpr (std::is_same_v<T, double>) {
            const double number = stored.toDouble(&ok);
            return ok ? number : fallback;
        } else if constexpr (std::is_same_v<T, QColor>) {
            const QColor color = QColor::fromString(stored.toString());
            return color.isValid() ? color : fallback;
        } else if constexpr (std::is_same_v<T, QStringList>) {
            return stored.toStringList();
        } else {
            return stored.value<T>();
        }
    }

    mutable std::mutex mutex_;
    mutable QSettings settings_;
};

// Makes the model's HMKUserDefaults::standard() read and write these settings (the keys
// above with their defaults; other keys as stored). The settings must outlive the program's
// use of the model, which HMKSettings::shared() does.
void installSettingsAsUserDefaults(HMKSettings& settings);
