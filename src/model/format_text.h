// printf-style filling of user-visible format texts. Texts come from string tables with
// placeholders "%@" (text), "%i"/"%d" (integer) and "%f" with width and precision
// ("%1.1f"), so a translation may use the same placeholders in its own order ("%2$@").
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>

class TextArg {
public:
    TextArg(std::string text) : value_(std::move(text)) {}
    TextArg(const char* text) : value_(std::string(text)) {}
    TextArg(std::string_view text) : value_(std::string(text)) {}
    TextArg(double number) : value_(number) {}
    TextArg(float number) : value_(static_cast<double>(number)) {}
    TextArg(bool flag) : value_(static_cast<std::int64_t>(flag)) {}
    TextArg(int number) : value_(static_cast<std::int64_t>(number)) {}
    TextArg(long number) : value_(static_cast<std::int64_t>(number)) {}
    TextArg(long long number) : value_(static_cast<std::int64_t>(number)) {}
    TextArg(unsigned number) : value_(static_cast<std::int64_t>(number)) {}
    TextArg(unsigned long number) : value_(static_cast<std::int64_t>(number)) {}
    TextArg(unsigned long long number) : value_(static_cast<std::int64_t>(number)) {}

    const std::variant<std::string, double, std::int64_t>& value() const { return value_; }

private:
    std::variant<std::string, double, std::int64_t> value_;
};

// Fills the placeholders in order; missing arguments leave the placeholder empty.
std::string formatText(std::string_view format, std::initializer_list<TextArg> args);
