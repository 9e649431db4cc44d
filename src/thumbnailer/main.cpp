// hemlark-thumbnailer: `hemlark-thumbnailer -s SIZE INPUT OUTPUT` writes a PNG thumbnail of
// an embroidery design, as file managers ask for through the freedesktop thumbnailer
// convention. It exits 0 with the PNG written, or non-zero with nothing written.
#include <charconv>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "formats/file_io.h"
#include "model/diagnostics.h"
#include "thumbnailer/process_limits.h"
#include "thumbnailer/thumbnail.h"

namespace {

constexpr int kExitSuccess = 0;
constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

struct Arguments {
    int sizePixels = 256;
    std::string input;
    std::string output;
};

int usage() {
    std::fputs(
        "Usage: hemlark-thumbnailer [-s SIZE] INPUT OUTPUT\n"
        "Writes a PNG thumbnail of an embroidery design, SIZE pixels (default 256) on\n"
        "its longer side. Exits 0 when OUTPUT was written, and non-zero otherwise.\n",
        stderr);
    return kExitUsage;
}

bool parseSize(std::string_view text, int& size) {
    const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), size);
    return status == std::errc() && end == text.data() + text.size();
}

bool parseArguments(int argc, char** argv, Arguments& arguments) {
    std::vector<std::string_view> files;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "-s" || argument == "--size") {
            if (++i == argc || !parseSize(argv[i], arguments.sizePixels)) {
                return false;
            }
        } else {
            files.push_back(argument);
        }
    }
    if (files.size() != 2) {
        return false;
    }
    arguments.input = files[0];
    arguments.output = files[1];
    return true;
}

int failed(const HMKError& error) {
    std::fprintf(stderr, "hemlark-thumbnailer: %s\n", error.message().c_str());
    return kExitFailure;
}

int makeThumbnail(const Arguments& arguments) {
    HMKDesign design;
    HMKError error;
    if (!readThumbnailDesign(arguments.input, design, &error)) {
        return failed(error);
    }
    const auto png = designThumbnailPng(design, arguments.sizePixels, &error);
    if (!png) {
        return failed(error);
    }
    stopThumbnailerTimeLimits();
    if (!writeFileAtomically(arguments.output, *png, &error)) {
        return failed(error);
    }
    return kExitSuccess;
}

}  // namespace

int main(int argc, char** argv) {
    limitThumbnailerProcess();
    Arguments arguments;
    if (!parseArguments(argc, argv, arguments)) {
        return usage();
    }
    // Notes about missing palettes and the like are for developers, not for file managers.
    setDiagnosticSink([](std::string_view) {});
    try {
        return makeThumbnail(arguments);
    } catch (const std::exception& exception) {
        // Mostly std::bad_alloc at the address-space limit.
        std::fprintf(stderr, "hemlark-thumbnailer: %s\n", exception.what());
        return kExitFailure;
    }
}
