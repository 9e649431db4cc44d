// Lengths shown to the user are kept in millimetres and turned into text in the user's unit
// ("MeasurementUnit": 0 millimetres, 1 decimal inches, 2 fractional inches in 1/32 steps),
// and typed text is turned back into millimetres.
#pragma once

#include <optional>
#include <string>
#include <string_view>

enum class HMKMeasurementUnit { millimetres = 0, decimalInches = 1, fractionalInches = 2 };

class HMKValueTransformer {
public:
    // The unit from the user default "MeasurementUnit"; anything but 1 or 2 is millimetres.
    static HMKMeasurementUnit currentUnit();

    // Formats millimetres in the current unit ("100.0 mm", "3.94\"", "1 1/2\"").
    static std::string transformedValue(double millimetres);
    static std::string transformedValue(double millimetres, HMKMeasurementUnit unit);

    // Parses typed text ("2.5", "10 mm", "1 1/2\"") back into millimetres.
    static double reverseTransformedValue(std::string_view text);
    static double reverseTransformedValue(std::string_view text, HMKMeasurementUnit unit);
};

// Fixed decimals with "," grouping of the whole part, as the patterns "#,##0", "#,##0.0" and
// "#,##0.00" ("64,000", "1,234.5").
std::string groupedDecimal(double value, int decimals);
