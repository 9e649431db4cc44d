// Ruler ticks in the three units at a few zooms, and the measuring tool's reading.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "model/ruler_ticks.h"

namespace {

using Unit = HMKMeasurementUnit;

// "pixel:level:label" of the first ticks, for compact expectations.
std::string firstTicks(const std::vector<HMKRulerTick>& ticks, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count && i < ticks.size(); ++i) {
        char pixel[32];
        std::snprintf(pixel, sizeof pixel, "%g", ticks[i].pixel);
        text += (i ? " " : "") + std::string(pixel) + ":" + std::to_string(ticks[i].level) +
                (ticks[i].label.empty() ? "" : ":" + ticks[i].label);
    }
    return text;
}

TEST(RulerTicks, FollowUnitZoomAndPan) {
    struct Case {
        Unit unit;
        double zeroPixel;
        double pixelsPerMillimetre;
        const char* first;
    };
    const Case cases[] = {
        // 4 px/mm: labels every 20 mm (80 px), ticks every 2 mm with a half-way tick.
        {Unit::millimetres, 0, 4, "0:0:0 8:2 16:2 24:2 32:2 40:1 48:2 56:2 64:2 72:2 80:0:20"},
        // 10 px/mm: labels every 5 mm, ticks every half millimetre; panned by 3 px.
        {Unit::millimetres, 3, 10, "3:0:0 8:2 13:2 18:2 23:2 28:1 33:2 38:2 43:2 48:2 53:0:5"},
        // Zoomed out to 0.1 px/mm: labels every 500 mm, ticks every 50 mm.
        {Unit::millimetres, 0, 0.1, "0:0:0 5:2 10:2 15:2 20:2 25:1 30:2 35:2 40:2 45:2 50:0:500"},
        // The vertical ruler counts up towards the top: 0 mm at pixel 100.
        {Unit::millimetres, 100, -10, "0:0:10 5:2 10:2 15:2 20:2 25:1 30:2 35:2 40:2 45:2 50:0:5"},
        // 2 px/mm = 50.8 px/inch: a label per inch, tenths.
        {Unit::decimalInches, 0, 2, "0:0:0 5.08:2 10.16:2 15.24:2 20.32:2 25.4:1"},
        // 4 px/mm: labels every half inch, twentieths.
        {Unit::decimalInches, 0, 4,
         "0:0:0 5.08:2 10.16:2 15.24:2 20.32:2 25.4:1 30.48:2"
         " 35.56:2 40.64:2 45.72:2 50.8:0:0.5"},
        // 2 px/mm: inches in eighths, the half inch marked.
        {Unit::fractionalInches, 0, 2, "0:0:0 6.35:2 12.7:2 19.05:2 25.4:1 31.75:2"},
        // 8 px/mm: labels every quarter inch, in 32nds.
        {Unit::fractionalInches, -50.8, 8, "0:0:1/4 6.35:2 12.7:2 19.05:2 25.4:1"},
    };
    for (const Case& c : cases) {
        const auto ticks = rulerTicks(c.unit, c.zeroPixel, c.pixelsPerMillimetre, 200);
        const std::string expected = c.first;
        const std::size_t count = std::count(expected.begin(), expected.end(), ' ') + 1;
        EXPECT_EQ(firstTicks(ticks, count), expected)
            << static_cast<int>(c.unit) << " at " << c.pixelsPerMillimetre;
        for (const HMKRulerTick& tick : ticks) {
            EXPECT_TRUE(tick.pixel >= -1e-9 && tick.pixel <= 200 + 1e-9) << tick.pixel;
        }
    }
    EXPECT_EQ(firstTicks(rulerTicks(Unit::fractionalInches, 0, 2, 200), 99).find(":0:1 1/2"),
              std::string::npos);
    EXPECT_NE(firstTicks(rulerTicks(Unit::fractionalInches, 0, 8, 400), 99).find(":0:1 1/4"),
              std::string::npos);
    EXPECT_TRUE(rulerTicks(Unit::millimetres, 0, 0, 200).empty());
}

TEST(RulerTicks, MeasuresDistanceAndAngle) {
    struct Case {
        HMKPoint to;
        Unit unit;
        const char* text;
    };
    for (const Case& c : {Case{{300, 400}, Unit::millimetres, "50.0 mm, 53.1°"},
                          Case{{-254, 0}, Unit::decimalInches, "1.00\", 180.0°"},
                          Case{{0, -381}, Unit::fractionalInches, "1 1/2\", -90.0°"},
                          Case{{0, 0}, Unit::millimetres, "0.0 mm, 0.0°"}}) {
        EXPECT_EQ(measureBetween({100, -50}, {c.to.x + 100, c.to.y - 50}).text(c.unit), c.text);
    }
}

}  // namespace
