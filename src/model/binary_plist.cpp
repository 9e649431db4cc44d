#include "model/binary_plist.h"

#include <bit>
#include <cstring>
#include <limits>

namespace {

constexpr std::string_view kMagic = "bplist00";
constexpr std::size_t kTrailerSize = 32;
// Trailer layout: 6 unused bytes, offset size, reference size, then three 8-byte numbers.
constexpr std::size_t kTrailerOffsetSize = 6;
constexpr std::size_t kTrailerReferenceSize = 7;
constexpr std::size_t kTrailerObjectCount = 8;
constexpr std::size_t kTrailerTopObject = 16;
constexpr std::size_t kTrailerOffsetTable = 24;

// Object markers: the high nibble is the type, the low nibble a size or count.
constexpr std::uint8_t kMarkerNull = 0x00;
constexpr std::uint8_t kMarkerFalse = 0x08;
constexpr std::uint8_t kMarkerTrue = 0x09;
constexpr std::uint8_t kMarkerFill = 0x0F;
constexpr std::uint8_t kTypeSimple = 0x0;
constexpr std::uint8_t kTypeInteger = 0x1;
constexpr std::uint8_t kTypeReal = 0x2;
constexpr std::uint8_t kTypeDate = 0x3;
constexpr std::uint8_t kTypeData = 0x4;
constexpr std::uint8_t kTypeAsciiString = 0x5;
constexpr std::uint8_t kTypeUtf16String = 0x6;
constexpr std::uint8_t kTypeUid = 0x8;
constexpr std::uint8_t kTypeArray = 0xA;
constexpr std::uint8_t kTypeSet = 0xC;
constexpr std::uint8_t kTypeDictionary = 0xD;
// A low nibble of 15 means the count follows as an integer object.
constexpr std::uint8_t kCountFollows = 0xF;

// The fewest bytes (1 to 8) that hold value.
std::size_t bytesFor(std::uint64_t value) {
    std::size_t size = 1;
    while (size < 8 && value >> (8 * size) != 0) {
        ++size;
    }
    return size;
}

// Integers and UIDs are written in 1, 2, 4 or 8 bytes, the sizes every reader accepts.
std::size_t powerOfTwoBytesFor(std::uint64_t value) {
    std::size_t size = bytesFor(value);
    return size <= 2 ? size : size <= 4 ? 4 : 8;
}

void appendBigEndian(std::vector<std::uint8_t>& out, std::uint64_t value, std::size_t size) {
    for (std::size_t i = size; i-- > 0;) {
        out.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    }
}

void appendMarker(std::vector<std::uint8_t>& out, std::uint8_t type, std::uint64_t count) {
    if (count < kCountFollows) {
        out.push_back(static_cast<std::uint8_t>(type << 4 | count));
        return;
    }
    out.push_back(static_cast<std::uint8_t>(type << 4 | kCountFollows));
    std::size_t size = powerOfTwoBytesFor(count);
    out.push_back(static_cast<std::uint8_t>(kTypeInteger << 4 | std::countr_zero(size)));
    appendBigEndian(out, count, size);
}

// Decodes one UTF-8 sequence at text[pos]; on a malformed sequence takes the single byte as
// a Latin-1 character, so any byte string converts (names read from old files may be Latin-1).
char32_t nextCodePoint(std::string_view text, std::size_t& pos) {
    auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    unsigned char lead = byte(pos);
    std::size_t length = lead < 0x80           ? 1
                         : (lead >> 5) == 0x6  ? 2
                         : (lead >> 4) == 0xE  ? 3
                         : (lead >> 3) == 0x1E ? 4
                                               : 0;
    if (length > 1 && pos + length <= text.size()) {
        char32_t code = lead & (0x7F >> length);
        bool valid = true;
        for (std::size_t i = 1; i < length && valid; ++i) {
            valid = (byte(pos + i) & 0xC0) == 0x80;
            code = code << 6 | (byte(pos + i) & 0x3F);
        }
        constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
        valid = valid && code >= kSmallest[length] && code <= 0x10FFFF &&
                !(code >= 0xD800 && code <= 0xDFFF);
        if (valid) {
            pos += length;
            return code;
        }
    }
    ++pos;
    return lead;
}

void appendUtf8(std::string& out, char32_t code) {
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | code >> 6);
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0 | code >> 12);
        out += static_cast<char>(0x80 | (code >> 6 & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | code >> 18);
        out += static_cast<char>(0x80 | (code >> 12 & 0x3F));
        out += static_cast<char>(0x80 | (code >> 6 & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

bool isAscii(std::string_view text) {
    for (char c : text) {
        if (static_cast<unsigned char>(c) >= 0x80) {
            return false;
        }
    }
    return true;
}

}  // namespace

// --- Writer ----------------------------------------------------------------------------------

HMKBinaryPlistWriter::Ref HMKBinaryPlistWriter::add(Object object) {
    objects_.push_back(object);
    return static_cast<Ref>(objects_.size() - 1);
}

HMKBinaryPlistWriter::Ref HMKBinaryPlistWriter::addBool(bool value) {
    auto& shared = bools_[value];
    if (!shared) {
        shared = add({value ? Kind::True : Kind::False});
    }
    return *shared;
}

HMKBinaryPlistWriter::Ref HMKBinaryPlistWriter::addInteger(std::int64_t value) {
    auto [found, added] = integers_.try_emplace(value, 0);
    if (added) {
        found->second = add({Kind::Integer, 0, static_cast<std::uint64_t>(value)});
    }
    return found->second;
}

HMKBinaryPlistWriter::Ref HMKBinaryPlistWriter::addReal(float value) {
    auto bits = std::bit_cast<std::uint32_t>(value);
    auto [found, added] = reals_.try_emplace(bits, 0);
    if (added) {
        found->second = add({Kind::Real, 0, bits});
    }
    return found->second;
}

HMKBinaryPlistWriter::Ref HMKBinaryPlistWriter::addString(std::string_view text) {
    auto [found, added] = strings_.try_emplace(std::string(text), 0);
    if (!added) {
        return found->second;
    }
    const std::uint64_t start = text_.size();
    if (isAscii(text)) {
        text_ += text;
        found->second = add({Kind::AsciiString, static_cast<std::uint32_t>(text.size()), start});
        return found->second;
    }
    std::uint32_t units = 0;
    auto appendUnit = [&](char32_t unit) {
        text_ += static_cast<char>(unit >> 8);
        text_ += static_cast<char>(unit & 0xFF);
        ++units;
    };
    for (std::size_t pos = 0; pos < text.size();) {
        char32_t code = nextCodePoint(text, pos);
        if (code >= 0x10000) {
            code -= 0x10000;
            appendUnit(0xD800 | code >> 10);
            appendUnit(0xDC00 | (code & 0x3FF));
        } else {
            appendUnit(code);
        }
    }
    found->second = add({Kind::Utf16String, units, start});
    return found->second;
}

HMKBinaryPlistWriter::Ref HMKBinaryPlistWriter::addUid(std::uint64_t value) {
    return add({Kind::Uid, 0, value});
}

HMKBinaryPlistWriter::Ref HMKBinaryPlistWriter::addArray(std::span<const Ref> items) {
    const std::uint64_t start = references_.size();
    references_.insert(references_.end(), items.begin(), items.end());
    return add({Kind::Array, static_cast<std::uint32_t>(items.size()), start});
}

HMKBinaryPlistWriter::Ref HMKBinaryPlistWriter::addDictionary(std::span<const Ref> keys,
                                                              std::span<const Ref> values) {
    const std::uint64_t start = references_.size();
    references_.insert(references_.end(), keys.begin(), keys.end());
    references_.insert(references_.end(), values.begin(), values.end());
    return add({Kind::Dictionary, static_cast<std::uint32_t>(keys.size()), start});
}

std::vector<std::uint8_t> HMKBinaryPlistWriter::finish(Ref top) const {
    const std::size_t referenceSize = bytesFor(objects_.empty() ? 0 : objects_.size() - 1);
    std::vector<std::uint8_t> out(kMagic.begin(), kMagic.end());
    out.reserve(kMagic.size() + text_.size() + references_.size() * referenceSize +
                objects_.size() * 6 + kTrailerSize);

    std::vector<std::uint64_t> offsets;
    offsets.reserve(objects_.size());
    for (const Object& object : objects_) {
        offsets.push_back(out.size());
        switch (object.kind) {
            case Kind::False:
                out.push_back(kMarkerFalse);
                break;
            case Kind::True:
                out.push_back(kMarkerTrue);
                break;
            case Kind::Integer: {
                // One, two and four byte integers are unsigned; negatives take eight bytes.
                auto value = static_cast<std::int64_t>(object.value);
                std::size_t size = value < 0 ? 8 : powerOfTwoBytesFor(object.value);
                out.push_back(
                    static_cast<std::uint8_t>(kTypeInteger << 4 | std::countr_zero(size)));
                appendBigEndian(out, object.value, size);
                break;
            }
            case Kind::Real:
                out.push_back(static_cast<std::uint8_t>(kTypeReal << 4 | 2));
                appendBigEndian(out, object.value, 4);
                break;
            case Kind::AsciiString:
            case Kind::Utf16String: {
                bool utf16 = object.kind == Kind::Utf16String;
                appendMarker(out, utf16 ? kTypeUtf16String : kTypeAsciiString, object.count);
                const char* begin = text_.data() + object.value;
                out.insert(out.end(), begin, begin + object.count * (utf16 ? 2 : 1));
                break;
            }
            case Kind::Uid: {
                std::size_t size = powerOfTwoBytesFor(object.value);
                out.push_back(static_cast<std::uint8_t>(kTypeUid << 4 | (size - 1)));
                appendBigEndian(out, object.value, size);
                break;
            }
            case Kind::Array:
            case Kind::Dictionary: {
                bool dictionary = object.kind == Kind::Dictionary;
                appendMarker(out, dictionary ? kTypeDictionary : kTypeArray, object.count);
                std::size_t references = object.count * (dictionary ? 2u : 1u);
                for (std::size_t i = 0; i < references; ++i) {
                    appendBigEndian(out, references_[object.value + i], referenceSize);
                }
                break;
            }
        }
    }

    const std::uint64_t offsetTable = out.size();
    const std::size_t offsetSize = bytesFor(offsets.empty() ? 0 : offsets.back());
    for (std::uint64_t offset : offsets) {
        appendBigEndian(out, offset, offsetSize);
    }
    out.insert(out.end(), kTrailerOffsetSize, 0);
    out.push_back(static_cast<std::uint8_t>(offsetSize));
    out.push_back(static_cast<std::uint8_t>(referenceSize));
    appendBigEndian(out, objects_.size(), 8);
    appendBigEndian(out, top, 8);
    appendBigEndian(out, offsetTable, 8);
    return out;
}

// --- Reader ----------------------------------------------------------------------------------

std::optional<HMKBinaryPlistReader> HMKBinaryPlistReader::open(std::span<const std::uint8_t> bytes,
                                                               std::string* problem) {
    auto refuse = [&](const char* reason) -> std::optional<HMKBinaryPlistReader> {
        if (problem) {
            *problem = reason;
        }
        return std::nullopt;
    };
    if (bytes.size() < kMagic.size() + kTrailerSize ||
        std::memcmp(bytes.data(), kMagic.data(), kMagic.size()) != 0) {
        return refuse("not a binary property list");
    }
    HMKBinaryPlistReader reader(bytes);
    const std::size_t trailer = bytes.size() - kTrailerSize;
    reader.offsetSize_ = bytes[trailer + kTrailerOffsetSize];
    reader.referenceSize_ = bytes[trailer + kTrailerReferenceSize];
    reader.objectCount_ = *reader.bigEndian(trailer + kTrailerObjectCount, 8);
    reader.top_ = *reader.bigEndian(trailer + kTrailerTopObject, 8);
    std::uint64_t offsetTable = *reader.bigEndian(trailer + kTrailerOffsetTable, 8);
    if (reader.offsetSize_ < 1 || reader.offsetSize_ > 8 || reader.referenceSize_ < 1 ||
        reader.referenceSize_ > 8) {
        return refuse("property list trailer has invalid sizes");
    }
    if (offsetTable < kMagic.size() || offsetTable > trailer || reader.objectCount_ == 0 ||
        reader.objectCount_ > (trailer - offsetTable) / reader.offsetSize_ ||
        reader.top_ >= reader.objectCount_) {
        return refuse("property list trailer points outside the data");
    }
    reader.offsetTable_ = static_cast<std::size_t>(offsetTable);
    return reader;
}

std::optional<std::uint64_t> HMKBinaryPlistReader::bigEndian(std::size_t offset,
                                                             std::size_t size) const {
    auto bytes = bytes_.slice(offset, size);
    if (!bytes || size > 8) {
        return std::nullopt;
    }
    std::uint64_t value = 0;
    for (std::uint8_t byte : *bytes) {
        value = value << 8 | byte;
    }
    return value;
}

std::optional<HMKBinaryPlistReader::Ref> HMKBinaryPlistReader::reference(std::size_t offset) const {
    auto ref = bigEndian(offset, referenceSize_);
    if (!ref || *ref >= objectCount_) {
        return std::nullopt;
    }
    return ref;
}

std::optional<HMKBinaryPlistReader::Object> HMKBinaryPlistReader::object(Ref ref) const {
    if (ref >= objectCount_) {
        return std::nullopt;
    }
    auto offset =
        bigEndian(offsetTable_ + static_cast<std::size_t>(ref) * offsetSize_, offsetSize_);
    // Objects lie between the magic and the offset table.
    if (!offset || *offset < kMagic.size() || *offset >= offsetTable_) {
        return std::nullopt;
    }
    const HMKByteReader objects(bytes_.bytes().first(offsetTable_));
    std::size_t pos = static_cast<std::size_t>(*offset);
    const std::uint8_t marker = *objects.u8(pos++);
    const std::uint8_t type = marker >> 4;
    const std::uint8_t low = marker & 0x0F;

    Object object;
    auto readNumber = [&](std::size_t size) -> std::optional<std::uint64_t> {
        if (!objects.contains(pos, size)) {
            return std::nullopt;
        }
        auto value = bigEndian(pos, size);
        pos += size;
        return value;
    };
    // A count in the low nibble, or an integer object after the marker; then checks that
    // count units of unitSize bytes fit before the offset table.
    auto readContents = [&](std::size_t unitSize) -> bool {
        std::uint64_t count = low;
        if (low == kCountFollows) {
            auto intMarker = objects.u8(pos++);
            if (!intMarker || *intMarker >> 4 != kTypeInteger || (*intMarker & 0x0F) > 3) {
                return false;
            }
            auto value = readNumber(std::size_t{1} << (*intMarker & 0x0F));
            if (!value) {
                return false;
            }
            count = *value;
        }
        if (pos > offsetTable_ || count > (offsetTable_ - pos) / unitSize) {
            return false;
        }
        object.count = count;
        object.contents = pos;
        return true;
    };

    switch (type) {
        case kTypeSimple:
            if (marker == kMarkerNull || marker == kMarkerFill) {
                object.kind = Kind::Null;
            } else if (marker == kMarkerFalse || marker == kMarkerTrue) {
                object.kind = Kind::Bool;
                object.boolValue = marker == kMarkerTrue;
            } else {
                return std::nullopt;
            }
            return object;
        case kTypeInteger: {
            object.kind = Kind::Integer;
            if (low <= 3) {
                std::size_t size = std::size_t{1} << low;
                auto value = readNumber(size);
                if (!value) {
                    return std::nullopt;
                }
                object.integerValue = static_cast<std::int64_t>(*value);
                return object;
            }
            // Sixteen bytes: only values that also fit in a signed 64-bit integer.
            auto high = readNumber(8);
            auto value = readNumber(8);
            if (low != 4 || !high || !value || *high != 0 ||
                *value > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
                return std::nullopt;
            }
            object.integerValue = static_cast<std::int64_t>(*value);
            return object;
        }
        case kTypeReal:
        case kTypeDate: {
            object.kind = type == kTypeReal ? Kind::Real : Kind::Date;
            if (low == 2 && type == kTypeReal) {
                auto bits = readNumber(4);
                if (!bits)
                    return std::nullopt;
                object.realValue = std::bit_cast<float>(static_cast<std::uint32_t>(*bits));
            } else if (low == 3) {
                auto bits = readNumber(8);
                if (!bits)
                    return std::nullopt;
                object.realValue = std::bit_cast<double>(*bits);
            } else {
                return std::nullopt;
            }
            return object;
        }
        case kTypeData:
            object.kind = Kind::Data;
            return readContents(1) ? std::optional(object) : std::nullopt;
        case kTypeAsciiString:
        case kTypeUtf16String:
            object.kind = Kind::String;
            object.utf16 = type == kTypeUtf16String;
            return readContents(object.utf16 ? 2 : 1) ? std::optional(object) : std::nullopt;
        case kTypeUid: {
            object.kind = Kind::Uid;
            auto value = low < 8 ? readNumber(low + 1u) : std::nullopt;
            if (!value) {
                return std::nullopt;
            }
            object.uidValue = *value;
            return object;
        }
        case kTypeArray:
        case kTypeSet:
            object.kind = type == kTypeArray ? Kind::Array : Kind::Set;
            return readContents(referenceSize_) ? std::optional(object) : std::nullopt;
        case kTypeDictionary:
            object.kind = Kind::Dictionary;
            return readContents(2 * referenceSize_) ? std::optional(object) : std::nullopt;
        default:
            return std::nullopt;
    }
}

std::optional<HMKBinaryPlistReader::Ref> HMKBinaryPlistReader::item(const Object& container,
                                                                    std::uint64_t index) const {
    if ((container.kind != Kind::Array && container.kind != Kind::Set) ||
        index >= container.count) {
        return std::nullopt;
    }
    return reference(container.contents + static_cast<std::size_t>(index) * referenceSize_);
}

std::optional<HMKBinaryPlistReader::Ref> HMKBinaryPlistReader::key(const Object& dictionary,
                                                                   std::uint64_t index) const {
    if (dictionary.kind != Kind::Dictionary || index >= dictionary.count) {
        return std::nullopt;
    }
    return reference(dictionary.contents + static_cast<std::size_t>(index) * referenceSize_);
}

std::optional<HMKBinaryPlistReader::Ref> HMKBinaryPlistReader::value(const Object& dictionary,
                                                                     std::uint64_t index) const {
    if (dictionary.kind != Kind::Dictionary || index >= dictionary.count) {
        return std::nullopt;
    }
    return reference(dictionary.contents +
                     static_cast<std::size_t>(dictionary.count + index) * referenceSize_);
}

std::optional<std::string> HMKBinaryPlistReader::string(const Object& object) const {
    if (object.kind != Kind::String) {
        return std::nullopt;
    }
    const auto& bytes = bytes_.bytes();
    std::string text;
    if (!object.utf16) {
        text.reserve(object.count);
        for (std::size_t i = 0; i < object.count; ++i) {
            appendUtf8(text, bytes[object.contents + i]);
        }
        return text;
    }
    text.reserve(object.count);
    auto unit = [&](std::size_t i) -> char32_t {
        return static_cast<char32_t>(bytes[object.contents + 2 * i] << 8 |
                                     bytes[object.contents + 2 * i + 1]);
    };
    constexpr char32_t kReplacement = 0xFFFD;
    for (std::size_t i = 0; i < object.count; ++i) {
        char32_t code = unit(i);
        if (code >= 0xD800 && code <= 0xDBFF && i + 1 < object.count && unit(i + 1) >= 0xDC00 &&
            unit(i + 1) <= 0xDFFF) {
            code = 0x10000 + ((code - 0xD800) << 10) + (unit(i + 1) - 0xDC00);
            ++i;
        } else if (code >= 0xD800 && code <= 0xDFFF) {
            code = kReplacement;
        }
        appendUtf8(text, code);
    }
    return text;
}

bool HMKBinaryPlistReader::stringEquals(const Object& object, std::string_view ascii) const {
    if (object.kind != Kind::String || object.count != ascii.size()) {
        return false;
    }
    const auto& bytes = bytes_.bytes();
    for (std::size_t i = 0; i < ascii.size(); ++i) {
        auto expected = static_cast<unsigned char>(ascii[i]);
        bool equal = object.utf16 ? bytes[object.contents + 2 * i] == 0 &&
                                        bytes[object.contents + 2 * i + 1] == expected
                                  : bytes[object.contents + i] == expected;
        if (!equal) {
            return false;
        }
    }
    return true;
}
