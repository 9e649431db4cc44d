#include "model/units.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "model/user_defaults.h"

namespace {

constexpr double kMillimetresPerInch = 25.4;
constexpr const char* kInchSign = "\"";

std::string fractionalInches(double millimetres) {
    const double inches = millimetres / kMillimetresPerInch;
    const int whole = static_cast<int>(inches);
    const double fraction = inches - whole;
    std::string text;
    if (whole != 0 || fraction == 0) {
        text += std::to_string(whole);
    }
    int numerator = static_cast<int>(std::fabs(fraction * 32));
    if (numerator > 0) {
        if (whole == 0 && fraction < 0) {
            text += "-";
        } else if (whole != 0) {
            text += " ";
        }
        int denominator = 32;
        while (numerator % 2 == 0) {
            numerator /= 2;
            denominator /= 2;
        }
        text += std::to_string(numerator) + "/" + std::to_string(denominator);
    }
    return text + kInchSign;
}

// The leading number of text (blanks skipped), or none.
std::optional<double> scanDouble(std::string_view text) {
    std::string copy(text);
    const char* begin = copy.c_str();
    char* end = nullptr;
    double value = std::strtod(begin, &end);
    if (end == begin) {
        return std::nullopt;
    }
    return value;
}

std::string_view trimmed(std::string_view text) {
    auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

double parseFraction(std::string_view text) {
    const std::size_t slash = text.find('/');
    std::string_view before = text.substr(0, slash);
    std::string_view after = text.substr(slash + 1);
    const std::size_t nextSlash = after.find('/');
    if (nextSlash != std::string_view::npos) {
        after = after.substr(0, nextSlash);
    }
    double denominator = 1;
    if (!trimmed(after).empty()) {
        denominator = scanDouble(after).value_or(1);
    }
    std::vector<std::string_view> pieces;
    std::string_view rest = trimmed(before);
    while (!rest.empty()) {
        std::size_t blank = rest.find(' ');
        pieces.push_back(rest.substr(0, blank));
        if (blank == std::string_view::npos)
            break;
        rest = trimmed(rest.substr(blank + 1));
    }
    double whole = 0, numerator = 0;
    if (pieces.size() >= 2) {
        whole = scanDouble(pieces[0]).value_or(0);
        numerator = scanDouble(pieces[1]).value_or(0);
    } else if (pieces.size() == 1) {
        numerator = scanDouble(pieces[0]).value_or(0);
    }
    // Only a negative whole number gives the sign; a lone fraction carries its own.
    const double sign = whole < 0 ? -1.0 : 1.0;
    return sign * (numerator / denominator + std::fabs(whole));
}

}  // namespace

std::string groupedDecimal(double value, int decimals) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*f", decimals, value);
    std::string text = buffer;
    std::size_t start = text[0] == '-' ? 1 : 0;
    std::size_t point = text.find('.');
    if (point == std::string::npos)
        point = text.size();
    for (std::ptrdiff_t i = static_cast<std::ptrdiff_t>(point) - 3;
         i > static_cast<std::ptrdiff_t>(start); i -= 3) {
        text.insert(static_cast<std::size_t>(i), ",");
    }
    if (text == "-0.0" || text == "-0.00") {
        text.erase(0, 1);
    }
    return text;
}

HMKMeasurementUnit HMKValueTransformer::currentUnit() {
    auto unit = HMKUserDefaults::standard().integerForKey("MeasurementUnit").value_or(0);
    if (unit == 1)
        return HMKMeasurementUnit::decimalInches;
    if (unit == 2)
        return HMKMeasurementUnit::fractionalInches;
    return HMKMeasurementUnit::millimetres;
}

std::string HMKValueTransformer::transformedValue(double millimetres) {
    return transformedValue(millimetres, currentUnit());
}

std::string HMKValueTransformer::transformedValue(double millimetres, HMKMeasurementUnit unit) {
    switch (unit) {
        case HMKMeasurementUnit::decimalInches:
            return groupedDecimal(millimetres / kMillimetresPerInch, 2) + kInchSign;
        case HMKMeasurementUnit::fractionalInches:
            return fractionalInches(millimetres);
        case HMKMeasurementUnit::millimetres:
            break;
    }
    return groupedDecimal(millimetres, 1) + " mm";
}

double HMKValueTransformer::reverseTransformedValue(std::string_view text) {
    return reverseTransformedValue(text, currentUnit());
}

double HMKValueTransformer::reverseTransformedValue(std::string_view text,
                                                    HMKMeasurementUnit unit) {
    if (text.empty()) {
        return 0;
    }
    double value = text.find('/') == std::string_view::npos ? scanDouble(text).value_or(0)
                                                            : parseFraction(text);
    if (text.find("mm") != std::string_view::npos) {
        return value;
    }
    if (text.find("in") != std::string_view::npos || text.find('"') != std::string_view::npos ||
        unit != HMKMeasurementUnit::millimetres) {
        return value * kMillimetresPerInch;
    }
    return value;
}
