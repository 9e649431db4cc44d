// A drawing context that paints nothing and remembers every call, so the renderer's decisions
// (what is stroked, how wide, in which colour, with which gradient) can be checked without
// pixels. Used by the renderer's tests and handy when debugging a drawing.
#pragma once

#include <string>
#include <vector>

#include "render/drawing_context.h"

// One call to the context, with its arguments.
struct HMKRecordedCall {
    enum class Operation {
        saveState,
        restoreState,
        setRoundLineCap,
        setLineWidth,
        setLineDash,
        setStrokeColor,
        setFillColor,
        moveTo,
        lineTo,
        addArc,
        addRect,
        strokePath,
        fillPath,
        clipToPath,
        drawLinearGradient,
    };
    Operation operation = Operation::saveState;
    // The numeric arguments in declaration order (addArc: centre, radius, angles, then 1 for
    // clockwise or 0; setLineDash: the pattern; drawLinearGradient: start and end).
    std::vector<double> numbers;
    // setStrokeColor and setFillColor.
    HMKRgba color;
    // drawLinearGradient.
    HMKGradient gradient;

    // The call as text, e.g. "lineTo(10, 0)" or "setStrokeColor(0.8, 0, 0, 0.6)" (numbers
    // printed with %g).
    std::string text() const;
};

// What a painting call (stroke, fill or gradient) painted, with the state it painted with.
struct HMKRecordedPaint {
    enum class Kind { stroke, fill, gradient };
    Kind kind = Kind::stroke;
    // The path as text, e.g. "M 0 0 L 10 0"; for a gradient, the clip path it was drawn in.
    std::string path;
    double lineWidth = 1;
    std::vector<double> dash;
    HMKRgba color;
    HMKGradient gradient;
    // Gradient start and end point.
    double startX = 0, startY = 0, endX = 0, endY = 0;
    // Nesting depth of saved states when painted (0: outside the renderer's own save).
    int stateDepth = 0;
};

class HMKRecordingContext : public HMKDrawingContext {
public:
    const std::vector<HMKRecordedCall>& calls() const { return calls_; }
    // Every call as text, one entry each.
    std::vector<std::string> callTexts() const;
    const std::vector<HMKRecordedPaint>& paints() const { return paints_; }
    // Only the paints of one kind, in order.
    std::vector<HMKRecordedPaint> paintsOfKind(HMKRecordedPaint::Kind kind) const;
    // Saves minus restores so far; 0 after a balanced drawing.
    int stateDepth() const { return static_cast<int>(stack_.size()); }

    void saveState() override;
    void restoreState() override;
    void setRoundLineCap() override;
    void setLineWidth(double width) override;
    void setLineDash(const std::vector<double>& pattern) override;
    void setStrokeColor(const HMKRgba& color) override;
    void setFillColor(const HMKRgba& color) override;
    void moveTo(double x, double y) override;
    void lineTo(double x, double y) override;
    void addArc(double centerX, double centerY, double radius, double startAngle, double endAngle,
                bool clockwise) override;
    void addRect(double x, double y, double width, double height) override;
    void strokePath() override;
    void fillPath() override;
    void clipToPath() override;
    void drawLinearGradient(const HMKGradient& gradient, double startX, double startY, double endX,
                            double endY) override;

private:
    struct State {
        double lineWidth = 1;
        std::vector<double> dash;
        HMKRgba strokeColor{0, 0, 0, 1};
        HMKRgba fillColor{0, 0, 0, 1};
        std::string clip;
    };

    HMKRecordedCall& record(HMKRecordedCall::Operation operation, std::vector<double> numbers);
    void appendPath(const std::string& element, std::initializer_list<double> numbers);

    std::vector<HMKRecordedCall> calls_;
    std::vector<HMKRecordedPaint> paints_;
    State state_;
    std::vector<State> stack_;
    std::string path_;
};
