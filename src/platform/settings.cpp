#include "platform/settings.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "model/user_defaults.h"

namespace {

constexpr const char* kSettingsOrganization = "hemlark";
constexpr const char* kSettingsApplication = "hemlark";

// HMKUserDefaults on top of the settings: numbers stored as text in the INI file and the
// keys' defaults are turned into what the model asks for.
class SettingsUserDefaults final : public HMKUserDefaults {
public:
    explicit SettingsUserDefaults(HMKSettings& settings) : settings_(settings) {}

    std::optional<long long> integerForKey(std::string_view key) const override {
        if (auto number = doubleForKey(key)) {
            return static_cast<long long>(*number);
        }
        return std::nullopt;
    }
    void setInteger(long long value, std::string_view key) override {
        settings_.setValueForName(name(key), value);
    }
    std::optional<double> doubleForKey(std::string_view key) const override {
        const QVariant value = settings_.valueForName(name(key));
        const QString text = value.toString().toLower();
        if (!value.isValid()) {
            return std::nullopt;
        }
        if (text == "true" || text == "false") {
            return text == "true" ? 1.0 : 0.0;
        }
        bool ok = false;
        const double number = value.toDouble(&ok);
        return ok ? std::optional<double>(number) : std::nullopt;
    }
    void setDouble(double value, std::string_view key) override {
        settings_.setValueForName(name(key), value);
    }
    std::optional<std::string> stringForKey(std::string_view key) const override {
        const QVariant value = settings_.valueForName(name(key));
        if (!value.isValid()) {
            return std::nullopt;
        }
        return value.toString().toStdString();
    }
    void setString(std::string value, std::string_view key) override {
        settings_.setValueForName(name(key), QString::fromStdString(value));
    }

private:
    static QString name(std::string_view key) {
        return QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
    }
    HMKSettings& settings_;
};

template <typename T>
std::pair<QString, QVariant> entry(const HMKSettingKey<T>& key, QVariant stored) {
    return {QString::fromLatin1(key.name), std::move(stored)};
}

}  // namespace

HMKSettings::HMKSettings(QObject* parent)
    : QObject(parent),
      settings_(QSettings::IniFormat, QSettings::UserScope, kSettingsOrganization,
                kSettingsApplication) {}

HMKSettings::HMKSettings(const QString& fileName, QObject* parent)
    : QObject(parent), settings_(fileName, QSettings::IniFormat) {}

HMKSettings& HMKSettings::shared() {
    static HMKSettings settings;
    return settings;
}

QString HMKSettings::fileName() const {
    std::lock_guard lock(mutex_);
    return settings_.fileName();
}

const std::vector<std::pair<QString, QVariant>>& HMKSettings::knownKeys() {
    static const std::vector<std::pair<QString, QVariant>> keys = [] {
        std::vector<std::pair<QString, QVariant>> table;
        auto add = [&table](const auto& key) {
            table.push_back(entry(key, toVariant(key.defaultValue)));
        };
        add(showJumps), add(showGrid), add(showCenter), add(showHoop), add(showFirst);
        add(showLast), add(showStructure), add(drawFastMode), add(backgroundColor);
        add(showRulers), add(printJumps), add(printGrid), add(printCenter), add(printHoop);
        add(printFirst), add(printLast), add(printStructure), add(printFastMode);
        add(printTemplate), add(measurementUnit), add(stitchSpeed), add(soundMuted);
        add(machineSpeed);
        add(skipOpenDialog), add(checkForUpdates), add(recentFiles), add(defaultThreads);
        add(alertWriteToURL), add(bastingLength), add(bastingDistance);
        add(undoMemoryMegabytes), add(machineTag);
        return table;
    }();
    return keys;
}

QStringList HMKSettings::allKeyNames() {
    QStringList names;
    for (const auto& [name, defaultValue] : knownKeys()) {
        names.append(name);
    }
    return names;
}

QVariant HMKSettings::storedValue(const char* name) const {
    std::lock_guard lock(mutex_);
    return settings_.value(QString::fromLatin1(name));
}

void HMKSettings::storeValue(const QString& name, const QVariant& value) {
    {
        std::lock_guard lock(mutex_);
        const QVariant old = settings_.value(name);
        // Compared as stored text, since the file gives every scalar back as a string.
        if (old.isValid() == value.isValid() && old.toString() == value.toString() &&
            old.toStringList() == value.toStringList()) {
            return;
        }
        if (value.isValid()) {
            settings_.setValue(name, value);
        } else {
            settings_.remove(name);
        }
    }
    emit changed(name);
}

QVariant HMKSettings::valueForName(const QString& name) const {
    {
        std::lock_guard lock(mutex_);
        QVariant stored = settings_.value(name);
        if (stored.isValid()) {
            return stored;
        }
    }
    for (const auto& [known, defaultValue] : knownKeys()) {
        if (known == name) {
            return defaultValue;
        }
    }
    return {};
}

void HMKSettings::setValueForName(const QString& name, const QVariant& value) {
    storeValue(name, value);
}

HMKSewingTimeSettings HMKSettings::sewingTimeSettings() const {
    HMKSewingTimeSettings settings;
    settings.stitchesPerMinute = std::max(value(machineSpeed), 1);
    return settings;
}

HMKPrintOptions HMKSettings::printOptions() const {
    HMKPrintOptions options;
    options.showJumps = value(printJumps);
    options.showGrid = value(printGrid);
    options.showCenter = value(printCenter);
    options.showHoop = value(printHoop);
    options.showFirst = value(printFirst);
    options.showLast = value(printLast);
    options.showStructure = value(printStructure);
    options.fastMode = value(printFastMode);
    options.printTemplate = value(printTemplate);
    options.unit = value(measurementUnit);
    options.timing = sewingTimeSettings();
    return options;
}

void HMKSettings::resetAll() {
    for (const auto& [name, defaultValue] : knownKeys()) {
        storeValue(name, QVariant());
    }
}

void HMKSettings::sync() {
    std::lock_guard lock(mutex_);
    settings_.sync();
}

void installSettingsAsUserDefaults(HMKSettings& settings) {
    HMKUserDefaults::install(std::make_unique<SettingsUserDefaults>(settings));
}
