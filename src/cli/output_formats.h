// What `hemlark convert` can write, known before any design is read, so that a wrong output
// or `--to` is a command-line mistake caught once, up front, rather than an error per file.
#pragma once

#include <string>
#include <string_view>

struct HMKOutputFormat {
    // Lower-case, without the dot ("pes").
    std::string_view extension;
    // The vendor whose hoop codes the file records ("Janome" for JEF); "" when it records
    // no hoop, so a hoop chosen for it would be dropped.
    std::string_view hoopVendor;
    // The JSON dump of the design rather than an export; it keeps any hoop.
    bool isDump = false;
};

// The format for an extension (any case, with or without the dot); null when there is none.
const HMKOutputFormat* outputFormatNamed(std::string_view extension);

// "dst, pes, pec, jef, exp, pcs or json", for messages.
std::string outputFormatList();

// The jump-normalisation tag of a writable format ("PES" for "pes", any case); "" for none.
std::string formatTagNamed(std::string_view name);
