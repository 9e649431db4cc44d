// Localised user-visible texts. Every text is looked up by table and key with the English
// default given at the call site; tables are optional resources ("strings/<table>.strings",
// lines of `"KEY" = "Text";`) so English needs no table at all. Per-palette thread-name
// tables use the same mechanism, named after the palette.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

inline constexpr std::string_view kDesignStringTable = "HMKDesign";

// The table's text for key, or defaultText when the table or key is missing.
std::string localizedString(std::string_view table, std::string_view key,
                            std::string_view defaultText);

// True when the table exists and holds the key (palette name tables need the difference).
bool hasLocalizedString(std::string_view table, std::string_view key);

// Parses one table file; used by the lookup and by tests. Returns false when unreadable.
bool parseStringTable(const std::filesystem::path& file,
                      std::vector<std::pair<std::string, std::string>>& entries);
