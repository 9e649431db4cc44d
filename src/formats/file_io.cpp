#include "formats/file_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

namespace {

// Asking for the umask means setting it, so it is asked once while the program starts, before
// any thread runs: toggling it during a write would give files that other threads create at
// that moment the wrong permissions.
const mode_t kUmaskAtStartUp = [] {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return mask;
}();

// Symbolic links are followed this many times at most, as the kernel does.
constexpr int kMaximumLinkHops = 40;

constexpr std::string_view kNotRegularFile = "Not a regular file";
constexpr std::string_view kReadOnlyFile = "Permission denied (read-only file, left unchanged)";

// An operating-system error for path; the reason defaults to the error number's text. errno
// is left set to the number, for callers that look at it.
bool failWith(HMKError* error, int errorNumber, const std::filesystem::path& path,
              std::string_view reason = {}) {
    if (error) {
        *error = makePosixError(errorNumber, path.string());
        if (!reason.empty()) {
            error->recoverySuggestion = path.string() + ": " + std::string(reason);
        }
    }
    errno = errorNumber;
    return false;
}

class Descriptor {
public:
    explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
    ~Descriptor() {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return descriptor_; }
    int release() { return std::exchange(descriptor_, -1); }

private:
    int descriptor_;
};

// Opens path for reading: the descriptor, or -1 for anything but a regular file. O_NONBLOCK
// keeps opening a FIFO that has no writer from waiting for one; regular files ignore it.
int openRegularFile(const std::filesystem::path& path, HMKError* error) {
    Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat info {};
    if (file.get() < 0 || ::fstat(file.get(), &info) != 0) {
        failWith(error, errno, path);
    } else if (S_ISDIR(info.st_mode)) {
        failWith(error, EISDIR, path);
    } else if (!S_ISREG(info.st_mode)) {
        failWith(error, EINVAL, path, kNotRegularFile);
    } else {
        return file.release();
    }
    return -1;
}

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

// Where a write to path lands: a symbolic link is followed to the file it names, so that the
// file is replaced and the link stays (a link to a missing file creates that file).
std::filesystem::path followLinks(const std::filesystem::path& path) {
    std::filesystem::path target = path;
    for (int hop = 0; hop < kMaximumLinkHops; ++hop) {
        std::error_code notLink;
        const std::filesystem::path link = std::filesystem::read_symlink(target, notLink);
        if (notLink) {
            return target;
        }
        target = link.is_absolute() ? link : target.parent_path() / link;
    }
    return target;
}

bool writeAll(int descriptor, std::span<const std::uint8_t> bytes) {
    const std::uint8_t* data = bytes.data();
    std::size_t left = bytes.size();
    while (left > 0) {
        const ssize_t written = ::write(descriptor, data, left);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            return false;
        }
        data += written;
        left -= static_cast<std::size_t>(written);
    }
    return true;
}

}  // namespace

std::optional<std::vector<std::uint8_t>> readWholeFile(const std::filesystem::path& path,
                                                       HMKError* error) {
    const Descriptor file(openRegularFile(path, error));
    if (file.get() < 0) {
        return std::nullopt;
    }
    std::vector<std::uint8_t> bytes;
    struct stat info {};
    if (::fstat(file.get(), &info) == 0) {
        bytes.reserve(static_cast<std::size_t>(info.st_size));
    }
    std::uint8_t buffer[1 << 16];
    while (true) {
        const ssize_t count = ::read(file.get(), buffer, sizeof buffer);
        if (count == 0) {
            return bytes;
        }
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            failWith(error, errno, path);
            return std::nullopt;
        }
        bytes.insert(bytes.end(), buffer, buffer + count);
    }
}

bool checkReadableFile(const std::filesystem::path& path, HMKError* error) {
    const Descriptor file(openRegularFile(path, error));
    return file.get() >= 0;
}

bool writeFileAtomically(const std::filesystem::path& path, std::span<const std::uint8_t> bytes,
                         HMKError* error) {
    const std::filesystem::path target = followLinks(path);
    struct stat existing {};
    const bool replacing = ::stat(target.c_str(), &existing) == 0;
    if (!replacing && errno != ENOENT) {
        return failWith(error, errno, path);
    }
    if (replacing) {
        if (S_ISDIR(existing.st_mode)) {
            return failWith(error, EISDIR, path);
        }
        // A device or FIFO would be replaced by a regular file, not written to.
        if (!S_ISREG(existing.st_mode)) {
            return failWith(error, EINVAL, path, kNotRegularFile);
        }
        // Renaming over a file needs only the folder's permission, so the file's own is
        // checked here. A file that nobody may write is refused even for root: the user made
        // it read-only on purpose.
        if ((existing.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0 ||
            ::access(target.c_str(), W_OK) != 0) {
            return failWith(error, EACCES, path, kReadOnlyFile);
        }
    }

    TemporaryFile temporary(target);
    if (temporary.descriptor() < 0) {
        return failWith(error, temporary.error(), path);
    }
    if (!writeAll(temporary.descriptor(), bytes)) {
        return failWith(error, errno, path);
    }
    if (replacing && (existing.st_uid != ::geteuid() || existing.st_gid != ::getegid())) {
        // Only root may give the file back to its owner; anybody else makes it their own,
        // as any editor saving by renaming does.
        if (::fchown(temporary.descriptor(), existing.st_uid, existing.st_gid) != 0) {
            errno = 0;
        }
    }
    // A replaced file keeps its permissions; a new one gets the usual permissions of a new
    // document rather than mkstemp's 0600.
    ::fchmod(temporary.descriptor(),
             replacing ? existing.st_mode & 07777 : 0666 & ~kUmaskAtStartUp);
    if (::fsync(temporary.descriptor()) != 0) {
        return failWith(error, errno, path);
    }
    if (::rename(temporary.name().c_str(), target.c_str()) != 0) {
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
