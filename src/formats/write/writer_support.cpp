#include "formats/write/writer_support.h"

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

}  // namespace

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
