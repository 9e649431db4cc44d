#include "formats/write/byte_writer.h"

// Out of line: GCC 12 reports a false -Wstringop-overflow when these inserts are inlined
// into a freshly reserved buffer (GCC bug 106199).
void HMKByteWriter::repeat(std::uint8_t value, std::size_t count) {
    bytes_.insert(bytes_.end(), count, value);
}

void HMKByteWriter::text(std::string_view characters) {
    bytes_.insert(bytes_.end(), characters.begin(), characters.end());
}
