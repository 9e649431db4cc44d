#include <gtest/gtest.h>

#include "model/units.h"
#include "model/user_defaults.h"

using Unit = HMKMeasurementUnit;

TEST(Units, FormatsInEveryUnit) {
    struct Case {
        double millimetres;
        Unit unit;
        const char* text;
    };
    for (auto [mm, unit, text] : {
             Case{100, Unit::millimetres, "100.0 mm"},
             Case{1234.56, Unit::millimetres, "1,234.6 mm"},
             Case{-1234567.0, Unit::millimetres, "-1,234,567.0 mm"},
             Case{100, Unit::decimalInches, "3.94\""},
             Case{12.7, Unit::fractionalInches, "1/2\""},
             Case{25.4, Unit::fractionalInches, "1\""},
             Case{0, Unit::fractionalInches, "0\""},
             Case{38.1, Unit::fractionalInches, "1 1/2\""},
             Case{-12.7, Unit::fractionalInches, "-1/2\""},
             Case{3.2, Unit::fractionalInches, "1/8\""},
             Case{-38.1, Unit::fractionalInches, "-1 1/2\""},
         }) {
        EXPECT_EQ(HMKValueTransformer::transformedValue(mm, unit), text) << mm;
    }
}

TEST(Units, ParsesTypedText) {
    struct Case {
        const char* text;
        Unit unit;
        double millimetres;
    };
    for (auto [text, unit, mm] : {
             Case{"1 1/2\"", Unit::millimetres, 38.1},
             Case{"2.5", Unit::millimetres, 2.5},
             Case{"2.5", Unit::decimalInches, 63.5},
             Case{"2.5", Unit::fractionalInches, 63.5},
             Case{"10 mm", Unit::decimalInches, 10},
             Case{"10 mm", Unit::millimetres, 10},
             Case{"3 in", Unit::millimetres, 76.2},
             Case{"-1 1/2\"", Unit::millimetres, -38.1},
             Case{"-1/2\"", Unit::millimetres, -12.7},
             Case{"1/", Unit::fractionalInches, 25.4},
             Case{"", Unit::fractionalInches, 0},
             Case{" 1 1/2\"", Unit::millimetres, 38.1},
         }) {
        EXPECT_NEAR(HMKValueTransformer::reverseTransformedValue(text, unit), mm, 1e-9) << text;
    }
}

TEST(Units, CurrentUnitComesFromTheUserDefault) {
    auto& defaults = HMKUserDefaults::standard();
    defaults.setInteger(2, "MeasurementUnit");
    EXPECT_EQ(HMKValueTransformer::transformedValue(12.7), "1/2\"");
    defaults.setInteger(7, "MeasurementUnit");
    EXPECT_EQ(HMKValueTransformer::currentUnit(), Unit::millimetres);
    defaults.setInteger(0, "MeasurementUnit");
}
