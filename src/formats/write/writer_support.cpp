#include "formats/write/writer_support.h"

#include <charconv>
#include <cstdlib>
#include <cstring>

#include "model/placeholder_threads.h"

namespace {

// Converts UTF-8 to one byte per character, replacing characters above limit.
std::string toSingleByte(std::string_view utf8, char32_t limit) {
    std::string result;
    result.reserve(utf8.size());
    for (std::size_t i = 0; i < utf8.size();) {
        auto lead = static_cast<unsigned char>(utf8[i]);
        std::size_t length = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
        char32_t code = length == 1 ? lead : lead & (0x3F >> (length - 1));
        for (std::size_t k = 1; k < length && i + k < utf8.size(); ++k) {
            code = (code << 6) | (static_cast<unsigned char>(utf8[i + k]) & 0x3F);
        }
        // Stray continuation bytes (invalid UTF-8) are treated like unsupported characters.
        bool valid = lead < 0x80 || lead >= 0xC0;
        result.push_back(valid && code < limit ? static_cast<char>(code) : '?');
        i += length;
    }
    return result;
}

// Now, unless the environment asks for a fixed moment for reproducible output.
std::tm defaultTimeOfWriting() {
    std::tm calendar{};
    const char* epoch = std::getenv("SOURCE_DATE_EPOCH");
    std::time_t seconds = 0;
    if (epoch != nullptr) {
        const char* end = epoch + std::strlen(epoch);
        const auto [stop, problem] = std::from_chars(epoch, end, seconds);
        // Up to the last second of year 9999, which four-digit years can still write.
        constexpr std::time_t kLastWritableSecond = 253402300799;
        if (problem == std::errc() && stop == end && seconds >= 0 &&
            seconds <= kLastWritableSecond && gmtime_r(&seconds, &calendar) != nullptr) {
            return calendar;
        }
    }
    seconds = std::time(nullptr);
    localtime_r(&seconds, &calendar);
    return calendar;
}

HMKWriterClock& writerClock() {
    static HMKWriterClock clock;
    return clock;
}

}  // namespace

void setWriterClock(HMKWriterClock clock) {
    writerClock() = std::move(clock);
}

std::tm timeOfWriting() {
    return writerClock() ? writerClock()() : defaultTimeOfWriting();
}

HMKVendorThreads convertThreadsToVendor(const std::vector<HMKThread>& threads,
                                        const std::string& palette,
                                        const std::map<std::int32_t, std::string>& codeTable,
                                        std::int32_t fallbackCode) {
    HMKVendorThreads result;
    result.converted.reserve(threads.size());
    result.codes.reserve(threads.size());
    for (const HMKThread& thread : threads) {
        HMKThread copy = thread;
        if (copy.palette != palette) {
            copy.changeToColor(thread.color, palette);
        }
        std::int32_t code = fallbackCode;
        for (const auto& [index, key] : codeTable) {
            if (key == copy.key) {
                code = index;
                break;
            }
        }
        result.codes.push_back(code);
        result.converted.push_back(std::move(copy));
    }
    return result;
}

void replaceByPlaceholders(std::vector<HMKThread>& threads) {
    HMKPlaceholderThreads placeholders;
    for (std::size_t i = 0; i < threads.size(); ++i) {
        threads[i] = placeholders.thread(i);
    }
}

std::string nameWithoutExtension(const std::string& designName) {
    std::size_t dot = designName.rfind('.');
    return dot == std::string::npos || dot == 0 ? designName : designName.substr(0, dot);
}

std::string toAscii(std::string_view utf8) {
    return toSingleByte(utf8, 0x80);
}

std::string toLatin1(std::string_view utf8) {
    return toSingleByte(utf8, 0x100);
}

std::string padOrCut(std::string text, std::size_t width) {
    text.resize(width, ' ');
    return text;
}
