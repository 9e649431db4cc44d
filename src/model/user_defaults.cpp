#include "model/user_defaults.h"

#include <map>
#include <mutex>
#include <variant>

namespace {

class MemoryUserDefaults final : public HMKUserDefaults {
public:
    std::optional<long long> integerForKey(std::string_view key) const override {
        std::lock_guard lock(mutex_);
        auto found = values_.find(key);
        if (found == values_.end())
            return std::nullopt;
        if (auto* i = std::get_if<long long>(&found->second))
            return *i;
        if (auto* d = std::get_if<double>(&found->second))
            return static_cast<long long>(*d);
        return std::nullopt;
    }
    void setInteger(long long value, std::string_view key) override {
        std::lock_guard lock(mutex_);
        values_[std::string(key)] = value;
    }
    std::optional<double> doubleForKey(std::string_view key) const override {
        std::lock_guard lock(mutex_);
        auto found = values_.find(key);
        if (found == values_.end())
            return std::nullopt;
        if (auto* d = std::get_if<double>(&found->second))
            return *d;
        if (auto* i = std::get_if<long long>(&found->second))
            return static_cast<double>(*i);
        return std::nullopt;
    }
    void setDouble(double value, std::string_view key) override {
        std::lock_guard lock(mutex_);
        values_[std::string(key)] = value;
    }
    std::optional<std::string> stringForKey(std::string_view key) const override {
        std::lock_guard lock(mutex_);
        auto found = values_.find(key);
        if (found == values_.end())
            return std::nullopt;
        if (auto* s = std::get_if<std::string>(&found->second))
            return *s;
        return std::nullopt;
    }
    void setString(std::string value, std::string_view key) override {
        std::lock_guard lock(mutex_);
        values_[std::string(key)] = std::move(value);
    }

private:
    mutable std::mutex mutex_;
    std::map<std::string, std::variant<long long, double, std::string>, std::less<>> values_;
};

std::unique_ptr<HMKUserDefaults>& currentStore() {
    static std::unique_ptr<HMKUserDefaults> store = makeMemoryUserDefaults();
    return store;
}

}  // namespace

std::unique_ptr<HMKUserDefaults> makeMemoryUserDefaults() {
    return std::make_unique<MemoryUserDefaults>();
}

HMKUserDefaults& HMKUserDefaults::standard() {
    return *currentStore();
}

void HMKUserDefaults::install(std::unique_ptr<HMKUserDefaults> store) {
    currentStore() = std::move(store);
}
