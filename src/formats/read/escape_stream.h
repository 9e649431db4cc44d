// The one loop over the escape-coded 2-byte streams of EXP, SEW, JEF and JPX files: plain
// moves are appended as stitches, and each escape record is handed to the format, which says
// what it means. Used by the EXP, SEW and JEF/JPX readers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "formats/byte_reader.h"
#include "formats/escape_records.h"
#include "formats/read/readers.h"

// What a format makes of one escape record: the stitch it stands for and the bytes it takes
// (a code whose move is not part of the record takes two).
struct HMKEscapeRecord {
    HMKStitch stitch;
    std::size_t size = kEscapeRecordSize;
};

// Decodes the stream from offset to the end of the data. meaning(code, dx, dy) is called for
// every escape record with its code and the signed bytes after it, and returns the record or
// none to end the stream. A lone final byte is never read, and an escape record cut short by
// the end of the data ends the stream quietly, even one whose code would take only two bytes.
template <class Meaning>
void readEscapeStream(const HMKByteReader& reader, std::size_t offset, HMKStitchAppender& appender,
                      Meaning meaning) {
    const std::size_t size = reader.size();
    for (std::size_t position = offset; position + 1 < size;) {
        const std::uint8_t first = reader.u8(position).value_or(0);
        if (first != kEscapeByte) {
            appender.append(static_cast<std::int8_t>(first),
                            static_cast<float>(reader.s8(position + 1).value_or(0)), false, false);
            position += kMoveRecordSize;
            continue;
        }
        if (!reader.contains(position, kEscapeRecordSize)) {
            return;
        }
        const std::optional<HMKEscapeRecord> record =
            meaning(reader.u8(position + 1).value_or(0), reader.s8(position + 2).value_or(0),
                    reader.s8(position + 3).value_or(0));
        if (!record) {
            return;
        }
        appender.append(record->stitch);
        position += record->size;
    }
}
