#include "render/recording_context.h"

#include <cstdio>
#include <initializer_list>

namespace {

using Operation = HMKRecordedCall::Operation;

const char* operationName(Operation operation) {
    switch (operation) {
        case Operation::saveState:
            return "saveState";
        case Operation::restoreState:
            return "restoreState";
        case Operation::setRoundLineCap:
            return "setRoundLineCap";
        case Operation::setLineWidth:
            return "setLineWidth";
        case Operation::setLineDash:
            return "setLineDash";
        case Operation::setStrokeColor:
            return "setStrokeColor";
        case Operation::setFillColor:
            return "setFillColor";
        case Operation::moveTo:
            return "moveTo";
        case Operation::lineTo:
            return "lineTo";
        case Operation::addArc:
            return "addArc";
        case Operation::addRect:
            return "addRect";
        case Operation::strokePath:
            return "strokePath";
        case Operation::fillPath:
            return "fillPath";
        case Operation::clipToPath:
            return "clipToPath";
        case Operation::drawLinearGradient:
            return "drawLinearGradient";
    }
    return "?";
}

std::string number(double value) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%g", value);
    return buffer;
}

std::string joined(const std::vector<double>& values) {
    std::string text;
    for (double value : values) {
        if (!text.empty()) {
            text += ", ";
        }
        text += number(value);
    }
    return text;
}

std::vector<double> components(const HMKRgba& color) {
    return {color.red, color.green, color.blue, color.alpha};
}

}  // namespace

std::string HMKRecordedCall::text() const {
    std::string arguments;
    switch (operation) {
        case Operation::setStrokeColor:
        case Operation::setFillColor:
            arguments = joined(components(color));
            break;
        case Operation::drawLinearGradient:
            for (std::size_t i = 0; i < gradient.colors.size(); ++i) {
                double location = i < gradient.locations.size() ? gradient.locations[i] : 0;
                arguments +=
                    "[" + number(location) + ": " + joined(components(gradient.colors[i])) + "], ";
            }
            arguments += joined(numbers);
            break;
        default:
            arguments = joined(numbers);
            break;
    }
    return std::string(operationName(operation)) + "(" + arguments + ")";
}

std::vector<std::string> HMKRecordingContext::callTexts() const {
    std::vector<std::string> texts;
    texts.reserve(calls_.size());
    for (const HMKRecordedCall& call : calls_) {
        texts.push_back(call.text());
    }
    return texts;
}

std::vector<HMKRecordedPaint> HMKRecordingContext::paintsOfKind(HMKRecordedPaint::Kind kind) const {
    std::vector<HMKRecordedPaint> result;
    for (const HMKRecordedPaint& paint : paints_) {
        if (paint.kind == kind) {
            result.push_back(paint);
        }
    }
    return result;
}

HMKRecordedCall& HMKRecordingContext::record(Operation operation, std::vector<double> numbers) {
    calls_.push_back(HMKRecordedCall{operation, std::move(numbers), {}, {}});
    return calls_.back();
}

void HMKRecordingContext::appendPath(const std::string& element,
                                     std::initializer_list<double> numbers) {
    if (!path_.empty()) {
        path_ += ' ';
    }
    path_ += element;
    for (double value : numbers) {
        path_ += ' ' + number(value);
    }
}

void HMKRecordingContext::saveState() {
    record(Operation::saveState, {});
    stack_.push_back(state_);
}

void HMKRecordingContext::restoreState() {
    record(Operation::restoreState, {});
    // An unbalanced restore is recorded but changes nothing, so tests can still report it.
    if (!stack_.empty()) {
        state_ = std::move(stack_.back());
        stack_.pop_back();
    }
}

void HMKRecordingContext::setRoundLineCap() {
    record(Operation::setRoundLineCap, {});
}

void HMKRecordingContext::setLineWidth(double width) {
    record(Operation::setLineWidth, {width});
    state_.lineWidth = width;
}

void HMKRecordingContext::setLineDash(const std::vector<double>& pattern) {
    record(Operation::setLineDash, pattern);
    state_.dash = pattern;
}

void HMKRecordingContext::setStrokeColor(const HMKRgba& color) {
    record(Operation::setStrokeColor, {}).color = color;
    state_.strokeColor = color;
}

void HMKRecordingContext::setFillColor(const HMKRgba& color) {
    record(Operation::setFillColor, {}).color = color;
    state_.fillColor = color;
}

void HMKRecordingContext::moveTo(double x, double y) {
    record(Operation::moveTo, {x, y});
    appendPath("M", {x, y});
}

void HMKRecordingContext::lineTo(double x, double y) {
    record(Operation::lineTo, {x, y});
    appendPath("L", {x, y});
}

void HMKRecordingContext::addArc(double centerX, double centerY, double radius, double startAngle,
                                 double endAngle, bool clockwise) {
    record(Operation::addArc,
           {centerX, centerY, radius, startAngle, endAngle, clockwise ? 1.0 : 0.0});
    appendPath(clockwise ? "CW" : "CCW", {centerX, centerY, radius, startAngle, endAngle});
}

void HMKRecordingContext::addRect(double x, double y, double width, double height) {
    record(Operation::addRect, {x, y, width, height});
    appendPath("R", {x, y, width, height});
}

void HMKRecordingContext::strokePath() {
    record(Operation::strokePath, {});
    HMKRecordedPaint paint;
    paint.kind = HMKRecordedPaint::Kind::stroke;
    paint.path = std::move(path_);
    paint.lineWidth = state_.lineWidth;
    paint.dash = state_.dash;
    paint.color = state_.strokeColor;
    paint.stateDepth = stateDepth();
    paints_.push_back(std::move(paint));
    path_.clear();
}

void HMKRecordingContext::fillPath() {
    record(Operation::fillPath, {});
    HMKRecordedPaint paint;
    paint.kind = HMKRecordedPaint::Kind::fill;
    paint.path = std::move(path_);
    paint.color = state_.fillColor;
    paint.stateDepth = stateDepth();
    paints_.push_back(std::move(paint));
    path_.clear();
}

void HMKRecordingContext::clipToPath() {
    record(Operation::clipToPath, {});
    // Only the innermost clip is remembered; the renderer never nests clips.
    state_.clip = std::move(path_);
    path_.clear();
}

void HMKRecordingContext::drawLinearGradient(const HMKGradient& gradient, double startX,
                                             double startY, double endX, double endY) {
    record(Operation::drawLinearGradient, {startX, startY, endX, endY}).gradient = gradient;
    HMKRecordedPaint paint;
    paint.kind = HMKRecordedPaint::Kind::gradient;
    paint.path = state_.clip;
    paint.gradient = gradient;
    paint.startX = startX;
    paint.startY = startY;
    paint.endX = endX;
    paint.endY = endY;
    paint.stateDepth = stateDepth();
    paints_.push_back(std::move(paint));
}
