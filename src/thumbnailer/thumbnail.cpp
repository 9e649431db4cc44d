#include "thumbnailer/thumbnail.h"

#include <algorithm>
#include <string>
#include <system_error>

#include "platform/design_picture.h"

bool readThumbnailDesign(const std::filesystem::path& path, HMKDesign& design, HMKError* error) {
    std::error_code status;
    // A pipe or a device would block the read or never end.
    if (!std::filesystem::is_regular_file(path, status)) {
        return fail(error, kThumbnailInputError, "The design is not a readable file.");
    }
    const std::uintmax_t bytes = std::filesystem::file_size(path, status);
    if (status || bytes > kMaximumThumbnailInputBytes) {
        return fail(error, kThumbnailInputError, "The design file is too large for a thumbnail.");
    }
    return design.importDesignFromURL(path, error);
}

std::optional<std::vector<std::uint8_t>> designThumbnailPng(const HMKDesign& design, int sizePixels,
                                                            HMKError* error) {
    if (sizePixels < kMinimumThumbnailSize || sizePixels > kMaximumThumbnailSize) {
        fail(error, kThumbnailSizeError,
             "The thumbnail size must be between " + std::to_string(kMinimumThumbnailSize) +
                 " and " + std::to_string(kMaximumThumbnailSize) + " pixels.");
        return std::nullopt;
    }
    HMKPictureOptions options;
    // A thin margin keeps the antialiased edge inside; file managers add their own spacing.
    options.marginPixels = std::max(1, sizePixels / 64);
    options.show3D = true;
    fitPictureToDesign(design, sizePixels, options);
    return designPictureData(design, HMKPictureFormat::png, options, error);
}
