// Binary property lists ("bplist00"), the container of the keyed design archive. The writer
// keeps a compact object table and lays the file out in one pass at the end; the reader
// looks objects up lazily and checks every offset, count and reference against the data,
// so designs with millions of stitches stay linear in time and memory, and damaged input
// is refused instead of trusted.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "formats/byte_reader.h"

// Builds a binary property list object by object; containers refer to objects added before.
class HMKBinaryPlistWriter {
public:
    using Ref = std::uint32_t;

    // --- Scalars (equal values share one object) -------------------------------------------
    Ref addBool(bool value);
    Ref addInteger(std::int64_t value);
    // Stored at single precision, as four bytes.
    Ref addReal(float value);
    // UTF-8 text; bytes that are not valid UTF-8 are taken as Latin-1 characters.
    Ref addString(std::string_view text);
    Ref addUid(std::uint64_t value);

    // --- Containers ----------------------------------------------------------------------
    Ref addArray(std::span<const Ref> items);
    // keys[i] maps to values[i]; the spans have equal length and keys are string objects.
    Ref addDictionary(std::span<const Ref> keys, std::span<const Ref> values);

    // The whole file with top as its root object.
    std::vector<std::uint8_t> finish(Ref top) const;

private:
    enum class Kind : std::uint8_t {
        False,
        True,
        Integer,
        Real,
        AsciiString,
        Utf16String,
        Uid,
        Array,
        Dictionary
    };
    struct Object {
        Kind kind;
        // Characters or items (a dictionary counts its pairs).
        std::uint32_t count = 0;
        // Scalar value bits, or the start of the object's text or references in its pool.
        std::uint64_t value = 0;
    };
    Ref add(Object object);

    std::vector<Object> objects_;
    std::string text_;
    std::vector<Ref> references_;
    std::optional<Ref> bools_[2];
    std::unordered_map<std::int64_t, Ref> integers_;
    std::unordered_map<std::uint32_t, Ref> reals_;
    std::unordered_map<std::string, Ref> strings_;
};

// Reads a binary property list in place; the bytes must outlive the reader.
class HMKBinaryPlistReader {
public:
    using Ref = std::uint64_t;

    enum class Kind { Null, Bool, Integer, Real, Date, Data, String, Uid, Array, Set, Dictionary };

    // One object's header: its kind, scalar value or the place of its contents.
    struct Object {
        Kind kind = Kind::Null;
        bool boolValue = false;
        std::int64_t integerValue = 0;
        double realValue = 0;
        std::uint64_t uidValue = 0;
        // Bytes of data, characters of a string, items of an array, pairs of a dictionary.
        std::uint64_t count = 0;
        // Where the contents start; strings also note whether they are UTF-16.
        std::size_t contents = 0;
        bool utf16 = false;
    };

    // Checks the header and the trailer; none (with a reason in *problem) when they are bad.
    static std::optional<HMKBinaryPlistReader> open(std::span<const std::uint8_t> bytes,
                                                    std::string* problem = nullptr);

    Ref top() const { return top_; }
    std::uint64_t objectCount() const { return objectCount_; }

    // The object's header; none when its offset or encoding is damaged.
    std::optional<Object> object(Ref ref) const;
    // The reference at index of an array (or set), or the key or value of a dictionary's
    // pair at index; none when out of range or pointing at no object.
    std::optional<Ref> item(const Object& container, std::uint64_t index) const;
    std::optional<Ref> key(const Object& dictionary, std::uint64_t index) const;
    std::optional<Ref> value(const Object& dictionary, std::uint64_t index) const;
    // A string object's text as UTF-8; none for other kinds or broken text.
    std::optional<std::string> string(const Object& object) const;
    // Compares a string object with ASCII text without converting it.
    bool stringEquals(const Object& object, std::string_view ascii) const;

private:
    explicit HMKBinaryPlistReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
    std::optional<std::uint64_t> bigEndian(std::size_t offset, std::size_t size) const;
    std::optional<Ref> reference(std::size_t offset) const;

    HMKByteReader bytes_;
    std::size_t offsetSize_ = 0;
    std::size_t referenceSize_ = 0;
    std::uint64_t objectCount_ = 0;
    Ref top_ = 0;
    std::size_t offsetTable_ = 0;
};
