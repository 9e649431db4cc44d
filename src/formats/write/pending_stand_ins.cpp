// Temporary stand-ins for operations the writers call that other subsystems are still
// building (palette code tables, thread side file, import dispatch). CMakeLists.txt compiles
// each one only while no real definition exists in src/, so they disappear on their own once
// the real ones land; this file can then be deleted.
#include <filesystem>
#include <system_error>

#include "model/design.h"

#ifdef HEMLARK_STAND_IN_JANOMECOLORCODES
std::map<std::int32_t, std::string> HMKDesign::janomeColorCodes() {
    std::map<std::int32_t, std::string> codes{
        {0, "x9"},   {1, "002"},  {2, "001"},  {3, "204"},  {4, "203"},  {5, "219"},  {6, "226"},
        {7, "217"},  {8, "208"},  {9, "201"},  {10, "225"}, {11, "214"}, {12, "207"}, {13, "003"},
        {14, "205"}, {74, "202"}, {75, "206"}, {76, "222"}, {77, "223"}, {78, "224"}};
    // 15 to 73 run in sequence from "209", skipping keys a lower index already uses.
    int key = 209;
    for (std::int32_t index = 15; index <= 73; ++index, ++key) {
        while (key == 214 || key == 217 || key == 219 || key == 222 || key == 223 || key == 224 ||
               key == 225 || key == 226) {
            ++key;
        }
        codes[index] = std::to_string(key);
    }
    return codes;
}
#endif

#ifdef HEMLARK_STAND_IN_BROTHERCOLORCODES
std::map<std::int32_t, std::string> HMKDesign::brotherColorCodes() {
    return {{1, "007"},  {2, "405"},  {3, "534"},  {4, "070"},  {5, "800"},  {6, "337"},
            {7, "620"},  {8, "810"},  {9, "612"},  {10, "502"}, {11, "214"}, {12, "208"},
            {13, "205"}, {14, "513"}, {15, "328"}, {16, "005"}, {17, "330"}, {18, "010"},
            {19, "704"}, {20, "900"}, {21, "406"}, {22, "869"}, {23, "707"}, {24, "058"},
            {25, "086"}, {26, "323"}, {27, "079"}, {28, "030"}, {29, "001"}, {30, "613"},
            {31, "542"}, {32, "019"}, {33, "126"}, {34, "812"}, {35, "348"}, {36, "339"},
            {37, "509"}, {38, "415"}, {39, "817"}, {40, "399"}, {41, "517"}, {42, "307"},
            {43, "085"}, {44, "808"}, {45, "804"}, {46, "607"}, {47, "843"}, {48, "807"},
            {49, "333"}, {50, "519"}, {51, "107"}, {52, "209"}, {53, "017"}, {54, "507"},
            {55, "614"}, {56, "515"}, {57, "124"}, {58, "206"}, {59, "420"}, {60, "202"},
            {61, "027"}, {62, "x9"},  {63, "x8"},  {64, "x7"}};
}
#endif

#ifdef HEMLARK_STAND_IN_EXPORTTHREADSFORDESIGN
bool HMKDesign::exportThreadsForDesign(const std::filesystem::path&) const {
    return true;
}
#endif

#ifdef HEMLARK_STAND_IN_DELETETHREADSFROMDESIGN
bool HMKDesign::deleteThreadsFromDesign(const std::filesystem::path& url) const {
    std::filesystem::path sideFile = url;
    sideFile.replace_extension("threads");
    std::error_code ignored;
    std::filesystem::remove(sideFile, ignored);
    return !std::filesystem::exists(sideFile, ignored);
}
#endif

#ifdef HEMLARK_STAND_IN_IMPORTDESIGNFROMURL
bool HMKDesign::importDesignFromURL(const std::filesystem::path&, HMKError* error) {
    return fail(error, 10, "Unknown file format (UTI).");
}
#endif
