// Finds the application's resource files (string tables, thread palettes). They are looked
// up beside an installed executable (<prefix>/share/hemlark), then in the source tree the
// program was built from, so the build tree, an installed prefix and the tests all work
// without environment variables.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string_view>

// The existing file or folder for a path relative to the resources folder, if any.
std::optional<std::filesystem::path> findResource(std::string_view relativePath);

// Makes dir the first place searched (tests point it at folders they build).
void setResourceOverrideDirectory(std::optional<std::filesystem::path> dir);

// Changes whenever the search places change, so caches of loaded resources know to start over.
std::uint64_t resourceGeneration();
