#include "formats/file_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <string>

namespace {

// Closes the descriptor and removes the temporary file unless the write was committed.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::filesystem::path& target) {
        std::string pattern =
            (target.parent_path().empty() ? std::filesystem::path(".") : target.parent_path()) /
            ("." + target.filename().string() + ".XXXXXX");
        name_ = pattern;
        descriptor_ = ::mkstemp(name_.data());
        error_ = descriptor_ < 0 ? errno : 0;
    }
    ~TemporaryFile() {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
        if (!committed_ && descriptor_ >= 0) {
            ::unlink(name_.c_str());
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    int descriptor() const { return descriptor_; }
    int error() const { return error_; }
    const std::string& name() const { return name_; }
    void commit() { committed_ = true; }

private:
    std::string name_;
    int descriptor_ = -1;
    int error_ = 0;
    bool committed_ = false;
};

bool failWith(HMKError* error, int errorNumber, const std::filesystem::path& path) {
    if (error) {
        *error = makePosixError(errorNumber, path.string());
    }
    return false;
}

}  // namespace

std::optional<std::vector<std::uint8_t>> readWholeFile(const std::filesystem::path& path) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) {
        return std::nullopt;
    }
    std::vector<std::uint8_t> bytes;
    struct stat info {};
    if (::fstat(::fileno(file), &info) != 0 || !S_ISREG(info.st_mode)) {
        std::fclose(file);
        return std::nullopt;
    }
    bytes.reserve(static_cast<std::size_t>(info.st_size));
    std::uint8_t buffer[1 << 16];
    std::size_t count;
    while ((count = std::fread(buffer, 1, sizeof buffer, file)) > 0) {
        bytes.insert(bytes.end(), buffer, buffer + count);
    }
    bool failed = std::ferror(file) != 0;
    std::fclose(file);
    if (failed) {
        return std::nullopt;
    }
    return bytes;
}

bool writeFileAtomically(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
                         HMKError* error) {
    TemporaryFile temporary(path);
    if (temporary.descriptor() < 0) {
        return failWith(error, temporary.error(), path);
    }
    const std::uint8_t* data = bytes.data();
    std::size_t left = bytes.size();
    while (left > 0) {
        ssize_t written = ::write(temporary.descriptor(), data, left);
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return failWith(error, errno, path);
        }
        data += written;
        left -= static_cast<std::size_t>(written);
    }
    // Keep the usual permissions of a new document rather than mkstemp's 0600.
    mode_t mask = ::umask(0);
    ::umask(mask);
    ::fchmod(temporary.descriptor(), 0666 & ~mask);
    if (::fsync(temporary.descriptor()) != 0) {
        return failWith(error, errno, path);
    }
    if (::rename(temporary.name().c_str(), path.c_str()) != 0) {
        return failWith(error, errno, path);
    }
    temporary.commit();
    return true;
}

std::string lowercaseExtension(const std::filesystem::path& path) {
    std::string extension = path.extension().string();
    if (!extension.empty() && extension.front() == '.') {
        extension.erase(0, 1);
    }
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}
