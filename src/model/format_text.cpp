#include "model/format_text.h"

#include <cmath>
#include <cstdio>
#include <vector>

namespace {

std::string numberText(const std::string& flags, char conversion, double value) {
    char buffer[128];
    std::string pattern = "%" + flags + conversion;
    std::snprintf(buffer, sizeof buffer, pattern.c_str(), value);
    return buffer;
}

std::string integerText(const std::string& flags, long long value) {
    char buffer[128];
    std::string pattern = "%" + flags + "lld";
    std::snprintf(buffer, sizeof buffer, pattern.c_str(), value);
    return buffer;
}

std::string asText(const TextArg& arg) {
    if (const auto* text = std::get_if<std::string>(&arg.value())) {
        return *text;
    }
    if (const auto* integer = std::get_if<std::int64_t>(&arg.value())) {
        return std::to_string(*integer);
    }
    return numberText("", 'g', std::get<double>(arg.value()));
}

long long asInteger(const TextArg& arg) {
    if (const auto* integer = std::get_if<std::int64_t>(&arg.value())) {
        return *integer;
    }
    if (const auto* number = std::get_if<double>(&arg.value())) {
        // Integer placeholders given a fraction show the nearest whole number.
        return std::isfinite(*number) ? std::llround(*number) : 0;
    }
    return std::atoll(std::get<std::string>(arg.value()).c_str());
}

double asDouble(const TextArg& arg) {
    if (const auto* number = std::get_if<double>(&arg.value())) {
        return *number;
    }
    if (const auto* integer = std::get_if<std::int64_t>(&arg.value())) {
        return static_cast<double>(*integer);
    }
    return std::atof(std::get<std::string>(arg.value()).c_str());
}

}  // namespace

std::string formatText(std::string_view format, std::initializer_list<TextArg> argList) {
    std::vector<const TextArg*> args;
    for (const auto& arg : argList) {
        args.push_back(&arg);
    }
    std::string out;
    std::size_t next = 0;
    for (std::size_t i = 0; i < format.size(); ++i) {
        char c = format[i];
        if (c != '%' || i + 1 >= format.size()) {
            out += c;
            continue;
        }
        std::size_t j = i + 1;
        if (format[j] == '%') {
            out += '%';
            i = j;
            continue;
        }
        // Optional position "n$".
        std::size_t position = next;
        bool positional = false;
        std::size_t k = j;
        while (k < format.size() && format[k] >= '0' && format[k] <= '9') {
            ++k;
        }
        if (k < format.size() && k > j && format[k] == '$') {
            position = std::stoul(std::string(format.substr(j, k - j))) - 1;
            positional = true;
            j = k + 1;
        }
        std::string flags;
        while (j < format.size() &&
               std::string_view("-+ #0123456789.").find(format[j]) != std::string_view::npos) {
            flags += format[j++];
        }
        // Length modifiers carry no meaning here.
        while (j < format.size() && (format[j] == 'l' || format[j] == 'h' || format[j] == 'q')) {
            ++j;
        }
        if (j >= format.size()) {
            out += format.substr(i);
            break;
        }
        char conversion = format[j];
        const TextArg* arg = position < args.size() ? args[position] : nullptr;
        switch (conversion) {
            case '@':
            case 's':
                if (arg)
                    out += asText(*arg);
                break;
            case 'i':
            case 'd':
            case 'u':
                if (arg)
                    out += integerText(flags, asInteger(*arg));
                break;
            case 'f':
            case 'g':
            case 'e':
                if (arg)
                    out += numberText(flags, conversion, asDouble(*arg));
                break;
            default:
                out += format.substr(i, j - i + 1);
                i = j;
                continue;
        }
        if (!positional) {
            ++next;
        }
        i = j;
    }
    return out;
}
