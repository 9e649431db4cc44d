// Stand-in until the reader lands: refuses every file as an unknown format.
#include "model/design.h"

bool HMKDesign::importVp3DesignFromURL(const std::filesystem::path&, HMKError* error) {
    return fail(error, 10, "Unknown file format (UTI).");
}
