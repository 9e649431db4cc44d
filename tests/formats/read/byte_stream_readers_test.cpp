// EXP, SEW and KSM files made byte by byte, and what the readers make of them against
// tests/golden/read-exp-sew-ksm.txt.
#include "formats/read/readers.h"
#include "support/test_support.h"

namespace {

// SEW: the colour count and codes, then the stitch records from their fixed offset on.
Bytes sewFile(const std::vector<std::uint32_t>& codes, const Bytes& records = {0x01, 0x01}) {
    DesignBytes bytes;
    bytes.u16le(static_cast<std::uint32_t>(codes.size()));
    for (auto code : codes)
        bytes.u16le(code);
    return bytes.padTo(7544).bytes(records);
}

// KSM: the unread 512-byte header, then records of y magnitude, x magnitude and flag.
Bytes ksmFile(const Bytes& records) {
    return DesignBytes().zeros(512).bytes(records);
}
// Records of (1, 1) with the given flags.
Bytes ksmFlags(const Bytes& flags) {
    Bytes records;
    for (auto flag : flags)
        records.insert(records.end(), {0x01, 0x01, flag});
    return ksmFile(records);
}

}  // namespace

TEST(ByteStreamReaders, ReadWhatTheGoldenFileRecords) {
    using Reader = decltype(&importExpDesignFromData);
    const std::tuple<std::string, Reader, Bytes> cases[] = {
        {"EXP: a plain stitch is signed", importExpDesignFromData, {0x05, 0xFB, 0x7F, 0x80}},
        {"EXP: an escaped zero stitch", importExpDesignFromData, {0x80, 0x80, 0x11, 0x22}},
        {"EXP: odd codes change colour ignoring the last bytes",
         importExpDesignFromData,
         {0x80, 0x01, 0x00, 0x00, 0x80, 0x7F, 0x09, 0x09}},
        {"EXP: negative odd, even and zero codes jump",
         importExpDesignFromData,
         {0x80, 0x81, 0x05, 0x05, 0x80, 0x02, 0x0A, 0xF6, 0x80, 0x00, 0x03, 0x04}},
        {"EXP: a cut-short escape ends reading", importExpDesignFromData, {0x01, 0x02, 0x80, 0x02}},
        {"EXP: no bytes", importExpDesignFromData, {}},
        {"EXP: bounds from every record",
         importExpDesignFromData,
         {0x0A, 0x00, 0x80, 0x02, 0xE2, 0x05, 0x80, 0x01, 0, 0, 0x05, 0xF6}},
        {"EXP: an odd length", importExpDesignFromData, {0x01, 0x02, 0x03}},
        {"SEW: every record kind; colour changes take the next thread", importSewDesignFromData,
         sewFile({1, 2}, {0x05, 0xFB, 0x80, 0x01, 0x07, 0x07, 0x80, 0x02, 0x0A, 0xF6, 0x80, 0x04,
                          0x05, 0x05})},
        {"SEW: reading ends at the end record", importSewDesignFromData,
         sewFile({1}, {0x01, 0x01, 0x80, 0x10, 0x02, 0x02, 0x03, 0x03})},
        {"SEW: at an escape in the last three bytes", importSewDesignFromData,
         sewFile({1}, {0x01, 0x01, 0x80, 0x04})},
        {"SEW: at a lone byte", importSewDesignFromData, sewFile({1}, {0x01, 0x01, 0x05})},
        {"SEW: bounds from every record", importSewDesignFromData,
         sewFile({1}, {0x0A, 0x00, 0x80, 0x02, 0xE2, 0x05, 0x05, 0xF6})},
        {"SEW: Janome codes", importSewDesignFromData, sewFile({1, 2, 12})},
        {"SEW: an extended code raises the version, an unknown one gives no key",
         importSewDesignFromData, sewFile({1, 13, 500})},
        {"SEW: twelve colours", importSewDesignFromData,
         sewFile(std::vector<std::uint32_t>(12, 1))},
        {"SEW: no stitch data", importSewDesignFromData, sewFile({1}, {})},
        {"SEW: no colours", importSewDesignFromData, sewFile({})},
        {"SEW: thirteen colours", importSewDesignFromData,
         sewFile(std::vector<std::uint32_t>(13, 1))},
        {"SEW: 65535 colours", importSewDesignFromData, DesignBytes().u16le(0xFFFF).padTo(7546)},
        {"KSM: 515 bytes, both sign bits, the first record jumps", importKsmDesignFromData,
         ksmFile({0x0A, 0x05, 0xE0})},
        {"KSM: sign bits", importKsmDesignFromData, ksmFile({2, 3, 0xC0, 2, 3, 0xA0, 2, 3, 0x80})},
        {"KSM: an incomplete last record", importKsmDesignFromData,
         ksmFile({0x01, 0x01, 0x80, 0x01, 0x01})},
        {"KSM: the end record", importKsmDesignFromData,
         ksmFile({1, 1, 0x98, 1, 1, 0x88, 1, 1, 0x80})},
        {"KSM: bounds from every record", importKsmDesignFromData,
         ksmFile({0x00, 0x0A, 0x98, 0x05, 0x1E, 0xC0, 0x0A, 0x05, 0xA0})},
        {"KSM: the first records jump until a run ends", importKsmDesignFromData,
         ksmFlags({0x80, 0x80, 0x98, 0x80})},
        {"KSM: a run end matches under its mask", importKsmDesignFromData, ksmFlags({0xB8, 0x80})},
        {"KSM: 0x89 starts a run", importKsmDesignFromData,
         ksmFlags({0x98, 0x80, 0x89, 0x80, 0x98, 0x80})},
        {"KSM: 0x87 under its mask starts a run", importKsmDesignFromData,
         ksmFlags({0x98, 0x97, 0x80, 0x98, 0x80})},
        {"KSM: a colour change is a jump and starts a run", importKsmDesignFromData,
         ksmFlags({0x98, 0x80, 0x8B, 0x80, 0x98, 0x80})},
        {"KSM: a colour change matches under its mask", importKsmDesignFromData,
         ksmFlags({0x98, 0xEC, 0x80, 0x98, 0x80})},
        {"KSM: 514 bytes", importKsmDesignFromData, Bytes(514, 0)},
        {"KSM: a flag without bit 7", importKsmDesignFromData, ksmFlags({0x98, 0x80, 0x7F, 0x80})},
    };
    std::string trace;
    for (const auto& [name, reader, bytes] : cases)
        trace += "# " + name + "\n" + describe(readWith(reader, bytes));
    expectGolden(trace, "read-exp-sew-ksm.txt");
}
