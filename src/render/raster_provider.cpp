#include "render/raster_provider.h"

#include <mutex>

namespace {

std::mutex providerMutex;
std::shared_ptr<HMKRasterProvider> installedProvider;

}  // namespace

void installRasterProvider(std::shared_ptr<HMKRasterProvider> provider) {
    std::lock_guard lock(providerMutex);
    installedProvider = std::move(provider);
}

std::shared_ptr<HMKRasterProvider> rasterProvider() {
    std::lock_guard lock(providerMutex);
    return installedProvider;
}
