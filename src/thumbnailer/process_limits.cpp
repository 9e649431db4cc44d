#include "thumbnailer/process_limits.h"

#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

// Measured: a 100,000-stitch design fits in 100 MB of address space, the largest accepted
// file (8 million stitches) in 200 MB; a 4096-pixel picture adds 64 MB.
constexpr rlim_t kAddressSpaceBytes = rlim_t{512} << 20;

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

// Ends the process with a message instead of dying silently of SIGXCPU or SIGALRM.
void timeIsUp(int) {
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
    ::signal(SIGXCPU, timeIsUp);
    ::signal(SIGALRM, timeIsUp);
    setLimit(RLIMIT_CPU, kThumbnailerProcessorSeconds);
    ::alarm(kThumbnailerDeadlineSeconds);
}

void stopThumbnailerTimeLimits() {
    ::signal(SIGXCPU, SIG_IGN);
    ::alarm(0);
}
