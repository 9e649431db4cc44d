// Facts about the Qt layer the rest of the program may want to report.
#pragma once

#include <string>

// The Qt version the program runs with.
std::string qtRuntimeVersion();
