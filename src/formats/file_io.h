// Whole-file reads and atomic whole-file writes, the only file access readers and writers
// use. A write goes to a temporary file in the target's folder that is renamed into place,
// so a failed write leaves an existing target byte for byte as it was.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "model/error.h"

// The file's bytes, or none when it cannot be read (missing, a folder, unreadable).
std::optional<std::vector<std::uint8_t>> readWholeFile(const std::filesystem::path& path);

// Writes bytes to path atomically; on failure returns false with the file system's error
// and removes the temporary file.
bool writeFileAtomically(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
                         HMKError* error = nullptr);

// The file name's extension without the dot, lower-cased ("Rose.DST" -> "dst"); formats are
// chosen by it alone.
std::string lowercaseExtension(const std::filesystem::path& path);
