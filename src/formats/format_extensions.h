// The file name extensions the import and export dispatch accept (lower-case, without the
// dot, in dispatch order), for file dialogs and drops that offer only what can be read or
// written.
#pragma once

#include <string>
#include <vector>

std::vector<std::string> importableExtensions();
std::vector<std::string> exportableExtensions();
