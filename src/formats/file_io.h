// Whole-file reads and atomic whole-file writes, the only file access readers and writers
// use. A write goes to a temporary file in the target's folder that is renamed into place,
// so a failed write leaves an existing target byte for byte as it was. Errors here come from
// the operating system (domain kHMKPosixErrorDomain, a text that starts with the path).
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "model/error.h"

// --- Reading -------------------------------------------------------------------------------
// The file's bytes, or none when it cannot be read (missing, unreadable, or not a regular
// file: a folder, a FIFO or a device is refused without blocking on it).
std::optional<std::vector<std::uint8_t>> readWholeFile(const std::filesystem::path& path,
                                                       HMKError* error = nullptr);

// Whether readWholeFile could read path, without reading it; otherwise false with the reason
// ("No such file or directory", "Permission denied", "Is a directory", "Not a regular file").
bool checkReadableFile(const std::filesystem::path& path, HMKError* error = nullptr);

// --- Writing -------------------------------------------------------------------------------
// Writes bytes to path atomically; on failure returns false with the file system's error
// and removes the temporary file. An existing file that may not be written (no write
// permission for this user, or none for anybody) is refused and left alone; a replaced file
// keeps its permissions, and a symbolic link is written through, so the link stays a link.
bool writeFileAtomically(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
                         HMKError* error = nullptr);

// --- Names ---------------------------------------------------------------------------------
// The file name's extension without the dot, lower-cased ("Rose.DST" -> "dst"); formats are
// chosen by it alone.
std::string lowercaseExtension(const std::filesystem::path& path);
