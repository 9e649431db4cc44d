#include "thumbnailer/process_limits.h"

#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

// Qt and its libraries map about 300 MB of address space; the largest accepted file needs
// a few hundred MB more for its stitches while it is drawn.
constexpr rlim_t kAddressSpaceBytes = rlim_t{1} << 30;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif
#else
constexpr bool kSanitized = false;
#endif

void setLimit(int resource, rlim_t value) {
    rlimit limit{};
    if (::getrlimit(resource, &limit) == 0 &&
        (limit.rlim_max == RLIM_INFINITY || value < limit.rlim_max)) {
        limit.rlim_cur = value;
        ::setrlimit(resource, &limit);
    }
}

// Ends the process with a message instead of dying silently of SIGALRM.
void deadlinePassed(int) {
    static const char kMessage[] = "hemlark-thumbnailer: gave up: the design takes too long\n";
    // Only async-signal-safe calls here.
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, kMessage, sizeof kMessage - 1);
    ::_exit(1);
}

}  // namespace

void limitThumbnailerProcess() {
    // AddressSanitizer reserves terabytes of shadow memory, which any address-space limit
    // would refuse.
    if (!kSanitized) {
        setLimit(RLIMIT_AS, kAddressSpaceBytes);
    }
    setLimit(RLIMIT_CORE, 0);
    ::signal(SIGALRM, deadlinePassed);
    ::alarm(kThumbnailerTimeoutSeconds);
}

void stopThumbnailerDeadline() {
    ::alarm(0);
}
