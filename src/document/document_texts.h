// User-visible texts of the document layer (undo action names, alert titles and texts,
// thread-list menu items), looked up by key in the "HMKDocument" string table with an
// English default, like every other text of the program.
#pragma once

#include <string_view>

#include <QString>

#include "model/strings.h"

inline constexpr std::string_view kDocumentStringTable = "HMKDocument";

inline QString documentText(std::string_view key, std::string_view defaultText) {
    return QString::fromStdString(localizedString(kDocumentStringTable, key, defaultText));
}
