// The keyed design archive: the document's own file type (".hemlark"), its pasteboard data
// and the restorable state. A design is stored with its stitches, threads, colours and hoop
// as a binary property list in the keyed-archiver layout that property-list tools can read;
// the keys and their decoding defaults are part of the stored format and never change.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "model/design.h"
#include "model/error.h"

// Errors of reading an archive that is not a design archive or is damaged; the detail of
// what was wrong is in the error's failure reason.
inline constexpr std::string_view kHMKArchiveErrorDomain = "org.hemlark.Hemlark.ArchiveErrorDomain";
inline constexpr int kHMKArchiveNotAnArchive = 1;
inline constexpr int kHMKArchiveDamaged = 2;

// --- In memory (pasteboard, restorable state) ------------------------------------------------
std::vector<std::uint8_t> archiveDesign(const HMKDesign& design);
// The archived design with its display range reset to all stitch records; none, with an
// error when one was asked for, when the data is no design archive or is damaged.
std::optional<HMKDesign> unarchiveDesign(std::span<const std::uint8_t> data,
                                         HMKError* error = nullptr);

// --- Files (the document type) ---------------------------------------------------------------
// Writes atomically: a failed write leaves an existing file as it was.
bool writeDesignArchive(const std::filesystem::path& path, const HMKDesign& design,
                        HMKError* error = nullptr);
std::optional<HMKDesign> readDesignArchive(const std::filesystem::path& path,
                                           HMKError* error = nullptr);
