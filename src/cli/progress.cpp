#include "cli/progress.h"

#include <unistd.h>

#include <algorithm>

namespace {

constexpr int kBarWidth = 30;
// Long file names are cut from the left so the bar keeps to one terminal line.
constexpr std::size_t kLabelWidth = 32;

std::string shortened(const std::string& label) {
    if (label.size() <= kLabelWidth) {
        return label;
    }
    return "..." + label.substr(label.size() - (kLabelWidth - 3));
}

}  // namespace

HMKProgress::HMKProgress(std::size_t total, std::FILE* stream)
    : HMKProgress(total, stream, isatty(fileno(stream)) != 0) {}

HMKProgress::HMKProgress(std::size_t total, std::FILE* stream, bool drawBar)
    : total_(total), stream_(stream), drawBar_(drawBar) {
    if (drawBar_) {
        std::lock_guard lock(mutex_);
        drawBarLocked("");
    }
}

void HMKProgress::succeeded(const std::string& input, const std::string& output) {
    std::lock_guard lock(mutex_);
    ++done_;
    if (drawBar_) {
        drawBarLocked(input);
    } else {
        std::fprintf(stream_, "[%zu/%zu] %s -> %s\n", done_, total_, input.c_str(), output.c_str());
    }
}

void HMKProgress::failed(const std::string& input, const HMKError& error) {
    std::lock_guard lock(mutex_);
    ++done_;
    ++failures_;
    exitCode_ = std::max(exitCode_, exitCodeFor(error));
    const std::string line = errorLine(error, input);
    printAboveBarLocked(
        drawBar_ ? line : "[" + std::to_string(done_) + "/" + std::to_string(total_) + "] " + line,
        input);
}

void HMKProgress::warned(const std::string& input, const HMKWarnings& warnings) {
    std::lock_guard lock(mutex_);
    for (const std::string& warning : warnings) {
        printAboveBarLocked(warningLine(input, warning), input);
    }
}

void HMKProgress::printAboveBarLocked(const std::string& line, const std::string& label) {
    // Clear the bar, print the line, then draw the bar again below it.
    if (drawBar_) {
        std::fputs("\r\033[K", stream_);
    }
    std::fputs(line.c_str(), stream_);
    if (drawBar_) {
        drawBarLocked(label);
    }
}

void HMKProgress::finish() {
    std::lock_guard lock(mutex_);
    if (drawBar_) {
        std::fprintf(stream_, "\n");
    }
    std::fflush(stream_);
}

std::size_t HMKProgress::failures() const {
    std::lock_guard lock(mutex_);
    return failures_;
}

int HMKProgress::exitCode() const {
    std::lock_guard lock(mutex_);
    return exitCode_;
}

void HMKProgress::drawBarLocked(const std::string& label) {
    const int filled = total_ == 0 ? kBarWidth : static_cast<int>(done_ * kBarWidth / total_);
    std::string bar(filled, '#');
    bar.append(kBarWidth - filled, '-');
    std::fprintf(stream_, "\r\033[K[%s] %zu/%zu %s", bar.c_str(), done_, total_,
                 shortened(label).c_str());
    std::fflush(stream_);
}
