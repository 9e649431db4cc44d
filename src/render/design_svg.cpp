#include "render/design_svg.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>

#include "model/design.h"
#include "render/drawn_stitches.h"
#include "render/stitch_runs.h"

namespace {

// Coordinates are written in hundredths of a design unit (a micrometre): finer than any
// machine sews, and short.
constexpr double kSteps = 100;

class SvgText {
public:
    std::string& text() { return text_; }

    SvgText& operator<<(std::string_view part) {
        text_ += part;
        return *this;
    }
    // Hundredths as a decimal number with no trailing zeros ("12.5", "-3", "0.07").
    SvgText& steps(std::int64_t hundredths) {
        if (hundredths < 0) {
            text_ += '-';
            hundredths = -hundredths;
        }
        integer(hundredths / 100);
        const int fraction = static_cast<int>(hundredths % 100);
        if (fraction != 0) {
            text_ += '.';
            text_ += static_cast<char>('0' + fraction / 10);
            if (fraction % 10 != 0) {
                text_ += static_cast<char>('0' + fraction % 10);
            }
        }
        return *this;
    }
    SvgText& number(double value) { return steps(std::llround(value * kSteps)); }
    SvgText& integer(std::int64_t value) {
        char buffer[24];
        const auto end = std::to_chars(buffer, buffer + sizeof buffer, value).ptr;
        text_.append(buffer, end);
        return *this;
    }
    // " stroke=\"#rrggbb\"" with its opacity when not opaque (name is "stroke" or "fill").
    SvgText& paint(std::string_view name, const HMKRgba& color) {
        auto channel = [](double value) {
            return static_cast<int>(std::lround(std::clamp(value, 0.0, 1.0) * 255));
        };
        static constexpr char kHex[] = "0123456789abcdef";
        text_ += ' ';
        text_ += name;
        text_ += "=\"#";
        for (double value : {color.red, color.green, color.blue}) {
            text_ += kHex[channel(value) >> 4];
            text_ += kHex[channel(value) & 15];
        }
        text_ += '"';
        if (color.alpha < 1) {
            text_ += ' ';
            text_ += name;
            text_ += "-opacity=\"";
            number(std::clamp(color.alpha, 0.0, 1.0));
            text_ += '"';
        }
        return *this;
    }
    // Text with the characters XML reserves escaped.
    SvgText& escaped(std::string_view raw) {
        for (char c : raw) {
            switch (c) {
                case '&':
                    text_ += "&amp;";
                    break;
                case '<':
                    text_ += "&lt;";
                    break;
                case '>':
                    text_ += "&gt;";
                    break;
                case '"':
                    text_ += "&quot;";
                    break;
                default:
                    text_ += c;
            }
        }
        return *this;
    }

private:
    std::string text_;
};

// The stroke's width, dashes and colour as attributes.
void strokeAttributes(SvgText& out, const HMKRunStroke& stroke) {
    out.paint("stroke", stroke.color);
    if (stroke.width > 0) {
        out << " stroke-width=\"";
        out.number(stroke.width) << "\"";
    } else {
        // The thinnest line the device can draw, however far the picture is zoomed.
        out << " stroke-width=\"1\" vector-effect=\"non-scaling-stroke\"";
    }
    if (stroke.dashed) {
        out << " stroke-dasharray=\"2 3\"";
    }
}

}  // namespace

HMKVectorPage vectorPageOfDesign(const HMKDesign& design) {
    const double reach = kHMKStitchWidth / 2 + kHMKVectorMarginUnits;
    if (design.xMin() > design.xMax() || design.yMin() > design.yMax()) {
        return {-reach, -reach, 2 * reach, 2 * reach};
    }
    return {design.xMin() - reach, design.yMin() - reach,
            double(design.xMax()) - design.xMin() + 2 * reach,
            double(design.yMax()) - design.yMin() + 2 * reach};
}

std::string designSvg(const HMKDesign& design, const HMKDrawingSwitches& switches, double scale,
                      const std::optional<HMKRgba>& background) {
    const HMKVectorPage page = vectorPageOfDesign(design);
    SvgText out;
    // y grows upward in the design and downward in SVG: every y is written negated.
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<svg xmlns=\"http://www.w3.org/2000/svg\" "
           "xmlns:xlink=\"http://www.w3.org/1999/xlink\" version=\"1.1\" width=\"";
    out.number(page.width / 10 * scale) << "mm\" height=\"";
    out.number(page.height / 10 * scale) << "mm\" viewBox=\"";
    out.number(page.left) << " ";
    out.number(-(page.bottom + page.height)) << " ";
    out.number(page.width) << " ";
    out.number(page.height) << "\">\n<title>";
    out.escaped(design.designName()) << "</title>\n";
    if (background) {
        out << "<rect x=\"";
        out.number(page.left) << "\" y=\"";
        out.number(-(page.bottom + page.height)) << "\" width=\"";
        out.number(page.width) << "\" height=\"";
        out.number(page.height) << "\"";
        out.paint("fill", HMKRgba{background->red, background->green, background->blue, 1})
            << "/>\n";
    }
    out << "<g fill=\"none\" stroke-linecap=\"round\" stroke-linejoin=\"round\">\n";
    std::int64_t runs = 0;
    walkStitchRuns(design, switches, [&](const HMKStitchRun& run) {
        // The first stroke draws the path; the others reuse it.
        const std::int64_t id = ++runs;
        out << "<g";
        strokeAttributes(out, run.strokes.front());
        out << "><path id=\"r";
        out.integer(id) << "\" d=\"M";
        std::int64_t x = std::llround(run.points.front().x * kSteps);
        std::int64_t y = std::llround(-run.points.front().y * kSteps);
        out.steps(x) << " ";
        out.steps(y) << "l";
        for (std::size_t i = 1; i < run.points.size(); ++i) {
            const std::int64_t nextX = std::llround(run.points[i].x * kSteps);
            const std::int64_t nextY = std::llround(-run.points[i].y * kSteps);
            if (i > 1) {
                out << " ";
            }
            out.steps(nextX - x) << " ";
            out.steps(nextY - y);
            x = nextX;
            y = nextY;
        }
        out << "\"/></g>\n";
        for (std::size_t i = 1; i < run.strokes.size(); ++i) {
            out << "<use xlink:href=\"#r";
            out.integer(id) << "\"";
            strokeAttributes(out, run.strokes[i]);
            out << "/>\n";
        }
        if (run.markerSize > 0) {
            out << "<path stroke=\"none\"";
            out.paint("fill", run.markerColor) << " d=\"";
            for (std::size_t i = 1; i < run.points.size(); ++i) {
                out << "M";
                out.number(run.points[i].x - run.markerSize / 2) << " ";
                out.number(-run.points[i].y - run.markerSize / 2) << "h";
                out.number(run.markerSize) << "v";
                out.number(run.markerSize) << "h";
                out.number(-run.markerSize) << "z";
            }
            out << "\"/>\n";
        }
    });
    out << "</g>\n</svg>\n";
    return std::move(out.text());
}
