// The user's settings ("MeasurementUnit", "DefaultThreads", "BastingLength", ...). The model
// reads them through this small interface; the Qt layer installs a store backed by the real
// settings file, and tests and the command-line tool use the in-memory one.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

class HMKUserDefaults {
public:
    virtual ~HMKUserDefaults() = default;
    virtual std::optional<long long> integerForKey(std::string_view key) const = 0;
    virtual void setInteger(long long value, std::string_view key) = 0;
    virtual std::optional<double> doubleForKey(std::string_view key) const = 0;
    virtual void setDouble(double value, std::string_view key) = 0;
    virtual std::optional<std::string> stringForKey(std::string_view key) const = 0;
    virtual void setString(std::string value, std::string_view key) = 0;

    // The store the whole program uses; an in-memory store until another is installed.
    static HMKUserDefaults& standard();
    static void install(std::unique_ptr<HMKUserDefaults> store);
};

// A plain in-memory store (the default, and the one tests use).
std::unique_ptr<HMKUserDefaults> makeMemoryUserDefaults();
